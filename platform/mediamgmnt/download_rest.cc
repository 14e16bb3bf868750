// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/download_rest.h"

#include <glib-object.h>
#include <libsoup/soup.h>

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>

namespace mediamgmnt {

struct DownloadRest::Round {
  std::size_t expected = 0;
  bool over = false;
};

namespace {

using Context = std::unique_ptr<GMainContext, decltype(&g_main_context_unref)>;

/// A thread that does not come by in this time is not waited for.
constexpr std::chrono::milliseconds kPatience{100};
constexpr std::chrono::milliseconds kLongestRest{20};

std::mutex mutex;
std::condition_variable changed;
std::map<GObject*, Context> contexts;  // guarded by mutex, like all below; of the sessions that live
bool resting = false;

/// The context's end lets go of what is queued there, which wants the mutex, too: it comes when that is free.
void forget(gpointer, GObject* session) {
  std::unique_lock lock(mutex);
  const auto gone = contexts.extract(session);
  lock.unlock();
}

/// A session says this on the thread that fetches for it, which runs a context of its own for that.
gboolean onRequest(GSignalInvocationHint*, guint, const GValue* values, gpointer) {
  GMainContext* const context = g_main_context_get_thread_default();
  if (context == nullptr) return TRUE;  // a thread that waits for its answer itself
  auto* const session = static_cast<GObject*>(g_value_get_object(values));
  const std::lock_guard lock(mutex);
  if (contexts.find(session) != contexts.end()) return TRUE;
  contexts.emplace(session, Context(g_main_context_ref(context), &g_main_context_unref));
  g_object_weak_ref(session, forget, nullptr);
  return TRUE;
}

/// A context that can be had is run by nobody: its thread has ended, or has not begun.
bool isRun(GMainContext* context) {
  if (!g_main_context_acquire(context)) return true;
  g_main_context_release(context);
  return false;
}

}  // namespace

void DownloadRest::watchThreads() {
  static const gulong hook = [] {
    g_type_class_unref(g_type_class_ref(SOUP_TYPE_SESSION));
    return g_signal_add_emission_hook(g_signal_lookup("request-queued", SOUP_TYPE_SESSION), 0, onRequest, nullptr, nullptr);
  }();
  static_cast<void>(hook);
}

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
  std::unique_lock lock(mutex);
  changed.wait_for(lock, kPatience, [] { return !resting; });
  resting = true;
  for (const auto& each : contexts) {
    if (!isRun(each.second.get())) continue;
    ++m_round->expected;
    GSource* const source = g_idle_source_new();
    g_source_set_callback(source, rest, new Shared(m_round), drop);
    g_source_attach(source, each.second.get());
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
