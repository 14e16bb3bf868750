// SPDX-License-Identifier: Apache-2.0
// The threads on which GStreamer fetches over HTTP. Each runs a context of its own for a session of the HTTP library.
#pragma once

#include <glib-object.h>

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

namespace mediamgmnt {

/// From here on each of them is known from its first request on. More than once is harmless. Thread: any.
void watchDownloadThreads();

/// The contexts of those that run. Thread: any but theirs.
std::vector<std::shared_ptr<GMainContext>> runningDownloadContexts();

/// Runs @p action on the thread that fetches for @p source, an HTTP source element, and waits for its end: at a moment when all
/// that was asked of that thread before has been taken up, and all that was answered has been handed over. Thread: any but that
/// one.
/// @return false when nothing has been fetched for it, or the thread does not come by in @p patience: then the action is not run.
bool runOnDownloadThread(gpointer source, const std::function<void()>& action, std::chrono::milliseconds patience);

}  // namespace mediamgmnt
