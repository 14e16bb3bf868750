// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/number_text.h"

#include <array>
#include <charconv>
#include <cmath>

namespace mediamgmnt {

namespace {

std::optional<double> parseAny(std::string_view text) {
  const auto start = text.find_first_not_of(" \t\r\n");
  if (start == std::string_view::npos) return std::nullopt;
  text.remove_prefix(start);
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);

  double value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec != std::errc()) return std::nullopt;
  return value;
}

}  // namespace

std::optional<double> parseNumber(std::string_view text) {
  const std::optional<double> value = parseAny(text);
  return value && std::isfinite(*value) ? value : std::nullopt;
}

std::optional<double> parsePlace(std::string_view text) {
  const std::optional<double> value = parseAny(text);
  return value && std::isnan(*value) ? 0 : value;
}

// Pages ask for the speed often, and nearly always it is a whole number.
std::string formatSpeed(double value) {
  constexpr double kFew = 1000;
  const bool isWhole = std::fabs(value) < kFew && value == std::trunc(value);
  if (isWhole && (value != 0 || !std::signbit(value))) return formatWhole(static_cast<long long>(value)) + ".00";
  std::array<char, 32> buffer;  // sign, 15 digits, point, 2 digits
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed, 2);
  return std::string(buffer.data(), result.ptr);
}

std::string formatWhole(long long value) {
  std::array<char, 24> buffer;  // sign and 19 digits
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
  return std::string(buffer.data(), result.ptr);
}

}  // namespace mediamgmnt
