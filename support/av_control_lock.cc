// SPDX-License-Identifier: Apache-2.0
#include "support/av_control_lock.h"

std::atomic<unsigned long> AVControlLock::sm_id{0};

AVControlLock::AVControlLock(AVControlMutex& mutex) : m_mutex(mutex), m_id(sm_id.load(std::memory_order_relaxed)) {
  sm_id.store(m_id + 1, std::memory_order_relaxed);
  m_mutex.lock(m_id);
}

AVControlLock::~AVControlLock() { m_mutex.unlock(m_id); }
