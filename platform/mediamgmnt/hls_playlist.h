// SPDX-License-Identifier: Apache-2.0
// What an HLS playlist says about its tracks, of which GStreamer tells name and language only. Plain data, no playback. Thread:
// any.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mediamgmnt {

/// One EXT-X-MEDIA line.
struct HlsMedia {
  std::string type;  ///< "AUDIO", "VIDEO", "SUBTITLES", "CLOSED-CAPTIONS"
  std::string groupId;
  std::string name;
  std::string language;  ///< as written
  std::string uri;       ///< as written; empty when the medium is inside the variant's own segments
  std::vector<std::string> characteristics;
  int channels = 0;  ///< 0 when unknown
  bool isDefault = false;
  bool isAutoSelected = false;
  bool isForced = false;

  bool isAudioDescription() const;
  bool isForHearingImpaired() const;
};

/// One EXT-X-STREAM-INF line and the address after it.
struct HlsVariant {
  int bandwidth = 0;
  int width = 0;
  int height = 0;
  std::vector<std::string> codecs;
  std::string audioGroup;
  std::string videoGroup;
  std::string subtitleGroup;
  std::string uri;  ///< as written

  /// @param type of a medium. @return the group that goes with the variant; empty without one.
  std::string groupOf(std::string_view type) const;
};

struct HlsPlaylist {
  std::vector<HlsMedia> media;
  std::vector<HlsVariant> variants;
  bool isEncrypted = false;  ///< names a key method other than NONE
};

/// @return nothing for what does not begin as a playlist does. Lines that make no sense are passed over.
std::optional<HlsPlaylist> readHlsPlaylist(std::string_view text);

}  // namespace mediamgmnt
