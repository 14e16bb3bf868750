// SPDX-License-Identifier: Apache-2.0
// Brings the events that native objects raise on any thread to the script thread's GLib main loop, in order.
#pragma once

#include <glib.h>

#include <functional>
#include <optional>
#include <vector>

#include "platform/pluginhost/shell.h"

namespace script {

/// One per process, made before the first object and destroyed after the last one. Script thread only.
class EventPump {
 public:
  /// @p handler gets one event at a time from the main loop, outside of every host and plugin call: it may destroy objects.
  explicit EventPump(std::function<void(const pluginhost::Event&)> handler);
  EventPump(const EventPump&) = delete;
  EventPump& operator=(const EventPump&) = delete;
  ~EventPump();

  bool empty() const;

 private:
  static gboolean dispatch(GSource* source, GSourceFunc callback, gpointer data);
  void deliver();

  std::function<void(const pluginhost::Event&)> m_handler;
  std::vector<pluginhost::Event> m_batch;
  GSourceFuncs m_functions;
  GSource* m_source;
  std::optional<pluginhost::EventQueue> m_queue;
};

}  // namespace script
