// SPDX-License-Identifier: Apache-2.0
// Lines that a page has written, on standard output. Window's process, its main thread.
#pragma once

#include <string>
#include <string_view>

namespace browser {

/// What a page wrote, fit for a terminal and for tools that read line by line: a further line of it is indented, and other control
/// characters are written as \xNN. UTF-8; bytes that are none stay.
std::string consoleText(std::string_view text);

/// "console.LEVEL: TEXT", at once.
void printConsoleLine(std::string_view level, std::string_view text);

}  // namespace browser
