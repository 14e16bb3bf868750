// SPDX-License-Identifier: Apache-2.0
#include "platform/shell/subtitle_settings.h"

#include <charconv>
#include <cstring>

namespace shell {

bool makeSubtitleSettings(int value, std::string_view text, _SubtitleSettingsParams& out) {
  if (text.size() > sizeof out.text) return false;
  out = {};
  out.value = value;
  std::memcpy(out.text, text.data(), text.size());
  out.textLength = static_cast<std::int32_t>(text.size());
  return true;
}

bool parseSubtitleSettings(std::string_view text, _SubtitleSettingsParams& out) {
  const auto colon = text.find(':');
  if (colon == std::string_view::npos) return false;
  int value = 0;
  const auto result = std::from_chars(text.data(), text.data() + colon, value);
  const bool whole = result.ec == std::errc() && result.ptr == text.data() + colon;
  return whole && makeSubtitleSettings(value, text.substr(colon + 1), out);
}

}  // namespace shell
