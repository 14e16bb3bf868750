// SPDX-License-Identifier: Apache-2.0
// Keeps what takes a source apart from being built any further while the pipeline ends.
#pragma once

#include <gst/gst.h>

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace mediamgmnt {

/// GStreamer 1.22 overlooks an element that it is just adding for a type or a pad when the bin around it is stopped, and crashes
/// when that element goes on. So the end waits for such a step, and no further one is begun.
///
/// Threads: any. Outlives the elements that it watches.
class BuildGate {
 public:
  /// Of an element in a parser's bin: to be called when it is added, before anything else listens to it.
  void watch(GstElement* element);
  /// From here on nothing is built. Waits for what is under way, at most @p patience.
  void close(std::chrono::milliseconds patience);

 private:
  static void onType(GstElement* typefind, guint probability, GstCaps* caps, gpointer self);
  static void onTypeHandled(GstElement* typefind, guint probability, GstCaps* caps, gpointer self);
  static void onPad(GstElement* element, GstPad* pad, gpointer self);
  static void onPadHandled(GstElement* element, GstPad* pad, gpointer self);

  bool enter();
  void leave();

  std::mutex m_mutex;
  std::condition_variable m_left;
  int m_building = 0;  // guarded by m_mutex, like m_closed
  bool m_closed = false;
};

}  // namespace mediamgmnt
