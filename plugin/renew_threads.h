// SPDX-License-Identifier: Apache-2.0
// Counts the renew threads, which nobody joins, so that the library's static objects outlast them.
#pragma once

#include <atomic>

class RenewThreads {
 public:
  RenewThreads() = default;
  RenewThreads(const RenewThreads&) = delete;
  RenewThreads& operator=(const RenewThreads&) = delete;
  /// Waits until all have ended; each lasts as long as a few calls of the media library, which do not wait.
  ~RenewThreads() {
    for (int running = m_running; running != 0; running = m_running) m_running.wait(running);
  }

  void begin() { ++m_running; }
  /// The last thing that a renew thread does.
  void end() {
    if (--m_running == 0) m_running.notify_all();
  }

 private:
  std::atomic<int> m_running{0};
};
