// SPDX-License-Identifier: Apache-2.0
// The licence exchange of ClearKey: JSON texts, as the W3C's Encrypted Media Extensions define them. Thread: any.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/mediamgmnt/clear_keys.h"

namespace mediamgmnt {

/// No licence is larger.
inline constexpr std::size_t kLargestLicence = 64 * 1024;

std::string licenceRequest(const std::vector<KeyId>& ids);

/// @return nothing for what is no licence. Entries that hold no key of 16 bytes are passed over.
std::optional<KeyMap> readLicence(std::string_view text);

}  // namespace mediamgmnt
