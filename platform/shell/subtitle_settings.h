// SPDX-License-Identifier: Apache-2.0
// The viewer's subtitle settings as a shell's user writes them. Thread: any.
#pragma once

#include <string_view>

#include "platform/shell/media_library.h"

namespace shell {

/// @return false when the text does not fit into the record.
AVCSHELL_API bool makeSubtitleSettings(int value, std::string_view text, _SubtitleSettingsParams& out);

/// "VALUE:TEXT", a whole number and up to 64 bytes. @return false for anything else.
AVCSHELL_API bool parseSubtitleSettings(std::string_view text, _SubtitleSettingsParams& out);

}  // namespace shell
