// SPDX-License-Identifier: Apache-2.0
// What an address must have before anything is fetched from it. Thread: any.
#pragma once

#include <string_view>

namespace mediamgmnt {

/// @p url is http or https.
bool isWebAddress(std::string_view url);

/// @p url, a web address, names a host. The engine that fetches complains aloud about one that does not, instead of failing.
bool namesHost(std::string_view url);

}  // namespace mediamgmnt
