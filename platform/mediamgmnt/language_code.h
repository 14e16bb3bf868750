// SPDX-License-Identifier: Apache-2.0
// Language codes as pages expect them. Thread: any.
#pragma once

#include <string>
#include <string_view>

namespace mediamgmnt {

/// The ISO 639-2/T code ("deu") of a language written in any form of ISO 639 or BCP 47 ("de", "ger", "DE-at"). Three letters that
/// are in no list stay as they are; "und" for everything else.
std::string languageCode(std::string_view written);

}  // namespace mediamgmnt
