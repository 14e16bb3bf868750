// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/language_code.h"

#include <gst/tag/tag.h>

#include <algorithm>

namespace mediamgmnt {
namespace {

constexpr char kUndetermined[] = "und";

bool isLetter(char byte) { return byte >= 'a' && byte <= 'z'; }

/// The primary language without region, script and variants, in small letters.
std::string primaryOf(std::string_view written) {
  std::string primary(written.substr(0, std::min(written.find_first_of("-_"), written.size())));
  for (char& byte : primary) {
    if (byte >= 'A' && byte <= 'Z') byte = static_cast<char>(byte - 'A' + 'a');
  }
  return primary;
}

}  // namespace

std::string languageCode(std::string_view written) {
  const std::string primary = primaryOf(written);
  if ((primary.size() != 2 && primary.size() != 3) || !std::all_of(primary.begin(), primary.end(), isLetter)) return kUndetermined;
  const char* const code = gst_tag_get_language_code_iso_639_2T(primary.c_str());
  if (code != nullptr) return code;
  return primary.size() == 3 ? primary : kUndetermined;
}

}  // namespace mediamgmnt
