// SPDX-License-Identifier: Apache-2.0
// Ends the process with a message when a test takes longer than it may: a deadlock must fail, not hang.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace storm {

/// Watches from its construction to its destruction. Thread: the test's; it owns one thread of its own.
class Watchdog {
 public:
  Watchdog(std::string what, std::chrono::seconds limit);
  Watchdog(const Watchdog&) = delete;
  Watchdog& operator=(const Watchdog&) = delete;
  ~Watchdog();

 private:
  void watch();

  const std::string m_what;
  const std::chrono::seconds m_limit;
  std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_done = false;
  std::thread m_thread;
};

}  // namespace storm
