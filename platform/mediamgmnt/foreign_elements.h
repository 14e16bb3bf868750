// SPDX-License-Identifier: Apache-2.0
// A browser engine may use GStreamer in this process, too, and arrange the elements to its own liking.
#pragma once

namespace mediamgmnt {

/// The engine's own elements stand before the ordinary ones and work for its own players only. From here on they are not chosen
/// for ours, whenever they are registered. Call it once, with GStreamer started.
void keepForeignElementsOut();

/// The engine takes the elements of adaptive streaming out of the choice. They are put back. Thread: any; before each presentation.
void restoreAdaptiveElements();

}  // namespace mediamgmnt
