// SPDX-License-Identifier: Apache-2.0
// Something to be done from the main loop, when no script is on the stack. Main thread only.
#pragma once

#include <glib.h>

#include <functional>

namespace browser {

class Deferred {
 public:
  explicit Deferred(std::function<void()> action);
  Deferred(const Deferred&) = delete;
  Deferred& operator=(const Deferred&) = delete;
  /// What was scheduled and has not run does not run any more.
  ~Deferred();

  /// Runs the action once, soon, however often this is called before that.
  void schedule();

 private:
  static gboolean dispatch(GSource* source, GSourceFunc callback, gpointer data);

  std::function<void()> m_action;
  GSourceFuncs m_functions;
  GSource* m_source;
};

}  // namespace browser
