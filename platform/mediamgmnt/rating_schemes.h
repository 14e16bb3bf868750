// SPDX-License-Identifier: Apache-2.0
// What the common rating schemes mean: from a scheme's name and a value to an age. Thread: any.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/mediamgmnt/rating.h"

namespace mediamgmnt {

/// The scheme of the broadcast standard, whose values are ages.
inline constexpr char kDvbScheme[] = "dvb-si";

/// A rating as descriptors and manifests write it: for "dvb-si" the age in years. What is not known keeps its texts and has no age.
Rating readRating(std::string_view scheme, std::string_view value, std::string_view region);

/// An entry of the broadcast standard's parental_rating_descriptor. @return nothing for the code that means "undefined".
std::optional<Rating> readDvbRating(std::string_view country, std::uint8_t code);

/// Whether @p scheme is one of those in the table.
bool isKnownScheme(std::string_view scheme);

}  // namespace mediamgmnt
