// SPDX-License-Identifier: Apache-2.0
// A GStreamer element that makes timed-text documents of WebVTT, with their places and line breaks, which GStreamer's own parser
// drops.
#pragma once

namespace mediamgmnt {

/// Once, after gst_init. Its output looks like that of the TTML pass-through. @return false when GStreamer refuses it.
bool registerWebVttElement();

}  // namespace mediamgmnt
