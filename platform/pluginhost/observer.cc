// SPDX-License-Identifier: Apache-2.0
#include "platform/pluginhost/observer.h"

#include <atomic>

namespace pluginhost {
namespace {

constinit std::atomic<Observer*> g_observer{nullptr};
constinit std::atomic<int> g_watches{0};

}  // namespace

// Counted first, asked for then: who removes an observer stores first and looks at the count then, so one of the two sees the
// other.
Watch::Watch() : m_counted(g_observer.load(std::memory_order_acquire) != nullptr) {
  if (!m_counted) return;
  ++g_watches;
  m_observer = g_observer;
}

void Watch::end() {
  if (--g_watches == 0) g_watches.notify_all();
}

void setObserver(Observer* observer) {
  g_observer = observer;
  for (int watches = g_watches; watches != 0; watches = g_watches) g_watches.wait(watches);
}

}  // namespace pluginhost
