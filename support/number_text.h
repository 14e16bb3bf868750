// SPDX-License-Identifier: Apache-2.0
// Numbers in texts as the media library writes and reads them: always in the C locale, whatever the process's locale is.
#pragma once

#include <cstddef>

/// Switches the calling thread to the C locale for its scope: printf and strtod families then write and read a "." in numbers.
class CLocaleScope {
 public:
  CLocaleScope();
  CLocaleScope(const CLocaleScope&) = delete;
  CLocaleScope& operator=(const CLocaleScope&) = delete;
  ~CLocaleScope();

 private:
  void* m_previous;
};

/// Leading blanks, a sign, then digits; anything else ends the number; 0 when there is none. Overflow saturates. Null reads as 0.
int textToInt(const char* text);

/// As textToInt, for decimal fractions with an optional exponent; overflow gives an infinity.
double textToDouble(const char* text);

/// Longest "%.2f" text of a double, the NUL included: 309 digits, sign, point, two decimals.
inline constexpr std::size_t kFixedTextSize = 320;

/// Writes @p value as "%.2f" does. @p out holds kFixedTextSize bytes.
void formatFixed(double value, char* out);
