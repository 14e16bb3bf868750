// SPDX-License-Identifier: Apache-2.0
#include "platform/browser/preferences.h"

#include <algorithm>
#include <string_view>

#include "platform/shell/option_values.h"

namespace browser {

namespace {

bool isCountry(std::string_view text) {
  return text.size() == 3 && std::all_of(text.begin(), text.end(), [](char c) { return c >= 'A' && c <= 'Z'; });
}

}  // namespace

std::map<std::string, std::string*> preferenceTexts(Preferences& preferences) {
  return {{"audio-languages", &preferences.audioLanguages},
          {"subtitle-languages", &preferences.subtitleLanguages},
          {"ui-languages", &preferences.uiLanguages},
          {"country", &preferences.country},
          {"user-agent", &preferences.userAgent}};
}

// Pages compare these texts as they are.
std::string wrongPreference(const std::string& name, const std::string& value) {
  if (name == "country" && !isCountry(value)) return name + " needs three capital letters, such as DEU, not \"" + value + "\"";
  const auto isPrintable = [](char sign) { return sign >= ' ' && sign <= '~'; };
  if (name == "user-agent" && !std::all_of(value.begin(), value.end(), isPrintable))
    return name + " needs printable ASCII characters only, as requests have them";
  std::string error;
  if (name.ends_with("-languages")) shell::checkLanguages(name, value, error);
  return error;
}

std::vector<std::string> splitList(const std::string& text) {
  std::vector<std::string> out;
  std::size_t at = 0;
  for (std::size_t comma = text.find(','); comma != std::string::npos; comma = text.find(',', at)) {
    out.push_back(text.substr(at, comma - at));
    at = comma + 1;
  }
  out.push_back(text.substr(at));
  return out;
}

}  // namespace browser
