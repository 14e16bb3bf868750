// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/thread_ledger.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <set>
#include <thread>
#include <utility>

namespace mediamgmnt {
namespace {

struct Ledger {
  std::mutex mutex;
  std::condition_variable changed;
  std::map<unsigned long, int> running;                // guarded by mutex
  std::set<unsigned long> closed = {kLibraryThreads};  // guarded by mutex; only handles that still run threads, and the library
};

/// Never destroyed: threads may still end while the process's static objects go away.
Ledger& ledger() {
  static Ledger* const instance = new Ledger;
  return *instance;
}

void enter(unsigned long handle) {
  Ledger& list = ledger();
  std::lock_guard lock(list.mutex);
  ++list.running[handle];
}

void leave(unsigned long handle) {
  Ledger& list = ledger();
  std::lock_guard lock(list.mutex);
  if (--list.running[handle] == 0) {
    list.running.erase(handle);
    if (handle != kLibraryThreads) list.closed.erase(handle);
  }
  list.changed.notify_all();
}

bool anyLeftOver(const Ledger& list) {
  return std::any_of(list.closed.begin(), list.closed.end(),
                     [&list](unsigned long handle) { return list.running.count(handle) != 0; });
}

}  // namespace

void startListedThread(unsigned long handle, std::function<void()> body) {
  enter(handle);
  try {
    // Detached: waitForLeftoverThreads() is who waits.
    std::thread([handle, work = std::move(body)]() mutable {
      work();
      work = nullptr;  // what the body holds goes before the thread counts as gone
      leave(handle);
    }).detach();
  } catch (...) {
    leave(handle);
    throw;
  }
}

void markClosed(unsigned long handle) {
  Ledger& list = ledger();
  std::lock_guard lock(list.mutex);
  if (list.running.count(handle) != 0) list.closed.insert(handle);
}

bool waitForLeftoverThreads(int timeoutMs) {
  Ledger& list = ledger();
  std::unique_lock lock(list.mutex);
  return list.changed.wait_for(lock, std::chrono::milliseconds(std::max(timeoutMs, 0)), [&list] { return !anyLeftOver(list); });
}

}  // namespace mediamgmnt
