// SPDX-License-Identifier: Apache-2.0
// The three standard streams of a program that somebody started with one of them closed.
#pragma once

#include "platform/shell/media_library.h"

namespace shell {

/// Those that are closed lead to nowhere from here on: the next file or connection would take their place, and get what is printed.
/// Call it first of all.
AVCSHELL_API void openStandardStreams();

}  // namespace shell
