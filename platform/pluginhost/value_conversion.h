// SPDX-License-Identifier: Apache-2.0
// What becomes of a script value whose type is not that of the row that it is written to.
//
// | row     | boolean        | number                           | text                        | null, undefined | object |
// | ------- | -------------- | -------------------------------- | --------------------------- | --------------- | ------ |
// | boolean | itself         | not 0 and not NaN                | not empty                   | false           | true   |
// | integer | 1 or 0         | cut to whole; refused out of int | as its number               | refused         | refused |
// | double  | 1 or 0         | itself                           | as its number               | refused         | refused |
// | text    | "true"/"false" | decimal, as script writes it     | itself                      | ""              | refused |
//
// A text is a number when all of it is one in decimal notation.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "host/corvel_native.h"

namespace pluginhost {

/// Each returns nothing when the value is refused. Thread: any.
bool toBoolean(const _CorvelNativeVariant& value);
std::optional<double> toNumber(const _CorvelNativeVariant& value);
std::optional<std::int32_t> toInteger(const _CorvelNativeVariant& value);
std::optional<std::string> toText(const _CorvelNativeVariant& value);

/// The number as JavaScript writes it: "640", "12.5", "3000000000", "1e+21", "NaN", "-Infinity". The locale does not matter.
std::string numberText(double number);

}  // namespace pluginhost
