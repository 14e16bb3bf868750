// SPDX-License-Identifier: Apache-2.0
// What the page side is told about viewer and television, as JSON.
#pragma once

#include <map>
#include <string>

namespace browser {

/// @p start: by the names in messages.h. The result is pure ASCII.
std::string settingsText(const std::map<std::string, std::string>& start);

}  // namespace browser
