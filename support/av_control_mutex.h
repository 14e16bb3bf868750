// SPDX-License-Identifier: Apache-2.0
// The one lock type of the plugin: a named POSIX mutex.
#pragma once

#include <pthread.h>

/// Not recursive: a thread that locks it twice hangs.
class AVControlMutex {
 public:
  /// @p name is borrowed and must outlive the mutex; null stands for "mutex_name".
  explicit AVControlMutex(const char* name = nullptr);
  AVControlMutex(const AVControlMutex&) = delete;
  AVControlMutex& operator=(const AVControlMutex&) = delete;
  ~AVControlMutex();

  /// The id is accepted and ignored. @return what POSIX returned, 0 for success.
  int lock(unsigned long id);
  int unlock(unsigned long id);

  const char* name() const noexcept { return m_name; }

 private:
  pthread_mutex_t m_mutex;
  const char* m_name;
};
