// SPDX-License-Identifier: Apache-2.0
#include "components/record_reader.h"

#include <cstdlib>
#include <cstring>
#include <string_view>

#include "host/mediamgmnt.h"
#include "support/number_text.h"

namespace {

constexpr char kFieldEnd = '|';
constexpr std::string_view kNullText = "(null)";

}  // namespace

bool holdsRecord(const char* text) { return text != nullptr && std::strstr(text, mediamgmnt::kNotAvailable) == nullptr; }

const char* RecordReader::next(std::size_t& length) {
  const char* const field = m_rest;
  const char* const end = std::strchr(field, kFieldEnd);
  if (end == nullptr) return nullptr;
  length = static_cast<std::size_t>(end - field);
  m_rest = end + 1;
  return field;
}

bool RecordReader::readText(char*& out) {
  std::size_t length = 0;
  const char* const field = next(length);
  if (field == nullptr) return false;
  if (std::string_view(field, length) == kNullText) length = 0;
  out = static_cast<char*>(std::malloc(length + 1));
  std::memcpy(out, field, length);
  out[length] = '\0';
  return true;
}

bool RecordReader::readInteger(int& out) {
  std::size_t length = 0;
  const char* const field = next(length);
  if (field == nullptr) return false;
  out = textToInt(field);  // no number goes past the "|"
  return true;
}

bool RecordReader::readBoolean(bool& out) {
  int number = 0;
  if (!readInteger(number)) return false;
  out = number != 0;
  return true;
}

bool RecordReader::readFraction(float& out) {
  std::size_t length = 0;
  const char* const field = next(length);
  if (field == nullptr) return false;
  out = static_cast<float>(textToDouble(field));
  return true;
}
