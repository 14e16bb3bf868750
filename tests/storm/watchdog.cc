// SPDX-License-Identifier: Apache-2.0
#include "tests/storm/watchdog.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace storm {

Watchdog::Watchdog(std::string what, std::chrono::seconds limit)
    : m_what(std::move(what)), m_limit(limit), m_thread([this] { watch(); }) {}

Watchdog::~Watchdog() {
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_done = true;
  }
  m_changed.notify_all();
  m_thread.join();
}

void Watchdog::watch() {
  std::unique_lock<std::mutex> lock(m_mutex);
  if (m_changed.wait_for(lock, m_limit, [this] { return m_done; })) {
    return;
  }
  std::fprintf(stderr, "watchdog: \"%s\" did not end within %lld s: deadlock or lost wake-up\n", m_what.c_str(),
               static_cast<long long>(m_limit.count()));
  std::abort();
}

}  // namespace storm
