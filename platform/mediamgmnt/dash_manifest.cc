// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/dash_manifest.h"

#include <algorithm>
#include <bitset>
#include <charconv>

#include "platform/mediamgmnt/xml_document.h"

namespace mediamgmnt {
namespace {

/// A day of live television with one line for each segment has a few megabytes.
constexpr std::size_t kLargestManifest = 32U << 20U;

constexpr std::string_view kRoleScheme = "urn:mpeg:dash:role:2011";
constexpr std::string_view kAudioPurposeScheme = "urn:tva:metadata:cs:AudioPurposeCS:2007";
constexpr std::string_view kFontScheme = "urn:dvb:dash:fontdownload:2014";
constexpr std::string_view kVisuallyImpaired = "1";
constexpr std::string_view kHardOfHearing = "2";

constexpr std::string_view kChannelCountScheme = "urn:mpeg:dash:23003:3:audio_channel_configuration:2011";
constexpr std::string_view kChannelLayoutScheme = "urn:mpeg:mpegB:cicp:ChannelConfiguration";
constexpr std::string_view kDolbyScheme = "tag:dolby.com,2014:dash:audio_channel_configuration:2011";
constexpr std::string_view kOlderDolbyScheme = "urn:dolby:dash:audio_channel_configuration:2011";

/// Loudspeakers of each layout number, as the coding-independent code points count them.
constexpr int kChannelsOfLayout[] = {0, 1, 2, 3, 4, 5, 6, 8, 2, 3, 4, 7, 8, 24, 8, 12, 10, 12, 14, 12, 14};
/// Dolby's mask has one bit for a single loudspeaker or for a pair; these are the pairs, from the highest bit on.
constexpr unsigned kDolbyPairs = 0x0674;

int toInt(std::string_view text, int base = 10) {
  int number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number, base);
  return result.ec == std::errc() ? number : 0;
}

std::optional<int> toId(const std::string& text) {
  int number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool whole = result.ec == std::errc() && result.ptr == text.data() + text.size();
  return whole ? std::optional<int>(number) : std::nullopt;
}

std::vector<DashDescriptor> descriptors(const xmlNode* node, std::string_view name) {
  std::vector<DashDescriptor> found;
  forEachChild(node, name, [&](const xmlNode* each) {
    found.push_back({attribute(each, "schemeIdUri"), attribute(each, "value"), attribute(each, "id")});
  });
  return found;
}

std::string licenceUrlOf(const xmlNode* protection) {
  for (const char* const name : {"Laurl", "laurl", "LaUrl"}) {
    const xmlNode* const element = findBelow(protection, name);
    if (element == nullptr) continue;
    const std::string text = textOf(element);
    return text.empty() ? attribute(element, "licenseUrl") : text;  // written as text by some, as an attribute by others
  }
  return {};
}

std::vector<DashProtection> protectionsOf(const xmlNode* node) {
  std::vector<DashProtection> found;
  forEachChild(node, "ContentProtection", [&](const xmlNode* each) {
    found.push_back({attribute(each, "schemeIdUri"), attribute(each, "value"), attribute(each, "default_KID"), licenceUrlOf(each),
                     childText(each, "pssh")});
  });
  return found;
}

std::vector<DashLabel> labelsOf(const xmlNode* node) {
  std::vector<DashLabel> found;
  forEachChild(node, "Label", [&](const xmlNode* each) { found.push_back({attribute(each, "lang"), textOf(each)}); });
  return found;
}

std::vector<DashFont> fontsOf(const xmlNode* node) {
  std::vector<DashFont> found;
  for (const char* const name : {"EssentialProperty", "SupplementalProperty"}) {
    forEachChild(node, name, [&](const xmlNode* each) {
      if (attribute(each, "schemeIdUri") != kFontScheme) return;
      const DashFont font{attribute(each, "fontFamily"), attribute(each, "url")};
      if (!font.family.empty() && !font.url.empty()) found.push_back(font);
    });
  }
  return found;
}

DashRepresentation readRepresentation(const xmlNode* node) {
  DashRepresentation representation;
  representation.id = attribute(node, "id");
  representation.mimeType = attribute(node, "mimeType");
  representation.codecs = attribute(node, "codecs");
  representation.bandwidth = toInt(attribute(node, "bandwidth"));
  representation.width = toInt(attribute(node, "width"));
  representation.height = toInt(attribute(node, "height"));
  representation.sampleAspectRatio = attribute(node, "sar");
  representation.baseUrl = childText(node, "BaseURL");
  representation.audioChannels = descriptors(node, "AudioChannelConfiguration");
  representation.protections = protectionsOf(node);
  return representation;
}

void readDescriptors(const xmlNode* node, DashAdaptationSet& set) {
  set.roles = descriptors(node, "Role");
  set.accessibility = descriptors(node, "Accessibility");
  set.audioChannels = descriptors(node, "AudioChannelConfiguration");
  set.ratings = descriptors(node, "Rating");
  set.supplementalProperties = descriptors(node, "SupplementalProperty");
  set.essentialProperties = descriptors(node, "EssentialProperty");
  set.labels = labelsOf(node);
  set.fonts = fontsOf(node);
  set.protections = protectionsOf(node);
}

std::string contentTypeFrom(std::string_view mimeType) {
  if (mimeType == "application/ttml+xml") return "text";
  return std::string(mimeType.substr(0, mimeType.find('/')));
}

/// What is said for a single medium inside the set, as some packagers do.
void readContentComponent(const xmlNode* node, DashAdaptationSet& set) {
  forEachChild(node, "ContentComponent", [&](const xmlNode* each) {
    if (set.contentType.empty()) set.contentType = attribute(each, "contentType");
    if (set.language.empty()) set.language = attribute(each, "lang");
  });
}

void takeFromRepresentations(DashAdaptationSet& set) {
  if (set.representations.empty()) return;
  const DashRepresentation& first = set.representations.front();
  if (set.mimeType.empty()) set.mimeType = first.mimeType;
  if (set.codecs.empty()) set.codecs = first.codecs;
  if (set.baseUrl.empty()) set.baseUrl = first.baseUrl;
}

DashAdaptationSet readAdaptationSet(const xmlNode* node) {
  DashAdaptationSet set;
  set.id = toId(attribute(node, "id"));
  set.language = attribute(node, "lang");
  set.contentType = attribute(node, "contentType");
  set.mimeType = attribute(node, "mimeType");
  set.codecs = attribute(node, "codecs");
  set.pictureAspectRatio = attribute(node, "par");
  set.baseUrl = childText(node, "BaseURL");
  readDescriptors(node, set);
  forEachChild(node, "Representation", [&](const xmlNode* each) { set.representations.push_back(readRepresentation(each)); });
  readContentComponent(node, set);
  takeFromRepresentations(set);
  if (set.contentType.empty()) set.contentType = contentTypeFrom(set.mimeType);
  return set;
}

DashPeriod readPeriod(const xmlNode* node) {
  DashPeriod period;
  period.id = attribute(node, "id");
  period.start = attribute(node, "start");
  period.duration = attribute(node, "duration");
  period.baseUrl = childText(node, "BaseURL");
  period.supplementalProperties = descriptors(node, "SupplementalProperty");
  period.essentialProperties = descriptors(node, "EssentialProperty");
  forEachChild(node, "AdaptationSet", [&](const xmlNode* each) { period.adaptationSets.push_back(readAdaptationSet(each)); });
  return period;
}

/// Years and months have no fixed length and no use here.
std::optional<double> secondsOfUnit(char unit, bool ofDay) {
  if (!ofDay) return unit == 'D' ? std::optional<double>(86400) : std::nullopt;
  switch (unit) {
    case 'H': return 3600;
    case 'M': return 60;
    case 'S': return 1;
    default: return std::nullopt;
  }
}

int channelsOfLayout(std::string_view layout) {
  const int number = toInt(layout);
  return number > 0 && number < static_cast<int>(std::size(kChannelsOfLayout)) ? kChannelsOfLayout[number] : 0;
}

int channelsOfDolbyMask(std::string_view mask) {
  const auto bits = static_cast<unsigned>(toInt(mask, 16)) & 0xFFFFU;
  return static_cast<int>(std::bitset<16>(bits).count() + std::bitset<16>(bits & kDolbyPairs).count());
}

int channelsOf(const DashDescriptor& configuration) {
  if (configuration.scheme == kChannelCountScheme) return std::max(toInt(configuration.value), 0);
  if (configuration.scheme == kChannelLayoutScheme) return channelsOfLayout(configuration.value);
  if (configuration.scheme == kDolbyScheme || configuration.scheme == kOlderDolbyScheme)
    return channelsOfDolbyMask(configuration.value);
  return 0;
}

int channelsOf(const std::vector<DashDescriptor>& configurations) {
  int most = 0;
  for (const DashDescriptor& each : configurations) most = std::max(most, channelsOf(each));
  return most;
}

}  // namespace

