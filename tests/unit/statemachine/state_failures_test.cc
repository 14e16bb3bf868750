// SPDX-License-Identifier: Apache-2.0
// What the states do when the player's queue has no room for what they want.
#include <string>

#include "tests/support/playing_plugin.h"

namespace {

using fixture::kFirstUrl;
using fixture::kNextUrl;
using fixture::lengthOf;
using fixture::Strings;
using fixture::operator+;

const std::string kSpeedZero = "speed=double:0";
const std::string kNextData = std::string("data=string:") + kNextUrl;
const Strings kIntoError{"playState=int:6", "onPlayStateChange(int:6)", kSpeedZero};
const Strings kIntoConnecting{"playState=int:3", "onPlayStateChange(int:3)"};
const Strings kIntoBuffering{"playState=int:4", "onPlayStateChange(int:4)"};

class StateFailuresTest : public fixture::PlayingPluginTest {
 protected:
  /// In state @p id, with a source, and room for @p room commands only.
  void enterWithRoom(int id, int room) {
    ASSERT_TRUE(av->setDataProperty(kFirstUrl, lengthOf(kFirstUrl)));
    if (id == 0) {
      machine().transitTo(1);
    }
    enter(id);
    if (id == 2) {
      machine().onConnectionEstablished();
    }
    m_blocked = blockWorker();
    fillQueue(room);
    log().clear();
  }

  void expectError(const Strings& before) {
    EXPECT_EQ(6, state());
    EXPECT_EQ(2, errorCode());
    EXPECT_EQ(before + kIntoError, hostEntries());
    EXPECT_EQ((std::vector<int>{0, 1}), defaultSelections());
  }

  void expectNothing(int id) {
    EXPECT_EQ(id, state());
    EXPECT_EQ(-1, errorCode());
    EXPECT_EQ(Strings{}, hostEntries());
  }

  void TearDown() override {
    m_blocked.reset();
    PlayingPluginTest::TearDown();
  }

