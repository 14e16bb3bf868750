// SPDX-License-Identifier: Apache-2.0
// Numbers as the interface's texts have them: C locale, whatever locale the process has. Thread: any.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace mediamgmnt {

/// The number at the start of @p text, spaces before it skipped, anything after it ignored. Nothing when there is none, or when it
/// is not finite.
std::optional<double> parseNumber(std::string_view text);

/// The same of a place: infinite ones count, and what is no number ("nan") is 0.
std::optional<double> parsePlace(std::string_view text);

/// @p value with two digits after the point, "1.50"; @p value is finite and below 1e15.
std::string formatSpeed(double value);

std::string formatWhole(long long value);

}  // namespace mediamgmnt
