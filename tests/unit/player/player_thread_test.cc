// SPDX-License-Identifier: Apache-2.0
// The worker thread itself: what disturbs it, and a player that could not get one.
#include <pthread.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <memory>
#include <thread>

#include "tests/unit/player/player_test_base.h"

namespace {

using fakes::isCommand;
using fakes::isFunction;

std::atomic<int> signalsHandled{0};

void countSignal(int /*number*/) { ++signalsHandled; }

/// A handler that interrupts what waits: no SA_RESTART.
class InterruptingSignal {
 public:
  InterruptingSignal() {
    struct sigaction action {};
    action.sa_handler = countSignal;
    sigaction(SIGUSR1, &action, &m_before);
  }
  ~InterruptingSignal() { sigaction(SIGUSR1, &m_before, nullptr); }

 private:
  struct sigaction m_before {};
};

class PlayerThreadTest : public PlayerTestBase {};

TEST_F(PlayerThreadTest, AnInterruptedWaitIsTakenUpAgain) {
  signalsHandled = 0;
  const InterruptingSignal signal;
  pthread_t worker{};
  library().addHook(isCommand("PAUSE"), [&worker](const fakes::Call&) { worker = pthread_self(); });
  ASSERT_TRUE(player->pause());
  ASSERT_TRUE(player->resize());
  ASSERT_TRUE(library().waitForCall(isCommand("SET_WINDOW_PROPERTIES")));  // the hook has run
  for (int i = 1; i <= 50; ++i) {
    ASSERT_EQ(0, pthread_kill(worker, SIGUSR1));
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (signalsHandled < i && std::chrono::steady_clock::now() < deadline) {
      std::this_thread::yield();
    }
    ASSERT_EQ(i, signalsHandled);
  }

  ASSERT_TRUE(player->seek(1.0));

  EXPECT_TRUE(library().waitForCall(isCommand("SEEK")));
}

/// While it lives, no thread with default attributes can be made: their stack would not fit the address space.
class NoMoreThreads {
 public:
  NoMoreThreads() {
    pthread_getattr_default_np(&m_before);
    pthread_attr_t impossible;
    pthread_attr_init(&impossible);
    pthread_attr_setstacksize(&impossible, std::size_t{1} << 50);
    pthread_setattr_default_np(&impossible);
    pthread_attr_destroy(&impossible);
  }
  ~NoMoreThreads() {
    pthread_setattr_default_np(&m_before);
    pthread_attr_destroy(&m_before);
  }

 private:
  pthread_attr_t m_before;
};

class PlayerWithoutThreadTest : public PlayerTestBase {
 protected:
  PlayerWithoutThreadTest() {
    player.reset();
    handle = ::openPlayer(1);
    const NoMoreThreads scarcity;
    player = std::make_unique<Player>(handle, nullptr);
    library().clearCalls();
  }
};

TEST_F(PlayerWithoutThreadTest, RefusesEveryCommand) {
  EXPECT_FALSE(player->play(1.0));
  EXPECT_FALSE(player->stop());
  EXPECT_FALSE(player->pause());
  EXPECT_FALSE(player->seek(1.0));
  EXPECT_FALSE(player->resize());
  EXPECT_FALSE(player->stopBroadcast());
  EXPECT_FALSE(player->setInput("http://media.example/a.mp4"));
  EXPECT_FALSE(player->handleDispatchEvent("ERROR"));
  _player_thread_command command{};
  EXPECT_FALSE(player->popCommand(command));
  player->resetCommands();

  EXPECT_TRUE(library().actions().empty());
}

TEST_F(PlayerWithoutThreadTest, AnswersQuestions) {
  library().setProperty("DURATION", "60000.00");
  double duration = 0.0;

  EXPECT_TRUE(player->getDuration(duration));

  EXPECT_EQ(60000.0, duration);
}

TEST_F(PlayerWithoutThreadTest, EndsAndClosesItsHandle) {
  player.reset();

  const auto close = library().waitForCall(isFunction(fakes::Function::kClosePlayer));
  ASSERT_TRUE(close.has_value());
  EXPECT_EQ(handle, close->handle);
}

}  // namespace
