// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/long_wait.h"

#include <system_error>
#include <utility>

namespace mediamgmnt {
namespace {

constexpr std::chrono::milliseconds kBetweenHelps{20};

}  // namespace

LongWait::LongWait(std::chrono::milliseconds patience, std::function<void(unsigned)> help) {
  try {
    m_thread = std::thread([this, patience, help = std::move(help)] { run(patience, help); });
  } catch (const std::system_error&) {  // without a thread there is no help, which is seldom needed
  }
}

LongWait::~LongWait() {
  {
    const std::lock_guard lock(m_mutex);
    m_over = true;
  }
  m_ended.notify_one();
  if (m_thread.joinable()) m_thread.join();
}

void LongWait::run(std::chrono::milliseconds patience, const std::function<void(unsigned)>& help) {
  std::unique_lock lock(m_mutex);
  for (unsigned time = 0; !m_ended.wait_for(lock, time == 0 ? patience : kBetweenHelps, [this] { return m_over; }); ++time) {
    lock.unlock();
    help(time);
    lock.lock();
  }
}

}  // namespace mediamgmnt
