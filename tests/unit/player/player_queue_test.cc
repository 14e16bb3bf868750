// SPDX-License-Identifier: Apache-2.0
// The bounded queue between the callers and the worker.
#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/unit/player/player_test_base.h"

namespace {

using fakes::isCommand;
using fakes::isFunction;
using Strings = std::vector<std::string>;

class PlayerQueueTest : public PlayerTestBase {
 protected:
  void fillQueue() {
    for (int i = 0; i < Player::sm_max_commands; ++i) {
      ASSERT_TRUE(player->pause());
    }
  }
};

TEST_F(PlayerQueueTest, HoldsTen) { EXPECT_EQ(10, Player::sm_max_commands); }

TEST_F(PlayerQueueTest, KeepsTheFirstTenInOrder_AndRefusesTheEleventh) {
  const auto blocked = blockWorker();

  for (int i = 1; i <= 10; ++i) {
    EXPECT_TRUE(player->seek(i));
  }
  EXPECT_FALSE(player->seek(11));
  blocked->release();

  const Strings expected{"SEEK 1.00", "SEEK 2.00", "SEEK 3.00", "SEEK 4.00", "SEEK 5.00",
                         "SEEK 6.00", "SEEK 7.00", "SEEK 8.00", "SEEK 9.00", "SEEK 10.00"};
  EXPECT_EQ(expected, actionsUntilClosed());
}

TEST_F(PlayerQueueTest, TakesCommandsAgain_AfterARefusal) {
  {
    const auto blocked = blockWorker();
    fillQueue();
    EXPECT_FALSE(player->play(1.0));
  }
  ASSERT_TRUE(library().waitForCount(isCommand("PAUSE"), 10));
  library().clearCalls();

  EXPECT_TRUE(player->play(2.0));

  EXPECT_EQ((Strings{"PLAY 2.00", "STOP"}), actionsUntilClosed());
}

/// Held, the worker takes nothing out: the queue fills up and stays full, until the last hold ends.
TEST_F(PlayerQueueTest, CarriesNothingOut_WhileHeld) {
  const std::shared_ptr<Player> shared(std::shared_ptr<void>(), player.get());
  {
    const Player::Hold outer(shared);
    {
      const Player::Hold inner(shared);
      fillQueue();
    }
    EXPECT_FALSE(player->play(1.0));
    EXPECT_EQ(Strings{}, library().actions());
  }

  ASSERT_TRUE(library().waitForCount(isCommand("PAUSE"), 10));
  EXPECT_TRUE(player->play(2.0));
  library().clearCalls();
  EXPECT_EQ("STOP", actionsUntilClosed().back());
}

TEST_F(PlayerQueueTest, HoldsNothing_WithoutAPlayer) {
  const Player::Hold hold(nullptr);

  EXPECT_TRUE(player->play(1.0));

  EXPECT_TRUE(library().waitForCall(isCommand("PLAY")));
}

TEST_F(PlayerQueueTest, RefusesEveryKindOfCommand_WhenFull) {
  const auto blocked = blockWorker();
  fillQueue();

  EXPECT_FALSE(player->play(1.0));
  EXPECT_FALSE(player->stop());
  EXPECT_FALSE(player->pause());
  EXPECT_FALSE(player->seek(1.0));
  EXPECT_FALSE(player->resize());
  EXPECT_FALSE(player->stopBroadcast());
  EXPECT_FALSE(player->setInput("http://media.example/a.mp4"));
  EXPECT_FALSE(player->setForcedFormat("video/mp4"));
  EXPECT_FALSE(player->setUserAgent("agent"));
  EXPECT_FALSE(player->setNativeWindowSize("1280x720"));
  EXPECT_FALSE(player->setLoopParam("3"));
  EXPECT_FALSE(player->setCacheParam("yes"));
  EXPECT_FALSE(player->handleDispatchEvent("ERROR"));
}

TEST_F(PlayerQueueTest, IsUsed_EvenWhenTheInputWasRefused) {
  const auto blocked = blockWorker();
  fillQueue();
  ASSERT_FALSE(player->is_used());

  EXPECT_FALSE(player->setInput("http://media.example/a.mp4"));

  EXPECT_TRUE(player->is_used());
}

TEST_F(PlayerQueueTest, KeepsTheCoordinates_EvenWhenTheResizeWasRefused) {
  const auto blocked = blockWorker();
  fillQueue();

  player->setCoordinates(10, 20, 640, 360);

  EXPECT_FALSE(player->positionChanged(10, 20, 640, 360));
  blocked->release();
  ASSERT_TRUE(library().waitForCount(isCommand("PAUSE"), 10));
  EXPECT_EQ(0U, library().count(isCommand("SET_WINDOW_PROPERTIES")));
  library().clearCalls();
  ASSERT_TRUE(player->resize());
  EXPECT_EQ((Strings{"SET_WINDOW_PROPERTIES 10|20|640|360|"}), actionsUntilClosed());
}

TEST_F(PlayerQueueTest, RunsCommandsOnOneThreadOfItsOwn) {
  player->pause();
  player->seek(1.0);
  player->close();

  const auto calls = library().calls(isFunction(fakes::Function::kCmdPlayer));
  ASSERT_EQ(2U, calls.size());
  EXPECT_NE(std::this_thread::get_id(), calls[0].thread);
  EXPECT_EQ(calls[0].thread, calls[1].thread);
}

TEST_F(PlayerQueueTest, PopsTheOldestFirst) {
  const auto blocked = blockWorker();
  ASSERT_TRUE(player->pause());
  ASSERT_TRUE(player->stop());
  _player_thread_command command{};

  ASSERT_TRUE(player->popCommand(command));
  EXPECT_EQ(2, command.code);
  ASSERT_TRUE(player->popCommand(command));
  EXPECT_EQ(1, command.code);
  EXPECT_FALSE(player->popCommand(command));
}

TEST_F(PlayerQueueTest, TakesAReadyMadeRecord) {
  _player_thread_command command{2, nullptr};

  EXPECT_TRUE(player->pushCommand(command));

  EXPECT_EQ((Strings{"PAUSE"}), actionsUntilClosed());
}

TEST_F(PlayerQueueTest, IgnoresUnknownCodesAndGoesOn) {
  _player_thread_command unknown{77, nullptr};

  EXPECT_TRUE(player->pushCommand(unknown));
  EXPECT_TRUE(player->pause());

  EXPECT_EQ((Strings{"PAUSE"}), actionsUntilClosed());
}

TEST_F(PlayerQueueTest, WorkerLeaves_WhenWokenWithAnEmptyList) {
  _player_thread_command command{};
  {
    const auto blocked = blockWorker();
    ASSERT_TRUE(player->pause());
    ASSERT_TRUE(player->popCommand(command));  // its semaphore unit stays behind
  }

  player->close();  // joins the worker, whichever way it left

  EXPECT_EQ(1U, library().count(isFunction(fakes::Function::kClosePlayer)));
  EXPECT_EQ(0U, library().count(isCommand("PAUSE")));
}

/// Where the host runs handlers while it is told of an event, whoever ends the player may stand below whoever holds it back.
TEST_F(PlayerQueueTest, WhatIsHeldBackRunsBeforeThePlayerEnds) {
  const std::shared_ptr<Player> held = std::move(player);
  const Player::Hold hold(held);
  ASSERT_TRUE(held->play(1.0));
  ASSERT_TRUE(held->resize());

  held->close();

  EXPECT_EQ((Strings{"PLAY 1.00", "SET_WINDOW_PROPERTIES 0|0|1280|720|", "STOP"}), library().actions());
  EXPECT_EQ(1U, library().count(isFunction(fakes::Function::kClosePlayer)));
}

TEST_F(PlayerQueueTest, ResetLeavesAsManyRecords_AllCancelled) {
  const auto blocked = blockWorker();
  ASSERT_TRUE(player->pause());
  ASSERT_TRUE(player->seek(5.0));  // its number is freed at once: the leak checker sees it otherwise
  ASSERT_TRUE(player->setInput("http://media.example/a.mp4"));

  player->resetCommands();

  _player_thread_command command{};
  for (int i = 0; i < 3; ++i) {
    ASSERT_TRUE(player->popCommand(command));
    EXPECT_EQ(14, command.code);
  }
  EXPECT_FALSE(player->popCommand(command));
}

TEST_F(PlayerQueueTest, CancelledCommandsMakeNoCall_AndLaterOnesRun) {
  const auto blocked = blockWorker();
  ASSERT_TRUE(player->play(1.0));
  ASSERT_TRUE(player->seek(5.0));
  ASSERT_TRUE(player->pause());
  player->resetCommands();
  ASSERT_TRUE(player->seek(7.0));
  blocked->release();

  EXPECT_EQ((Strings{"SEEK 7.00"}), actionsUntilClosed());
}

TEST_F(PlayerQueueTest, ResetDoesNotMakeRoom) {
  const auto blocked = blockWorker();
  fillQueue();

  player->resetCommands();

  EXPECT_FALSE(player->pause());
}

TEST_F(PlayerQueueTest, StopDoesNotCancelWhatIsBeforeIt) {
  const auto blocked = blockWorker();
  ASSERT_TRUE(player->play(1.0));
  ASSERT_TRUE(player->seek(5.0));
  ASSERT_TRUE(player->stop());
  blocked->release();

  EXPECT_EQ((Strings{"PLAY 1.00", "SEEK 5.00", "STOP"}), actionsUntilClosed());
}

TEST_F(PlayerQueueTest, RunsWhatIsPending_WhenItEnds) {
  const auto blocked = blockWorker();
  ASSERT_TRUE(player->setInput("http://media.example/a.mp4"));
  ASSERT_TRUE(player->play(1.0));
  blocked->release();

  EXPECT_EQ((Strings{"INPUT=http://media.example/a.mp4", "PLAY 1.00", "STOP"}), actionsUntilClosed());
}

TEST_F(PlayerQueueTest, DropsWhatIsBehindTheExitCommand) {
  const auto blocked = blockWorker();
  _player_thread_command leave{15, nullptr};
  ASSERT_TRUE(player->pushCommand(leave));
  EXPECT_TRUE(player->play(1.0));  // its number goes with the player: the leak checker sees it otherwise
  blocked->release();

  EXPECT_EQ(Strings{}, actionsUntilClosed());
  EXPECT_EQ(1U, library().count(isFunction(fakes::Function::kClosePlayer)));
}

TEST_F(PlayerQueueTest, RunsAFullQueueAndEnds) {
  auto blocked = blockWorker();
  fillQueue();
  std::thread ender([this] { player->close(); });  // the exit command finds no room
  blocked->release();
  ender.join();

  EXPECT_EQ(10U, library().count(isCommand("PAUSE")));
  EXPECT_EQ(1U, library().count(isFunction(fakes::Function::kClosePlayer)));
}

TEST_F(PlayerQueueTest, RunsAFullQueueAndEnds_WhenTheWorkerIsReleasedOnlyAfterTheRefusal) {
  auto blocked = blockWorker();
  fillQueue();
  fixture::Gate ended;
  std::thread ender([this, &ended] {
    player.reset();
    ended.open();
  });
  EXPECT_FALSE(ended.wait(std::chrono::milliseconds(200)));  // time for the exit command to be refused; nothing depends on it
  blocked->release();

  EXPECT_TRUE(ended.wait());
  ender.join();
  EXPECT_EQ(10U, library().count(isCommand("PAUSE")));
}

TEST_F(PlayerQueueTest, RefusesCommands_OnceItHasEnded) {
  player->close();

  EXPECT_FALSE(player->pause());
  EXPECT_FALSE(player->play(1.0));
  EXPECT_FALSE(player->handleDispatchEvent("ERROR"));
}

TEST_F(PlayerQueueTest, EndsOnce) {
  player->play(1.0);
  player->close();
  player->close();
  player.reset();

  EXPECT_EQ(1U, library().count(isFunction(fakes::Function::kClosePlayer)));
  EXPECT_EQ(1U, library().count(isCommand("STOP")));
}

TEST_F(PlayerQueueTest, SpendsEachSemaphoreUnitOnOneRecord) {
  for (int round = 0; round < 500; ++round) {
    while (!player->seek(round)) {
      std::this_thread::yield();  // full: the worker is at it
    }
  }
  player->close();

  const auto calls = library().calls(isCommand("SEEK"));
  ASSERT_EQ(500U, calls.size());
  for (std::size_t i = 0; i < calls.size(); ++i) {
    ASSERT_EQ(std::to_string(i) + ".00", calls[i].argument);
  }
}

TEST_F(PlayerQueueTest, CountsWhatManyThreadsPush) {
  constexpr int kThreads = 4;
  std::vector<std::thread> callers;
  std::atomic<int> taken{0};
  for (int i = 0; i < kThreads; ++i) {
    callers.emplace_back([this, &taken] {
      for (int call = 0; call < 200; ++call) {
        taken += player->pause() ? 1 : 0;
      }
    });
  }
  for (std::thread& caller : callers) {
    caller.join();
  }
  player->close();

  EXPECT_GT(taken.load(), 0);
  EXPECT_EQ(static_cast<std::size_t>(taken.load()), library().count(isCommand("PAUSE")));
}

}  // namespace
