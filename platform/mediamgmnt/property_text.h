// SPDX-License-Identifier: Apache-2.0
// The values of commands and properties that are more than one number. Thread: any.
#pragma once

#include <optional>
#include <string_view>

#include "platform/mediamgmnt/video_plane.h"

namespace mediamgmnt {

/// No medium is longer; keeps arithmetic in nanoseconds within 64 bits.
inline constexpr double kLatestPositionMs = 8e9;

/// "x|y|width|height|". Nothing when a number is missing or the rectangle has no area.
std::optional<media::Rect> parseRect(std::string_view text);

struct PictureSize {
  int width = 0;
  int height = 0;
};

/// The size of the panel's picture, which bounds what adaptive streaming chooses: two numbers with anything between, "1920x1080".
/// Zeros, which bound nothing, for any other text.
PictureSize parseSize(std::string_view text);

/// How often the source is presented in a row: "infinite" or a count; once for a count below 2 and any other text.
int parsePlays(std::string_view text);

/// Whether progressive media may be kept on disc while they play. Yes, save for "0", "false", "no", "off" and "none".
bool parseCached(std::string_view text);

}  // namespace mediamgmnt
