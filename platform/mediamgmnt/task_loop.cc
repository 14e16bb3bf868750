// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/task_loop.h"

#include <algorithm>
#include <utility>

namespace mediamgmnt {

void TaskLoop::post(Task task) {
  std::lock_guard lock(m_mutex);
  if (m_quit) return;
  m_tasks.push_back(std::move(task));
  m_wake.notify_one();
}

TaskLoop::TimerId TaskLoop::postAfter(std::chrono::milliseconds delay, Task task) {
  std::lock_guard lock(m_mutex);
  const TimerId id = ++m_lastTimer;
  if (!m_quit) m_timers.emplace(Clock::now() + delay, Timer{id, std::move(task)});
  m_wake.notify_one();
  return id;
}

void TaskLoop::cancel(TimerId timer) {
  std::lock_guard lock(m_mutex);
  const auto found =
      std::find_if(m_timers.begin(), m_timers.end(), [timer](const auto& entry) { return entry.second.id == timer; });
  if (found != m_timers.end()) m_timers.erase(found);
}

void TaskLoop::run() {
  Task next;
  while (takeNext(next)) {
    next();
    next = nullptr;  // what the task holds goes before the loop may end
  }
}

/// Due timers go first: tasks may come without end, a timer is a promise.
bool TaskLoop::takeNext(Task& next) {
  std::unique_lock lock(m_mutex);
  while (!m_quit) {
    if (!m_timers.empty() && m_timers.begin()->first <= Clock::now()) {
      next = std::move(m_timers.begin()->second.task);
      m_timers.erase(m_timers.begin());
      return true;
    }
    if (!m_tasks.empty()) {
      next = std::move(m_tasks.front());
      m_tasks.pop_front();
      return true;
    }
    if (m_timers.empty()) {
      m_wake.wait(lock);
    } else {
      m_wake.wait_until(lock, Clock::time_point(m_timers.begin()->first));
    }
  }
  return false;
}

void TaskLoop::quit() {
  std::deque<Task> tasks;
  std::multimap<Clock::time_point, Timer> timers;
  std::lock_guard lock(m_mutex);
  m_quit = true;
  tasks.swap(m_tasks);  // destroyed after the lock is released
  timers.swap(m_timers);
  m_wake.notify_all();
}

}  // namespace mediamgmnt
