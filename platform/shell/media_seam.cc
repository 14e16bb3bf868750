// SPDX-License-Identifier: Apache-2.0
#include "platform/shell/media_seam.h"

#include <atomic>
#include <mutex>

namespace shell {

namespace {

std::atomic<const MediaFunctions*> s_functions{nullptr};
std::atomic<bool> s_watched{false};
std::shared_mutex s_observerMutex;
SeamObserver* s_observer = nullptr;  ///< guarded by s_observerMutex

}  // namespace

const MediaFunctions* mediaFunctions() { return s_functions.load(std::memory_order_acquire); }
void setMediaFunctions(const MediaFunctions* functions) { s_functions.store(functions, std::memory_order_release); }

SeamWatch::SeamWatch() {
  if (!isSeamWatched()) return;
  m_lock = std::shared_lock(s_observerMutex);
  m_observer = s_observer;
}

bool isSeamWatched() { return s_watched.load(std::memory_order_acquire); }

void setSeamObserver(SeamObserver* observer) {
  const std::unique_lock lock(s_observerMutex);
  s_observer = observer;
  s_watched.store(observer != nullptr, std::memory_order_release);
}

}  // namespace shell
