// SPDX-License-Identifier: Apache-2.0
// Where the plugin and the media library are when nobody says so: beside the running program, in the build tree as when installed.
#pragma once

#include <string>

#include "platform/shell/media_library.h"

namespace shell {

AVCSHELL_API std::string defaultPluginPath();
AVCSHELL_API std::string defaultMediaLibraryPath();

}  // namespace shell
