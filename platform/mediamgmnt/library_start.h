// SPDX-License-Identifier: Apache-2.0
// Starting GStreamer once for the process, without making anybody wait who does not need it.
#pragma once

namespace mediamgmnt {

/// Starts GStreamer and loads the plugins that playback needs, on a thread in the background. Further calls do nothing. Thread:
/// any.
void beginLibraryStart();

/// Waits until GStreamer itself has started (plugins may still be loading). @return false when it could not. Thread: not the
/// script's.
bool waitForLibraryStart();

/// No presentation is being opened any more than one in the background warm-up: ask it to end early. For the process's end.
void endLibraryStart();

}  // namespace mediamgmnt
