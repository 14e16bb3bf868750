// SPDX-License-Identifier: Apache-2.0
#include "support/av_control_mutex.h"

AVControlMutex::AVControlMutex(const char* name) : m_name(name != nullptr ? name : "mutex_name") {
  pthread_mutex_init(&m_mutex, nullptr);
}

AVControlMutex::~AVControlMutex() { pthread_mutex_destroy(&m_mutex); }

int AVControlMutex::lock(unsigned long /*id*/) { return pthread_mutex_lock(&m_mutex); }

int AVControlMutex::unlock(unsigned long /*id*/) { return pthread_mutex_unlock(&m_mutex); }
