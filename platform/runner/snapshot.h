// SPDX-License-Identifier: Apache-2.0
// The video plane as a PNG file.
#pragma once

#include <string>

#include "platform/shell/media_library.h"

namespace runner {

/// @return false, with one line in @p error. Thread: any.
bool writeSnapshot(const shell::MediaLibrary& library, const std::string& path, std::string& error);

}  // namespace runner
