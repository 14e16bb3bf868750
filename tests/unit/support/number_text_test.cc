// SPDX-License-Identifier: Apache-2.0
#include "support/number_text.h"

#include <gtest/gtest.h>

#include <climits>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>

namespace {

std::string fixed(double value) {
  char out[kFixedTextSize];
  formatFixed(value, out);
  return out;
}

/// Puts the process under a locale that writes a comma in numbers, where the machine has one.
class CommaLocale {
 public:
  CommaLocale() {
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "de_DE"}) {
      if (std::setlocale(LC_ALL, name) == nullptr) continue;
      m_active = std::string(std::localeconv()->decimal_point) == ",";
      if (m_active) return;
    }
  }
  ~CommaLocale() { std::setlocale(LC_ALL, "C"); }
  bool active() const { return m_active; }

 private:
  bool m_active = false;
};

TEST(NumberTextTest, FormatsTwoDecimals) {
  EXPECT_EQ(fixed(1), "1.00");
  EXPECT_EQ(fixed(0.5), "0.50");
  EXPECT_EQ(fixed(-2), "-2.00");
  EXPECT_EQ(fixed(0), "0.00");
  EXPECT_EQ(fixed(-0.0), "-0.00");
  EXPECT_EQ(fixed(1234567.891), "1234567.89");
  EXPECT_EQ(fixed(2.675), "2.67");
}

TEST(NumberTextTest, FormatsTheLargestDouble) {
  const std::string text = fixed(std::numeric_limits<double>::max());

  EXPECT_EQ(text.size(), 312U);
  EXPECT_EQ(text.substr(309), ".00");
  EXPECT_EQ(fixed(std::numeric_limits<double>::lowest()).size(), 313U);
}

TEST(NumberTextTest, FormatsInfinityAndNan) {
  EXPECT_EQ(fixed(std::numeric_limits<double>::infinity()), "inf");
  EXPECT_EQ(fixed(-std::numeric_limits<double>::infinity()), "-inf");
  EXPECT_NE(fixed(std::numeric_limits<double>::quiet_NaN()).find("nan"), std::string::npos);
}

TEST(NumberTextTest, ReadsIntegersAsAtoiDoes) {
  EXPECT_EQ(textToInt("42"), 42);
  EXPECT_EQ(textToInt("  -7"), -7);
  EXPECT_EQ(textToInt("+3"), 3);
  EXPECT_EQ(textToInt("12abc"), 12);
  EXPECT_EQ(textToInt("12.9"), 12);
  EXPECT_EQ(textToInt("abc"), 0);
  EXPECT_EQ(textToInt(""), 0);
  EXPECT_EQ(textToInt("-"), 0);
  EXPECT_EQ(textToInt("\t\n 5"), 5);
  EXPECT_EQ(textToInt("0x10"), 0);
  EXPECT_EQ(textToInt("007"), 7);
  EXPECT_EQ(textToInt("7|8"), 7);
  EXPECT_EQ(textToInt("123456789"), 123456789);
  EXPECT_EQ(textToInt("123456789|1"), 123456789);
  EXPECT_EQ(textToInt("1234567890"), 1234567890);
  EXPECT_EQ(textToInt("0000000000000000000042"), 42);
}

TEST(NumberTextTest, SaturatesIntegers) {
  EXPECT_EQ(textToInt("2147483647"), INT_MAX);
  EXPECT_EQ(textToInt("2147483648"), INT_MAX);
  EXPECT_EQ(textToInt("99999999999999999999999"), INT_MAX);
  EXPECT_EQ(textToInt("-2147483648"), INT_MIN);
  EXPECT_EQ(textToInt("-99999999999999999999999"), INT_MIN);
}

TEST(NumberTextTest, ReadsNullAsZero) {
  EXPECT_EQ(textToInt(nullptr), 0);
  EXPECT_EQ(textToDouble(nullptr), 0.0);
}

TEST(NumberTextTest, ReadsFractionsAsAtofDoes) {
  EXPECT_DOUBLE_EQ(textToDouble("1.50"), 1.5);
  EXPECT_DOUBLE_EQ(textToDouble("  -0.25x"), -0.25);
  EXPECT_DOUBLE_EQ(textToDouble(".5"), 0.5);
  EXPECT_DOUBLE_EQ(textToDouble("5."), 5.0);
  EXPECT_DOUBLE_EQ(textToDouble("1e3"), 1000.0);
  EXPECT_DOUBLE_EQ(textToDouble("1,5"), 1.0);
  EXPECT_DOUBLE_EQ(textToDouble("abc"), 0.0);
  EXPECT_DOUBLE_EQ(textToDouble(""), 0.0);
}

TEST(NumberTextTest, ReadsWholeFractionsAsAtofDoes) {
  for (const char* text : {"0", "5000", "123456789", "1234567890", "1.00", "32.00", "0.00", "1.000", "1.0", "1.00 ", "1.001", "7|8",
                           "2.00e1", "0x10", "12345678901234567890", "-1.00", "100.25"}) {
    EXPECT_EQ(textToDouble(text), std::strtod(text, nullptr)) << text;
  }
}

TEST(NumberTextTest, SaturatesFractions) {
  EXPECT_EQ(textToDouble("1e999"), std::numeric_limits<double>::infinity());
  EXPECT_EQ(textToDouble("-1e999"), -std::numeric_limits<double>::infinity());
}

TEST(NumberTextTest, KeepsThePoint_UnderACommaLocale) {
  const CommaLocale locale;
  ASSERT_TRUE(locale.active()) << "the machine has no locale with a decimal comma; scripts/setup installs one";

  EXPECT_EQ(fixed(1.5), "1.50");
  EXPECT_DOUBLE_EQ(textToDouble("1.50"), 1.5);
  EXPECT_DOUBLE_EQ(textToDouble("1,5"), 1.0);
}

TEST(NumberTextTest, LeavesTheCallersLocaleAsItWas) {
  const CommaLocale locale;
  ASSERT_TRUE(locale.active()) << "the machine has no locale with a decimal comma; scripts/setup installs one";

  fixed(1.5);
  textToDouble("1.5");

  char text[16];
  std::snprintf(text, sizeof(text), "%.1f", 1.5);
  EXPECT_STREQ(text, "1,5");
}

}  // namespace
