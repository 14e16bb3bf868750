// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/rating.h"

#include <string_view>

#include "host/mediamgmnt.h"

namespace mediamgmnt {
namespace {

/// Three of them and two numbers are far below what a reader of records offers.
constexpr std::size_t kLongestField = 256;

bool isContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; }

/// Not in the middle of a character.
void cut(std::string& text) {
  if (text.size() <= kLongestField) return;
  std::size_t end = kLongestField;
  while (end > 0 && isContinuation(text[end])) --end;
  text.resize(end);
}

std::string field(const std::string& text) {
  std::string clean;
  for (const char c : text) {
    if (c != '|' && static_cast<unsigned char>(c) >= ' ') clean += c;
  }
  cut(clean);
  constexpr std::string_view kNone = kNotAvailable;
  for (auto at = clean.find(kNone); at != std::string::npos; at = clean.find(kNone)) clean.erase(at, kNone.size());
  return clean + "|";
}

}  // namespace

std::string ratingText(const Rating& rating) {
  return field(rating.name) + field(rating.scheme) + std::to_string(rating.value) + "|" + std::to_string(rating.labels) + "|" +
         field(rating.region);
}

}  // namespace mediamgmnt
