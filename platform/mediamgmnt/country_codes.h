// SPDX-License-Identifier: Apache-2.0
// Country codes as ratings carry them. Thread: any.
#pragma once

#include <string>
#include <string_view>

namespace mediamgmnt {

/// Broadcasts name countries by three letters, descriptors by two, of either case. @return two letters in upper case where that can
/// be told, else @p country as it is.
std::string twoLetterCountry(std::string_view country);

}  // namespace mediamgmnt
