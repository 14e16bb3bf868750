// SPDX-License-Identifier: Apache-2.0
// What "--help" and "--version" print.
#pragma once

#include <string>

namespace browser {

std::string helpText();
std::string versionText();

}  // namespace browser
