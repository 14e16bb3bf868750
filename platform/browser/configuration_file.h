// SPDX-License-Identifier: Apache-2.0
// The file in which a viewer keeps options.
#pragma once

#include <string>

#include "platform/browser/options.h"

namespace browser {

/// Where it is looked for; it need not exist.
std::string defaultConfigurationFile();
/// Takes over what the file at @p path says. @return false, with one line in @p error, for one that is there and cannot be
/// understood.
bool readConfiguration(const std::string& path, Options& out, std::string& error);

}  // namespace browser
