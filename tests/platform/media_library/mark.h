// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace mediamgmnt {

/// Something that happens once, and can be waited for.
class Mark {
 public:
  void set() {
    {
      const std::lock_guard lock(m_mutex);
      m_set = true;
    }
    m_changed.notify_all();
  }
  bool isSet() {
    const std::lock_guard lock(m_mutex);
    return m_set;
  }
  bool wait() {
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, std::chrono::seconds(30), [this] { return m_set; });
  }

 private:
  std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_set = false;
};

}  // namespace mediamgmnt
