// SPDX-License-Identifier: Apache-2.0
// The viewer's languages as the engine takes them.
#pragma once

#include <string>
#include <vector>

namespace browser {

/// BCP 47 tags ("de") of the ISO 639-2 codes ("deu,ger,und") between the commas, each once and in their order; "und" is none.
std::vector<std::string> languageTags(const std::string& codes);

}  // namespace browser
