// SPDX-License-Identifier: Apache-2.0
#include "platform/pluginhost/observer.h"

#include <atomic>

namespace pluginhost {
namespace {

constinit std::atomic<Observer*> g_observer{nullptr};

}  // namespace

Observer* observer() { return g_observer.load(std::memory_order_acquire); }

void setObserver(Observer* observer) { g_observer.store(observer, std::memory_order_release); }

}  // namespace pluginhost
