// SPDX-License-Identifier: Apache-2.0
// What the page is told about the viewer and the television.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace browser {

struct Preferences {
  std::string audioLanguages = "eng,und";     ///< ISO 639-2 codes, the most wanted first
  std::string subtitleLanguages = "eng,und";  ///< the same
  std::string uiLanguages = "eng,und";        ///< the same
  std::string country = "GBR";                ///< ISO 3166-1 alpha-3
  std::string userAgent;                      ///< empty: the engine's own with the HbbTV part behind it
};

/// The preferences by their names: "--NAME TEXT" on the command line, "NAME = TEXT" in the configuration file.
std::map<std::string, std::string*> preferenceTexts(Preferences& preferences);
/// @return why @p value cannot be the preference @p name, "" when it can.
std::string wrongPreference(const std::string& name, const std::string& value);
/// The texts between the commas, also empty ones.
std::vector<std::string> splitList(const std::string& text);

}  // namespace browser
