// SPDX-License-Identifier: Apache-2.0
// The names of encodings as pages see them: those of the "codecs" parameter of MIME types where one exists. Thread: any.
#pragma once

#include <gst/gst.h>

#include <string>

namespace mediamgmnt {

/// @return "avc1.4d401e", "mp4a.40.2", …; "" when the caps tell nothing.
std::string codecName(const GstCaps* caps);

}  // namespace mediamgmnt
