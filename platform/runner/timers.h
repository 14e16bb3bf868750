// SPDX-License-Identifier: Apache-2.0
// The script's timers on the GLib main loop. Script thread only.
#pragma once

#include <JavaScriptCore/JavaScript.h>
#include <glib.h>

#include <functional>
#include <map>
#include <memory>

namespace runner {

class Timers {
 public:
  /// @p run calls a script function and deals with what it throws.
  Timers(JSGlobalContextRef context, std::function<void(JSObjectRef)> run);
  Timers(const Timers&) = delete;
  Timers& operator=(const Timers&) = delete;
  ~Timers();

  /// @return a number that tells the timer apart, never 0.
  int start(JSObjectRef function, double milliseconds, bool repeats);
  /// An unknown id does nothing.
  void clear(int id);
  void clearAll();
  bool empty() const { return m_timers.empty(); }

 private:
  struct Timer;
  static gboolean fire(gpointer data);

  JSGlobalContextRef m_context;
  std::function<void(JSObjectRef)> m_run;
  std::map<int, std::unique_ptr<Timer>> m_timers;
  int m_next = 1;
};

}  // namespace runner
