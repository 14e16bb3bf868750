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

}  // namespace

CLocaleScope::CLocaleScope() : m_previous(uselocale(cLocale())) {}

CLocaleScope::~CLocaleScope() { uselocale(static_cast<locale_t>(m_previous)); }

int textToInt(const char* text) {
  if (text == nullptr) return 0;
  const long value = std::strtol(text, nullptr, 10);
  return static_cast<int>(std::clamp<long>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

double textToDouble(const char* text) {
  if (text == nullptr) return 0.0;
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
