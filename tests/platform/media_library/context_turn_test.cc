// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/context_turn.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>

namespace mediamgmnt {
namespace {

using Context = std::unique_ptr<GMainContext, decltype(&g_main_context_unref)>;

TEST(ContextTurnTest, ActionRunsOnTheThreadOfTheContextBeforeTheCallReturns) {
  const Context context(g_main_context_new(), &g_main_context_unref);
  GMainLoop* const loop = g_main_loop_new(context.get(), FALSE);
  std::thread runner([&] { g_main_loop_run(loop); });
  std::thread::id where;
  EXPECT_TRUE(runInContext(
      context.get(), [&] { where = std::this_thread::get_id(); }, std::chrono::minutes(1)));
  EXPECT_EQ(where, runner.get_id());
  EXPECT_TRUE(runInContext(
      context.get(), [&] { g_main_loop_quit(loop); }, std::chrono::minutes(1)));
  runner.join();
  g_main_loop_unref(loop);
}

TEST(ContextTurnTest, ActionOfAContextThatNobodyRunsIsGivenUp) {
  const Context context(g_main_context_new(), &g_main_context_unref);
  bool ran = false;
  EXPECT_FALSE(runInContext(
      context.get(), [&] { ran = true; }, std::chrono::milliseconds(1)));
  while (g_main_context_iteration(context.get(), FALSE) != FALSE) {
  }
  EXPECT_FALSE(ran);
}

TEST(ContextTurnTest, ContextThatAnActionLeavesBehindIsNoticedAndTakenAway) {
  const Context context(g_main_context_new(), &g_main_context_unref);
  const auto push = [&] { g_main_context_push_thread_default(context.get()); };
  const auto pop = [&] { g_main_context_pop_thread_default(context.get()); };
  push();
  EXPECT_TRUE(leavesContextBehind([&] { push(); }));
  EXPECT_EQ(g_main_context_get_thread_default(), context.get());
  EXPECT_FALSE(leavesContextBehind([&] {
    push();
    pop();
  }));
  EXPECT_EQ(g_main_context_get_thread_default(), context.get());
  pop();
  EXPECT_EQ(g_main_context_get_thread_default(), nullptr);
}

}  // namespace
}  // namespace mediamgmnt
