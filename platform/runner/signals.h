// SPDX-License-Identifier: Apache-2.0
// SIGINT and SIGTERM as an orderly end: they wake the main loop and can be seen from inside a running script.
#pragma once

#include <glib.h>

#include <functional>

namespace runner {

/// Main thread; one at a time. A second signal ends the process at once.
class Signals {
 public:
  explicit Signals(std::function<void()> wake);
  Signals(const Signals&) = delete;
  Signals& operator=(const Signals&) = delete;
  ~Signals();

  /// @return the signal that came, or 0.
  static int received();

 private:
  static gboolean onReadable(gint fd, GIOCondition condition, gpointer data);

  std::function<void()> m_wake;
  int m_fd;
  guint m_source;
};

}  // namespace runner
