// SPDX-License-Identifier: Apache-2.0
#include "support/number_text.h"

#include <locale.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <system_error>

namespace {

locale_t cLocale() {
  static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
  return locale;
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// The short way for what nearly every number begins with: a few digits. @return where they end; null when there are none or more.
const char* readFewDigits(const char* text, int& out) {
  constexpr int kMost = 9;  // cannot overflow
  int value = 0;
  int count = 0;
  for (; count < kMost && isDigit(text[count]); ++count) value = value * 10 + (text[count] - '0');
  if (count == 0 || isDigit(text[count])) return nullptr;
  out = value;
  return text + count;
}

/// Pages ask for positions, durations and speeds all the time: "5000" and "1.00".
bool endsWhole(const char* afterDigits) { return *afterDigits == '\0' || std::strcmp(afterDigits, ".00") == 0; }

}  // namespace

CLocaleScope::CLocaleScope() : m_previous(uselocale(cLocale())) {}

CLocaleScope::~CLocaleScope() { uselocale(static_cast<locale_t>(m_previous)); }

int textToInt(const char* text) {
  if (text == nullptr) return 0;
  int few = 0;
  if (readFewDigits(text, few) != nullptr) return few;
  const long value = std::strtol(text, nullptr, 10);
  return static_cast<int>(std::clamp<long>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

double textToDouble(const char* text) {
  if (text == nullptr) return 0.0;
  int few = 0;
  const char* const afterDigits = readFewDigits(text, few);
  if (afterDigits != nullptr && endsWhole(afterDigits)) return few;
  double value = 0.0;
  const auto [end, error] = std::from_chars(text, text + std::strlen(text), value);
  // The fast way knows plain decimal numbers in range. Blanks, "+", hexadecimal digits and overflow go the slow way.
  if (error == std::errc() && *end != 'x' && *end != 'X') return value;
  const CLocaleScope scope;
  return std::strtod(text, nullptr);
}

void formatFixed(double value, char* out) {
  char* const end = std::to_chars(out, out + kFixedTextSize - 1, value, std::chars_format::fixed, 2).ptr;
  *end = '\0';
}
