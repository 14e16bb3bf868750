// SPDX-License-Identifier: Apache-2.0
// Scope guard of AVControlMutex.
#pragma once

#include <atomic>

#include "support/av_control_mutex.h"

class AVControlLock {
 public:
  explicit AVControlLock(AVControlMutex& mutex);
  AVControlLock(const AVControlLock&) = delete;
  AVControlLock& operator=(const AVControlLock&) = delete;
  ~AVControlLock();

  unsigned long id() const noexcept { return m_id; }

  /// Serial number of the next lock. Counted before the mutex is taken and not as one step, so two threads may get the same
  /// number: deliberate, since nothing but the ignored argument uses it.
  static std::atomic<unsigned long> sm_id;

 private:
  AVControlMutex& m_mutex;
  unsigned long m_id;
};
