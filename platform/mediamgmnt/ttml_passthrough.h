// SPDX-License-Identifier: Apache-2.0
// A GStreamer element that hands TTML documents through untouched.
#pragma once

namespace mediamgmnt {

/// Makes the element known to automatic pipelines. Without it a presentation with TTML subtitles fails as a whole: the stock
/// elements either refuse such a stream or render it. Call once, after gst_init. @return false when the registration failed.
bool registerTtmlPassThrough();

}  // namespace mediamgmnt
