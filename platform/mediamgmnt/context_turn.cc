// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/context_turn.h"

#include <condition_variable>
#include <memory>
#include <mutex>

namespace mediamgmnt {
namespace {

/// One action that another thread waits for.
struct Turn {
  std::mutex mutex;
  std::condition_variable changed;
  std::function<void()> action;  // guarded by mutex, like all below
  bool over = false;
};

gboolean take(gpointer data) {
  Turn& turn = **static_cast<std::shared_ptr<Turn>*>(data);
  const std::lock_guard lock(turn.mutex);
  if (!turn.over) turn.action();
  turn.over = true;
  turn.changed.notify_all();
  return G_SOURCE_REMOVE;
}

}  // namespace

bool runInContext(GMainContext* context, const std::function<void()>& action, std::chrono::milliseconds patience) {
  const auto turn = std::make_shared<Turn>();
  turn->action = action;
  GSource* const task = g_idle_source_new();
  const auto drop = +[](gpointer data) { delete static_cast<std::shared_ptr<Turn>*>(data); };
  g_source_set_callback(task, take, new std::shared_ptr<Turn>(turn), drop);
  g_source_attach(task, context);
  g_source_unref(task);
  std::unique_lock lock(turn->mutex);
  const bool taken = turn->changed.wait_for(lock, patience, [&] { return turn->over; });
  turn->over = true;
  return taken;
}

bool leavesContextBehind(const std::function<void()>& action) {
  const std::unique_ptr<GMainContext, decltype(&g_main_context_unref)> mark(g_main_context_new(), &g_main_context_unref);
  g_main_context_push_thread_default(mark.get());
  action();
  bool left = false;
  for (GMainContext* top = nullptr; (top = g_main_context_get_thread_default()) != mark.get(); left = true) {
    g_main_context_pop_thread_default(top);
  }
  g_main_context_pop_thread_default(mark.get());
  return left;
}

}  // namespace mediamgmnt
