// SPDX-License-Identifier: Apache-2.0
// A queue of tasks and timers with the one thread that runs them. Each player's control thread is one.
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <mutex>

namespace mediamgmnt {

/// Runs tasks in the order in which they were posted, and timers when they are due.
///
/// Made of the standard library instead of a GLib main context: it costs no file descriptor, so a page may hold hundreds of
/// objects, and its locking is visible to the race checkers. Threads: post(), postAfter(), cancel() and quit() any; run() on the
/// one thread that the owner starts.
class TaskLoop {
 public:
  using Task = std::function<void()>;
  using TimerId = unsigned long;

  TaskLoop() = default;
  TaskLoop(const TaskLoop&) = delete;
  TaskLoop& operator=(const TaskLoop&) = delete;

  /// Never blocks. After quit() the task is dropped.
  void post(Task task);

  /// @return an id for cancel(), never 0.
  TimerId postAfter(std::chrono::milliseconds delay, Task task);

  /// A timer that has run, was cancelled or never was is ignored. Called on the loop's own thread, the timer will not run any more.
  void cancel(TimerId timer);

  /// Runs until quit(). What is still queued then is dropped, unrun.
  void run();

  void quit();

 private:
  using Clock = std::chrono::steady_clock;
  struct Timer {
    TimerId id;
    Task task;
  };

  bool takeNext(Task& next);

  std::mutex m_mutex;
  std::condition_variable m_wake;
  std::deque<Task> m_tasks;                          // guarded by m_mutex
  std::multimap<Clock::time_point, Timer> m_timers;  // guarded by m_mutex
  TimerId m_lastTimer = 0;                           // guarded by m_mutex
  bool m_quit = false;                               // guarded by m_mutex
};

}  // namespace mediamgmnt
