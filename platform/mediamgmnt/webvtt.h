// SPDX-License-Identifier: Apache-2.0
// WebVTT as timed text: pages get one kind of document, whatever the source has. Plain text, no playback. Thread: any.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace mediamgmnt {

struct WebVttCue {
  std::int64_t start = 0;  ///< milliseconds
  std::int64_t end = 0;
  std::string settings;  ///< "line:10% align:start", as written
  std::string text;      ///< with its markup and line breaks

  bool operator==(const WebVttCue&) const = default;
};
using WebVttCues = std::vector<WebVttCue>;

/// The cues of a file or a segment in their order, with or without its header. What is no cue is passed over.
WebVttCues readWebVtt(std::string_view text);

/// One TTML document with all of them: positions as regions, markup as styles, line breaks as they are.
std::string ttmlOf(const WebVttCues& cues);

}  // namespace mediamgmnt
