// SPDX-License-Identifier: Apache-2.0
// Where a WebVTT cue is shown, as attributes of a TTML region. Thread: any.
#pragma once

#include <string>
#include <string_view>

namespace mediamgmnt {

/// " tts:origin=… tts:extent=… …" for "line:10% position:25% size:50% align:start". Settings that make no sense are passed over.
std::string regionAttributesOf(std::string_view settings);

}  // namespace mediamgmnt
