// SPDX-License-Identifier: Apache-2.0
#include "platform/browser/console_text.h"

#include <cstdio>

namespace browser {

namespace {

constexpr unsigned char kFirstPrintable = 0x20;
constexpr unsigned char kDelete = 0x7F;

void appendEscaped(unsigned char byte, std::string& out) {
  constexpr char kDigits[] = "0123456789abcdef";
  out.append("\\x").push_back(kDigits[byte / 16U]);
  out.push_back(kDigits[byte % 16U]);
}

// U+0080 to U+009F: a terminal takes some of them for the beginning of a command.
bool isUpperControl(std::string_view text, std::size_t at) {
  constexpr unsigned char kLead = 0xC2;
  return static_cast<unsigned char>(text[at]) == kLead && at + 1 < text.size() &&
         static_cast<unsigned char>(text[at + 1]) >= 0x80U && static_cast<unsigned char>(text[at + 1]) < 0xA0U;
}

}  // namespace

std::string consoleText(std::string_view text) {
  std::string out;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    if (byte == '\n') {
      out.append("\n  ");
    } else if (isUpperControl(text, at)) {
      appendEscaped(static_cast<unsigned char>(text[++at]), out);
    } else if ((byte < kFirstPrintable && byte != '\t') || byte == kDelete) {
      appendEscaped(byte, out);
    } else {
      out.push_back(text[at]);
    }
  }
  return out;
}

void printConsoleLine(std::string_view level, std::string_view text) {
  const std::string line = "console." + std::string(level) + ": " + consoleText(text);
  std::puts(line.c_str());
  std::fflush(stdout);
}

}  // namespace browser
