// SPDX-License-Identifier: Apache-2.0
#include "platform/shell/protection_options.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <charconv>
#include <fstream>
#include <sstream>
#include <system_error>

namespace shell {

namespace {

constexpr int kHighestAge = 99;
constexpr std::size_t kKeyDigits = 32;

// As written in manifests too: 32 hexadecimal digits, with hyphens or without.
bool readHex(std::string text, std::string& out) {
  std::erase(text, '-');
  const bool good =
      text.size() == kKeyDigits && std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isxdigit(c); });
  if (good) out = text;
  return good;
}

std::string withoutBlanks(std::string text) {
  std::erase_if(text, [](unsigned char c) { return std::isspace(c); });
  return text;
}

}  // namespace

bool ProtectionOptions::isName(const std::string& name) {
  return name == "--parental-limit" || name == "--parental-country" || name == "--clearkey" || name == "--clearkey-file";
}

const char* ProtectionOptions::helpText() {
  return R"(  --parental-limit AGE        block what is rated for an age above AGE (default: nothing is blocked)
  --parental-country CC       the country whose ratings count, two letters (default: the strictest rating of all)
  --clearkey KID:KEY          a key for ClearKey content, both 32 hexadecimal digits; may be given several times
  --clearkey-file FILE        keys, one KID:KEY a line; what follows "#" is a comment
)";
}

bool ProtectionOptions::read(const std::string& name, const std::string& value, std::string& error) {
  if (name == "--parental-limit") return readLimit(value, error);
  if (name == "--parental-country") return readCountry(value, error);
  if (name == "--clearkey") return readKey(value, error);
  return readKeyFile(value, error);
}

bool ProtectionOptions::readLimit(const std::string& value, std::string& error) {
  int age = 0;
  const char* const end = value.data() + value.size();
  const auto [stop, failure] = std::from_chars(value.data(), end, age);
  if (failure != std::errc() || stop != end || age < 0 || age > kHighestAge) {
    error = "--parental-limit needs an age of 0 to " + std::to_string(kHighestAge) + " years, not \"" + value + "\"";
    return false;
  }
  m_parentalLimit = age;
  return true;
}

bool ProtectionOptions::readCountry(const std::string& value, std::string& error) {
  if (value.size() != 2 || !std::all_of(value.begin(), value.end(), [](unsigned char c) { return std::isalpha(c); })) {
    error = "--parental-country needs two letters, not \"" + value + "\"";
    return false;
  }
  m_parentalCountry = value;
  return true;
}

bool ProtectionOptions::readKey(const std::string& value, std::string& error) {
  const std::size_t colon = value.find(':');
  std::string id;
  std::string key;
  if (colon == std::string::npos || !readHex(value.substr(0, colon), id) || !readHex(value.substr(colon + 1), key)) {
    error = "--clearkey needs KID:KEY, both 32 hexadecimal digits";
    return false;
  }
  m_clearKeys.emplace_back(id, key);
  return true;
}

bool ProtectionOptions::readKeyFile(const std::string& path, std::string& error) {
  errno = 0;  // a stream keeps no reason of its own
  std::ifstream file(path);
  std::string line;
  for (int number = 1; std::getline(file, line); ++number) {
    const std::string entry = withoutBlanks(line.substr(0, line.find('#')));
    if (entry.empty() || readKey(entry, error)) continue;
    error = "--clearkey-file: line " + std::to_string(number) + " of " + path + " is not KID:KEY, both 32 hexadecimal digits";
    return false;
  }
  if (file.is_open() && !file.bad()) return true;  // a folder opens as well as a file
  error = "--clearkey-file: cannot read " + path + ": " + std::generic_category().message(errno);
  return false;
}

std::string ProtectionOptions::packed() const {
  std::string out;
  if (m_parentalLimit) out += "--parental-limit=" + std::to_string(*m_parentalLimit) + '\n';
  if (!m_parentalCountry.empty()) out += "--parental-country=" + m_parentalCountry + '\n';
  for (const auto& [id, key] : m_clearKeys) out.append("--clearkey=").append(id).append(":").append(key).append("\n");
  return out;
}

bool ProtectionOptions::unpack(const std::string& packed, std::string& error) {
  std::istringstream lines(packed);
  std::string line;
  while (std::getline(lines, line)) {
    const std::size_t equals = line.find('=');
    const std::string name = line.substr(0, equals);
    if (equals == std::string::npos || !isName(name)) {
      error = "what was handed over about limits and keys cannot be read";
      return false;
    }
    if (!read(name, line.substr(equals + 1), error)) return false;
  }
  return true;
}

bool ProtectionOptions::apply(const MediaLibrary& library, std::string& error) const {
  const bool limits = m_parentalLimit || !m_parentalCountry.empty();
  if (limits && !library.setParentalLimit(m_parentalLimit.value_or(-1), m_parentalCountry)) {
    error = "the media library takes no parental limit; leave --parental-limit and --parental-country out or give another one";
    return false;
  }
  for (const auto& [id, key] : m_clearKeys) {
    if (library.addClearKey(id, key)) continue;
    error = "the media library takes no keys; leave --clearkey and --clearkey-file out or give another one";
    return false;
  }
  return true;
}

}  // namespace shell