bool DashAdaptationSet::isProtected() const {
  if (!protections.empty()) return true;
  return std::any_of(representations.begin(), representations.end(), [](const auto& each) { return !each.protections.empty(); });
}

std::optional<DashManifest> readDashManifest(std::string_view text) {
  const XmlDocument document(text, kLargestManifest);
  const xmlNode* const root = document.root();
  if (!isElement(root, "MPD")) return std::nullopt;
  DashManifest manifest;
  manifest.isDynamic = attribute(root, "type") == "dynamic";
  manifest.baseUrl = childText(root, "BaseURL");
  manifest.supplementalProperties = descriptors(root, "SupplementalProperty");
  manifest.essentialProperties = descriptors(root, "EssentialProperty");
  forEachChild(root, "Period", [&](const xmlNode* each) { manifest.periods.push_back(readPeriod(each)); });
  return manifest;
}

std::optional<double> secondsOf(std::string_view duration) {
  if (duration.size() < 2 || duration.front() != 'P') return std::nullopt;
  duration.remove_prefix(1);
  double total = 0;
  bool ofDay = false;
  while (!duration.empty()) {
    if (duration.front() == 'T') {
      ofDay = true;
      duration.remove_prefix(1);
      continue;
    }
    double number = 0;
    const auto result = std::from_chars(duration.data(), duration.data() + duration.size(), number, std::chars_format::fixed);
    const auto length = static_cast<std::size_t>(result.ptr - duration.data());
    if (result.ec != std::errc() || length >= duration.size()) return std::nullopt;
    const std::optional<double> unit = secondsOfUnit(duration[length], ofDay);
    if (!unit) return std::nullopt;
    total += number * *unit;
    duration.remove_prefix(length + 1);
  }
  return total;
}

