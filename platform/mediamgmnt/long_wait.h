// SPDX-License-Identifier: Apache-2.0
// Help for a call that waits for something which may have been missed.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace mediamgmnt {

/// When it lives longer than @p patience, calls @p help again and again, with 0, 1, 2, …, on a thread of its own. Its end waits for
/// a call under way.
class LongWait {
 public:
  LongWait(std::chrono::milliseconds patience, std::function<void(unsigned)> help);
  ~LongWait();
  LongWait(const LongWait&) = delete;
  LongWait& operator=(const LongWait&) = delete;

 private:
  void run(std::chrono::milliseconds patience, const std::function<void(unsigned)>& help);

  std::mutex m_mutex;
  std::condition_variable m_ended;
  bool m_over = false;  // guarded by m_mutex
  std::thread m_thread;
};

}  // namespace mediamgmnt
