// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/property_text.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <limits>
#include <string>

#include "platform/mediamgmnt/number_text.h"
#include "platform/mediamgmnt/playback.h"

namespace mediamgmnt {
namespace {

/// Takes a whole number off the front of @p text.
std::optional<int> takeWhole(std::string_view& text) {
  int value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec != std::errc()) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(result.ptr - text.data()));
  return value;
}

std::string lowerCase(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return std::tolower(c); });
  return lower;
}

}  // namespace

std::optional<media::Rect> parseRect(std::string_view text) {
  std::array<int, 4> numbers{};
  for (int& number : numbers) {
    const std::optional<int> value = takeWhole(text);
    if (!value || text.empty() || text.front() != '|') return std::nullopt;
    text.remove_prefix(1);
    number = *value;
  }
  if (numbers[2] < 1 || numbers[3] < 1) return std::nullopt;
  return media::Rect{numbers[0], numbers[1], numbers[2], numbers[3]};
}

PictureSize parseSize(std::string_view text) {
  const std::optional<int> width = takeWhole(text);
  const auto next = text.find_first_of("0123456789");
  if (!width || *width < 1 || next == std::string_view::npos) return {};
  text.remove_prefix(next);
  const std::optional<int> height = takeWhole(text);
  if (!height || *height < 1) return {};
  return {*width, *height};
}

int parsePlays(std::string_view text) {
  if (text == "infinite") return Playback::kEndless;
  const std::optional<double> count = parseNumber(text);
  if (!count || *count < 2) return 1;
  return static_cast<int>(std::min(*count, static_cast<double>(std::numeric_limits<int>::max())));
}

bool parseCached(std::string_view text) {
  constexpr std::array<std::string_view, 5> kRefusals = {"0", "false", "no", "off", "none"};
  return std::find(kRefusals.begin(), kRefusals.end(), lowerCase(text)) == kRefusals.end();
}

}  // namespace mediamgmnt
