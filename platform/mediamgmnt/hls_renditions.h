// SPDX-License-Identifier: Apache-2.0
// The renditions of an HLS presentation, told apart. GStreamer 1.22 knows them by their language alone, and crashes when one that
// is selected, which may be its own choice, is missing in the group of the variant that plays, or that variant names no group.
// Plain data, no playback. Thread: any.
#pragma once

#include <string>
#include <string_view>

namespace mediamgmnt {

/// @return the playlist as the demuxer is to read it: each rendition has a language of its own and is in every group, and
/// each variant has a group; names and addresses stay. What has nothing of it to mend comes back as it is.
std::string tellRenditionsApart(std::string_view playlist);

}  // namespace mediamgmnt
