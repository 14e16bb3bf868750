// SPDX-License-Identifier: Apache-2.0
#include "platform/shell/option_values.h"

#include <charconv>

namespace shell {

namespace {

bool isLanguageList(std::string_view text) {
  constexpr std::size_t kEntry = 4;  // a code and the comma behind it
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool isComma = at % kEntry == kEntry - 1;
    if (isComma ? text[at] != ',' : text[at] < 'a' || text[at] > 'z') return false;
  }
  return text.size() % kEntry == kEntry - 1;
}

}  // namespace

bool parseSeconds(std::string_view text, double& out) {
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, out, std::chars_format::fixed);
  return error == std::errc() && stop == end && !text.empty() && out >= 0 && out < 1e6;
}

// An "@" that no number follows belongs to the name.
bool readPictureFile(const std::string& name, const std::string& value, PictureFile& out, std::string& error) {
  const std::size_t at = value.rfind('@');
  double seconds = 0;
  const bool timed = at != std::string::npos && at > 0 && parseSeconds(std::string_view(value).substr(at + 1), seconds);
  out.path = timed ? value.substr(0, at) : value;
  out.seconds = timed ? std::optional(seconds) : std::nullopt;
  if (out.path.ends_with(".png")) return true;
  error = name + " needs the name of a .png file, and perhaps @SECONDS behind it, not \"" + value + "\"";
  return false;
}

bool checkLanguages(const std::string& name, const std::string& value, std::string& error) {
  if (isLanguageList(value)) return true;
  error = name + " needs codes of three small letters, such as deu,eng, not \"" + value + "\"";
  return false;
}

}  // namespace shell
