// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/library_log.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace mediamgmnt {
namespace {

constexpr std::size_t kLongestLine = 500;

}  // namespace

void logLine(std::string_view text) {
  std::string line(text.substr(0, kLongestLine));
  std::replace_if(
      line.begin(), line.end(), [](unsigned char c) { return c < ' ' || c == 0x7F; }, '?');
  std::fprintf(stderr, "mediamgmnt: %s\n", line.c_str());
}

}  // namespace mediamgmnt
