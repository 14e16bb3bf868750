// SPDX-License-Identifier: Apache-2.0
// Lets a thread of GStreamer's do something of ours between two things of its own.
#pragma once

#include <glib.h>

#include <chrono>
#include <functional>

namespace mediamgmnt {

/// Runs @p action on the thread that runs @p context, after all that is queued there, and waits for its end. Thread: any but that
/// one.
/// @return false when that thread does not come by in @p patience: then the action is not run.
bool runInContext(GMainContext* context, const std::function<void()>& action, std::chrono::milliseconds patience);

/// Runs @p action here.
/// @return true when it leaves this thread with another default context than before, as what locks a loop of GStreamer's and does
/// not unlock it again does; the context is then taken away from the thread.
bool leavesContextBehind(const std::function<void()>& action);

}  // namespace mediamgmnt