std::size_t periodAt(const DashManifest& manifest, double seconds) {
  double start = 0;
  std::size_t found = 0;
  for (std::size_t i = 0; i < manifest.periods.size(); ++i) {
    const DashPeriod& period = manifest.periods[i];
    start = secondsOf(period.start).value_or(start);
    if (start <= seconds) found = i;
    start += secondsOf(period.duration).value_or(0);
  }
  return found;
}

double periodStart(const DashManifest& manifest, std::size_t index) {
  double start = 0;
  for (std::size_t i = 0; i <= index; ++i) {
    start = secondsOf(manifest.periods[i].start).value_or(start);
    if (i < index) start += secondsOf(manifest.periods[i].duration).value_or(0);
  }
  return start;
}

bool hasDescriptor(const std::vector<DashDescriptor>& descriptors, std::string_view scheme, std::string_view value) {
  return std::any_of(descriptors.begin(), descriptors.end(),
                     [&](const DashDescriptor& each) { return each.scheme == scheme && each.value == value; });
}

bool hasRole(const DashAdaptationSet& set, std::string_view role) { return hasDescriptor(set.roles, kRoleScheme, role); }

int audioChannelsOf(const DashAdaptationSet& set) {
  const int own = channelsOf(set.audioChannels);
  if (own > 0 || set.representations.empty()) return own;
  return channelsOf(set.representations.front().audioChannels);
}

bool isAudioDescription(const DashAdaptationSet& set) {
  if (set.contentType != "audio") return false;
  return hasDescriptor(set.accessibility, kAudioPurposeScheme, kVisuallyImpaired) ||
         hasDescriptor(set.accessibility, kRoleScheme, "description") || hasRole(set, "description");
}

bool isForHearingImpaired(const DashAdaptationSet& set) {
  if (hasDescriptor(set.accessibility, kAudioPurposeScheme, kHardOfHearing)) return true;
  return hasDescriptor(set.accessibility, kRoleScheme, "caption") || hasRole(set, "caption");
}

}  // namespace mediamgmnt