 private:
  std::unique_ptr<fixture::BlockedWorker> m_blocked;
};

class IdleStateFailuresTest : public StateFailuresTest, public ::testing::WithParamInterface<int> {};

TEST_P(IdleStateFailuresTest, PlayFails_WhenTheStartIsRefused) {
  enterWithRoom(GetParam(), 0);
  machine().onPlay(1.0);
  expectError({});
}

TEST_P(IdleStateFailuresTest, PlayFails_WhenTheResizeIsRefused) {
  enterWithRoom(GetParam(), 1);
  machine().onPlay(1.0);
  expectError({});
}

TEST_P(IdleStateFailuresTest, PauseFails_AfterTheSpeedWasSet) {
  enterWithRoom(GetParam(), 0);
  machine().onPlay(0.0);
  expectError({kSpeedZero});
}

INSTANTIATE_TEST_SUITE_P(StoppedAndConnecting, IdleStateFailuresTest, ::testing::Values(0, 3));

class ActiveStateFailuresTest : public StateFailuresTest, public ::testing::WithParamInterface<int> {};

TEST_P(ActiveStateFailuresTest, PlayFails) {
  enterWithRoom(GetParam(), 0);
  machine().onPlay(1.0);
  expectError({});
}

INSTANTIATE_TEST_SUITE_P(PlayingPausedBuffering, ActiveStateFailuresTest, ::testing::Values(1, 2, 4));

TEST_F(StateFailuresTest, PauseFails_InPlaying) {
  enterWithRoom(1, 0);
  machine().onPlay(0.0);
  expectError({"playPosition=double:1500"});
}

TEST_F(StateFailuresTest, PauseFails_InBuffering) {
  enterWithRoom(4, 0);
  machine().onPlay(0.0);
  expectError({});
}

TEST_F(StateFailuresTest, ResumeStands_WhenOnlyTheResizeIsRefused) {
  enterWithRoom(2, 1);
  machine().onPlay(1.0);
  expectNothing(2);
}

TEST_F(StateFailuresTest, RestartFromTheEndFails_WhenTheSourceIsRefused) {
  enterWithRoom(5, 0);
  machine().onPlay(1.0);
  expectError(kIntoConnecting);
}

TEST_F(StateFailuresTest, RestartFromTheEndFails_WhenTheStartIsRefused) {
  enterWithRoom(5, 4);
  machine().onPlay(1.0);
  expectError(kIntoConnecting);
}

TEST_F(StateFailuresTest, RestartFromTheEndStands_WhenOnlyTheResizeIsRefused) {
  enterWithRoom(5, 5);

  machine().onPlay(1.0);

  EXPECT_EQ(4, state());
  EXPECT_EQ(-1, errorCode());
  EXPECT_EQ(kIntoConnecting + kIntoBuffering, hostEntries());
}

TEST_F(StateFailuresTest, RestartFromErrorStaysInConnecting_WhenTheSourceIsRefused) {
  enterWithRoom(6, 0);

  machine().onPlay(1.0);

  EXPECT_EQ(3, state());
  EXPECT_EQ(2, errorCode());
  EXPECT_EQ((Strings{"playState=int:3"}), hostEntries());
}

TEST_F(StateFailuresTest, RestartFromErrorStaysInConnecting_WhenTheStartIsRefused) {
  enterWithRoom(6, 4);

  machine().onPlay(1.0);

  EXPECT_EQ(3, state());
  EXPECT_EQ(2, errorCode());
  EXPECT_EQ((Strings{"playState=int:3"}), hostEntries());
}

TEST_F(StateFailuresTest, RestartFromErrorStands_WhenOnlyTheResizeIsRefused) {
  enterWithRoom(6, 5);

  machine().onPlay(1.0);

  EXPECT_EQ(4, state());
  EXPECT_EQ(-1, errorCode());
}

class StopFailuresTest : public StateFailuresTest, public ::testing::WithParamInterface<int> {};

TEST_P(StopFailuresTest, StopSaysFalseAndKeepsTheSpeed) {
  enterWithRoom(GetParam(), 0);

  EXPECT_FALSE(machine().onStop());

  expectNothing(GetParam());
}

TEST_P(StopFailuresTest, TypeChangeSaysFalse) {
  enterWithRoom(GetParam(), 0);

  EXPECT_FALSE(machine().onTypeChanged());

  expectNothing(GetParam());
}

INSTANTIATE_TEST_SUITE_P(States, StopFailuresTest, ::testing::Values(1, 2, 4, 5));

class SeekFailuresTest : public StateFailuresTest, public ::testing::WithParamInterface<int> {};

TEST_P(SeekFailuresTest, SeekSaysFalse) {
  enterWithRoom(GetParam(), 0);

  EXPECT_FALSE(machine().onSeek(1.0));

  expectNothing(GetParam());
}

INSTANTIATE_TEST_SUITE_P(States, SeekFailuresTest, ::testing::Values(0, 1, 2, 3, 4));

TEST_F(StateFailuresTest, NewDataStopsTheMachineAndSaysFalse_WhenTheStopIsRefused) {
  enterWithRoom(1, 4);

  EXPECT_FALSE(machine().onDataChanged(kNextUrl, lengthOf(kNextUrl)));

  EXPECT_EQ(0, state());
  EXPECT_EQ((Strings{"playState=int:0", "onPlayStateChange(int:0)", kNextData}), hostEntries());
}

TEST_F(StateFailuresTest, NewDataSaysFalse_WhenTheSourceIsRefusedInStopped) {
  enterWithRoom(0, 0);

  EXPECT_FALSE(machine().onDataChanged(kNextUrl, lengthOf(kNextUrl)));

  EXPECT_EQ(0, state());
}

TEST_F(StateFailuresTest, QueueInStoppedPlays_ThoughTheSourceWasRefused) {
  enterWithRoom(0, 0);

  EXPECT_TRUE(machine().onQueue(kNextUrl, lengthOf(kNextUrl)));

  expectError({kNextData});
}

TEST_F(StateFailuresTest, QueueInFinishedSaysFalse_WhenTheSourceIsRefused) {
  enterWithRoom(5, 0);

  EXPECT_FALSE(machine().onQueue(kNextUrl, lengthOf(kNextUrl)));

  EXPECT_EQ(5, state());
  EXPECT_EQ(-1, errorCode());
  EXPECT_EQ((Strings{kNextData}), hostEntries());
}

TEST_F(StateFailuresTest, RestartFails_WithASourceThatIsNoHttpAddress) {
  EXPECT_FALSE(av->setDataProperty("file:a.mp4", 10));
  enter(5);

  machine().onPlay(1.0);

  expectError(kIntoConnecting);
}

}  // namespace
