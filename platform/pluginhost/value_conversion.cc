// SPDX-License-Identifier: Apache-2.0
#include "platform/pluginhost/value_conversion.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>

namespace pluginhost {
namespace {

std::string_view viewOf(const _CorvelNativeVariant& value) {
  return value.string.text == nullptr ? std::string_view() : std::string_view(value.string.text, value.string.length);
}

std::optional<double> parse(std::string_view text) {
  double number = 0;
  const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool whole = problem == std::errc() && end == text.data() + text.size();
  return whole ? std::optional(number) : std::nullopt;
}

/// Script writes "1e-7" where C++ writes "1e-07".
std::string withoutExponentZero(std::string text) {
  const auto exponent = text.find('e');
  if (exponent != std::string::npos && text[exponent + 2] == '0') text.erase(exponent + 2, 1);
  return text;
}

}  // namespace

bool toBoolean(const _CorvelNativeVariant& value) {
  switch (value.details.type) {
    case CORVEL_BOOLEAN: return value.boolean;
    case CORVEL_INTEGER: return value.integer != 0;
    case CORVEL_DOUBLE: return value.number != 0 && !std::isnan(value.number);
    case CORVEL_STRING: return !viewOf(value).empty();
    default: return value.details.type == CORVEL_OBJECT;
  }
}

std::optional<double> toNumber(const _CorvelNativeVariant& value) {
  switch (value.details.type) {
    case CORVEL_BOOLEAN: return value.boolean ? 1 : 0;
    case CORVEL_INTEGER: return value.integer;
    case CORVEL_DOUBLE: return value.number;
    case CORVEL_STRING: return parse(viewOf(value));
    default: return std::nullopt;
  }
}

std::optional<std::int32_t> toInteger(const _CorvelNativeVariant& value) {
  const auto number = toNumber(value);
  if (!number) return std::nullopt;
  const double whole = std::trunc(*number);
  using Limits = std::numeric_limits<std::int32_t>;
  const bool fits = whole >= Limits::min() && whole <= Limits::max();  // also false for NaN
  return fits ? std::optional(static_cast<std::int32_t>(whole)) : std::nullopt;
}

std::string numberText(double number) {
  if (std::isnan(number)) return "NaN";
  if (std::isinf(number)) return number < 0 ? "-Infinity" : "Infinity";
  if (number == 0) return "0";  // also for the negative zero
  const double size = std::fabs(number);
  const bool plain = size >= 1e-6 && size < 1e21;
  std::array<char, 40> digits;  // the longest: sign, "0.000001" and 16 more digits, or 21 digits
  const auto format = plain ? std::chars_format::fixed : std::chars_format::scientific;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number, format).ptr;
  return withoutExponentZero(std::string(digits.data(), end));
}

std::optional<std::string> toText(const _CorvelNativeVariant& value) {
  switch (value.details.type) {
    case CORVEL_BOOLEAN: return value.boolean ? "true" : "false";
    case CORVEL_INTEGER: return std::to_string(value.integer);
    case CORVEL_DOUBLE: return numberText(value.number);
    case CORVEL_STRING: return std::string(viewOf(value));
    case CORVEL_UNDEFINED:
    case CORVEL_NO_VALUE: return std::string();
    default: return std::nullopt;
  }
}

}  // namespace pluginhost
