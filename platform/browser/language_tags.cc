// SPDX-License-Identifier: Apache-2.0
#include "platform/browser/language_tags.h"

#include <unicode/locid.h>

#include <algorithm>

#include "platform/browser/preferences.h"

namespace browser {

namespace {

// BCP 47 wants the shortest code of a language: two letters where ISO 639 has them, of "ger" as well as of "deu". "und" has none.
std::string shortestCode(const std::string& code) { return icu::Locale::createCanonical(code.c_str()).getLanguage(); }

}  // namespace

std::vector<std::string> languageTags(const std::string& codes) {
  std::vector<std::string> tags;
  for (const std::string& code : splitList(codes)) {
    const std::string tag = shortestCode(code);
    if (!tag.empty() && std::find(tags.begin(), tags.end(), tag) == tags.end()) tags.push_back(tag);
  }
  return tags;
}

}  // namespace browser
