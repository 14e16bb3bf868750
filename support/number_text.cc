// SPDX-License-Identifier: Apache-2.0
#include "support/number_text.h"

#include <locale.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <limits>

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
  const CLocaleScope scope;
  return std::strtod(text, nullptr);
}

void formatFixed(double value, char* out) {
  const CLocaleScope scope;
  std::snprintf(out, kFixedTextSize, "%.2f", value);
}
