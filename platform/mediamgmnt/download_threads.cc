// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/download_threads.h"

#include <libsoup/soup.h>

#include <map>
#include <mutex>

#include "platform/mediamgmnt/context_turn.h"

namespace mediamgmnt {

namespace {

using Context = std::shared_ptr<GMainContext>;

struct Session {
  explicit Session(GMainContext* run) : context(g_main_context_ref(run), &g_main_context_unref) {
    g_weak_ref_init(&message, nullptr);
  }
  ~Session() { g_weak_ref_clear(&message); }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  const Context context;
  GWeakRef message;  ///< the newest
};

struct Sessions {
  std::mutex mutex;
  std::map<GObject*, Session> living;  // guarded by mutex
};

/// Never destroyed: sessions may still go while the process's static objects do.
Sessions& sessions() {
  static Sessions* const instance = new Sessions;
  return *instance;
}

/// The context's end lets go of what is queued there, which may want the mutex, too: it comes when that is free.
void forget(gpointer, GObject* session) {
  std::unique_lock lock(sessions().mutex);
  const auto gone = sessions().living.extract(session);
  lock.unlock();
}

/// A session says this on its thread.
gboolean onRequest(GSignalInvocationHint*, guint, const GValue* values, gpointer) {
  GMainContext* const context = g_main_context_get_thread_default();
  if (context == nullptr) return TRUE;  // a thread that waits for its answer itself
  auto* const session = static_cast<GObject*>(g_value_get_object(values));
  const std::lock_guard lock(sessions().mutex);
  const auto [known, isNew] = sessions().living.try_emplace(session, context);
  if (isNew) g_object_weak_ref(session, forget, nullptr);
  g_weak_ref_set(&known->second.message, g_value_get_object(values + 1));
  return TRUE;
}

/// A context that can be had is run by nobody: its thread has ended, or has not begun.
bool isRun(GMainContext* context) {
  if (!g_main_context_acquire(context)) return true;
  g_main_context_release(context);
  return false;
}

/// The source listens to what it asked for.
bool isFor(Session& session, gpointer source) {
  auto* const message = static_cast<GObject*>(g_weak_ref_get(&session.message));
  if (message == nullptr) return false;
  const bool listens = g_signal_handler_find(message, G_SIGNAL_MATCH_DATA, 0, 0, nullptr, nullptr, source) != 0;
  g_object_unref(message);
  return listens;
}

Context contextFor(gpointer source) {
  const std::lock_guard lock(sessions().mutex);
  for (auto& [session, facts] : sessions().living) {
    if (isFor(facts, source)) return facts.context;
  }
  return nullptr;
}

}  // namespace

void watchDownloadThreads() {
  static const gulong hook = [] {
    g_type_class_unref(g_type_class_ref(SOUP_TYPE_SESSION));
    return g_signal_add_emission_hook(g_signal_lookup("request-queued", SOUP_TYPE_SESSION), 0, onRequest, nullptr, nullptr);
  }();
  static_cast<void>(hook);
}

std::vector<std::shared_ptr<GMainContext>> runningDownloadContexts() {
  std::vector<Context> running;
  const std::lock_guard lock(sessions().mutex);
  for (const auto& [session, facts] : sessions().living) {
    if (isRun(facts.context.get())) running.push_back(facts.context);
  }
  return running;
}

/// Requests are handed over by sources of this priority, which go in the order of their arrival; answers go before them.
bool runOnDownloadThread(gpointer source, const std::function<void()>& action, std::chrono::milliseconds patience) {
  const Context context = contextFor(source);
  if (context == nullptr || !isRun(context.get())) return false;
  return runInContext(context.get(), action, patience);
}

}  // namespace mediamgmnt
