// SPDX-License-Identifier: Apache-2.0
// The text of a WebVTT cue as the content of a TTML paragraph. Thread: any.
#pragma once

#include <string>
#include <string_view>

namespace mediamgmnt {

/// Bold, italic and underlined text, languages and the eight colours become spans, line breaks <br/>; other tags go, their text
/// stays. The result is well-formed whatever comes in.
std::string ttmlMarkupOf(std::string_view text);

}  // namespace mediamgmnt
