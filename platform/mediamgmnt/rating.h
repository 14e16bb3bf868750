// SPDX-License-Identifier: Apache-2.0
// One parental rating of the content, and its text form. Thread: any.
#pragma once

#include <optional>
#include <string>

namespace mediamgmnt {

/// Who rates the content.
enum class RatingSource { Descriptor, Manifest, Broadcast };

/// @p value counts as the scheme does: the code of the broadcast standard for "dvb-si", else the place in the scheme's list.
struct Rating {
  std::string name;
  std::string scheme;
  int value = 0;
  int labels = 0;
  std::string region;             ///< two letters, upper case, or as it was written; empty: everywhere
  std::optional<int> minimumAge;  ///< none: the scheme or its value is not known

  bool operator==(const Rating&) const = default;
};

/// "name|scheme|value|labels|region|". What would be read as something else ("|", line ends, "NOT_AVAILABLE") is left out, and
/// each text is cut to what fits.
std::string ratingText(const Rating& rating);

}  // namespace mediamgmnt
