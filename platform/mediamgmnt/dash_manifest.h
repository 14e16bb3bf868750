// SPDX-License-Identifier: Apache-2.0
// What a DASH manifest says about its tracks. GStreamer keeps most of it to itself, so the manifest is read a second time from the
// bytes that GStreamer has fetched. Plain data, no playback. Thread: any.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mediamgmnt {

/// A Role, an Accessibility, an AudioChannelConfiguration, a SupplementalProperty, an EssentialProperty, …
struct DashDescriptor {
  std::string scheme;
  std::string value;
  std::string id;
};

struct DashProtection {
  std::string scheme;      ///< "urn:uuid:…" of a protection system, or "urn:mpeg:dash:mp4protection:2011"
  std::string value;       ///< for the latter the cipher mode: "cenc", "cbcs"
  std::string defaultKid;  ///< key id, as written
  std::string licenceUrl;  ///< from a Laurl element of any namespace
  std::string pssh;        ///< base64, as written
};

/// A font that the text's receiver may fetch.
struct DashFont {
  std::string family;
  std::string url;  ///< as written, not resolved
};

struct DashLabel {
  std::string language;
  std::string text;
};

struct DashRepresentation {
  std::string id;
  std::string mimeType;
  std::string codecs;
  int bandwidth = 0;
  int width = 0;
  int height = 0;
  std::string sampleAspectRatio;  ///< "1:1"; may be empty
  std::string baseUrl;            ///< as written, not resolved
  std::vector<DashDescriptor> audioChannels;
  std::vector<DashProtection> protections;
};

/// Attributes that an AdaptationSet may leave to its Representations are those of the first one then.
struct DashAdaptationSet {
  std::optional<int> id;
  std::string language;     ///< as written
  std::string contentType;  ///< "video", "audio", "text", …: written, or taken from the MIME type
  std::string mimeType;
  std::string codecs;
  std::string pictureAspectRatio;  ///< "16:9"; may be empty
  std::string baseUrl;             ///< as written, not resolved; that of side-loaded text
  std::vector<DashDescriptor> roles;
  std::vector<DashDescriptor> accessibility;
  std::vector<DashDescriptor> audioChannels;
  std::vector<DashDescriptor> ratings;
  std::vector<DashDescriptor> supplementalProperties;
  std::vector<DashDescriptor> essentialProperties;
  std::vector<DashLabel> labels;
  std::vector<DashFont> fonts;
  std::vector<DashProtection> protections;
  std::vector<DashRepresentation> representations;

  /// Itself or one of its Representations.
  bool isProtected() const;
};

struct DashPeriod {
  std::string id;
  std::string start;     ///< as written, "PT20S"
  std::string duration;  ///< as written
  std::string baseUrl;   ///< as written, not resolved
  std::vector<DashDescriptor> supplementalProperties;
  std::vector<DashDescriptor> essentialProperties;
  std::vector<DashAdaptationSet> adaptationSets;
};

struct DashManifest {
  bool isDynamic = false;
  std::string baseUrl;  ///< as written, not resolved
  std::vector<DashDescriptor> supplementalProperties;
  std::vector<DashDescriptor> essentialProperties;
  std::vector<DashPeriod> periods;
};

/// @return nothing for what is no well-formed DASH manifest, and for one that declares XML entities.
std::optional<DashManifest> readDashManifest(std::string_view text);

/// The index of the period that presents @p seconds from the start of the presentation; of the last one for what is beyond.
std::size_t periodAt(const DashManifest& manifest, double seconds);
/// In seconds from the start of the presentation. @p index is one of a period.
double periodStart(const DashManifest& manifest, std::size_t index);

/// "PT1H2M3.5S" in seconds; nothing for any other text.
std::optional<double> secondsOf(std::string_view duration);

bool hasDescriptor(const std::vector<DashDescriptor>& descriptors, std::string_view scheme, std::string_view value);

/// The DASH role scheme's value is among the roles: "main", "caption", …
bool hasRole(const DashAdaptationSet& set, std::string_view role);

/// The number of channels that the set's, or its first Representation's, AudioChannelConfiguration stands for; 0 when unknown.
int audioChannelsOf(const DashAdaptationSet& set);

/// Described sound, by one of the ways in which manifests say so.
bool isAudioDescription(const DashAdaptationSet& set);

/// Text or sound for the hard of hearing.
bool isForHearingImpaired(const DashAdaptationSet& set);

}  // namespace mediamgmnt
