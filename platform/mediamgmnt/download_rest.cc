// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/download_rest.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <vector>

#include "platform/mediamgmnt/download_threads.h"

namespace mediamgmnt {

struct DownloadRest::Round {
  std::size_t expected = 0;
  bool over = false;
};

namespace {

/// A thread that does not come by in this time is not waited for.
constexpr std::chrono::milliseconds kPatience{100};
constexpr std::chrono::milliseconds kLongestRest{20};

std::mutex mutex;
std::condition_variable changed;
bool resting = false;  // guarded by mutex

}  // namespace

/// Requests are handed over by sources of this priority, which go in the order of their arrival; answers go before them.
DownloadRest::DownloadRest() : m_round(std::make_shared<Round>()) {
  using Shared = std::shared_ptr<Round>;
  const auto rest = +[](gpointer data) -> gboolean {
    std::unique_lock lock(mutex);
    const Shared round = *static_cast<Shared*>(data);
    --round->expected;
    changed.notify_all();
    changed.wait_for(lock, kPatience, [&] { return round->expected == 0 || round->over; });
    changed.wait_for(lock, kLongestRest, [&] { return round->over; });
    return G_SOURCE_REMOVE;
  };
  const auto drop = +[](gpointer data) {
    const std::lock_guard lock(mutex);
    delete static_cast<Shared*>(data);
  };
  std::vector<std::shared_ptr<GMainContext>>
      contexts;  // the last to know one lets go of what is queued there, which wants the mutex
  std::unique_lock lock(mutex);
  changed.wait_for(lock, kPatience, [] { return !resting; });
  resting = true;
  contexts = runningDownloadContexts();
  for (const auto& context : contexts) {
    ++m_round->expected;
    GSource* const source = g_idle_source_new();
    g_source_set_callback(source, rest, new Shared(m_round), drop);
    g_source_attach(source, context.get());
    g_source_unref(source);
  }
  changed.wait_for(lock, kPatience, [this] { return m_round->expected == 0; });
}

DownloadRest::~DownloadRest() {
  {
    const std::lock_guard lock(mutex);
    m_round->over = true;
    resting = false;
  }
  changed.notify_all();
}

}  // namespace mediamgmnt
