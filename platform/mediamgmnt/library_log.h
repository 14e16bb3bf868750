// SPDX-License-Identifier: Apache-2.0
// The library's log: one line on standard error for what an integrator must know and no status word can tell.
#pragma once

#include <string_view>

namespace mediamgmnt {

/// Writes "mediamgmnt: " and @p text as one line: what is not printable in it is replaced, and what is too long is cut.
/// Thread: any. Never give it a key.
void logLine(std::string_view text);

}  // namespace mediamgmnt
