// SPDX-License-Identifier: Apache-2.0
// GStreamer elements that belong to somebody else in this process.
#pragma once

namespace mediamgmnt {

/// A browser engine that uses GStreamer for its own media registers elements that stand before the ordinary ones, now or at any
/// later time, and work for its own players only. From here on they are not chosen for ours. Call it once, with GStreamer started.
void keepForeignElementsOut();

}  // namespace mediamgmnt
