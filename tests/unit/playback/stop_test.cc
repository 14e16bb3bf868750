// SPDX-License-Identifier: Apache-2.0
// stop(): the command, the wait for its confirmation, and what it forgets.
#include <chrono>
#include <string>
#include <thread>

#include "support/av_control_lock.h"
#include "tests/support/playing_plugin.h"

namespace {

using fakes::isCommand;
using fixture::kFirstUrl;
using fixture::kNextUrl;
using fixture::lengthOf;
using fixture::Strings;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds kWholeWait{5000};

class StopTest : public fixture::PlayingPluginTest {
 protected:
  StopTest() {
    EXPECT_TRUE(setData(kFirstUrl));
    forget();
  }
  std::string stop() { return plugin.callShown("stop"); }

  /// In playing, with a "PLAY" sent.
  void startPlaying() {
    ASSERT_TRUE(say("READY_TO_PLAY"));
    ASSERT_TRUE(av->startPlayer(1.0));
    enter(1);
  }

  milliseconds timedStop(const std::string& expected) {
    const auto begin = steady_clock::now();
    EXPECT_EQ(expected, stop());
    return std::chrono::duration_cast<milliseconds>(steady_clock::now() - begin);
  }
};

TEST_F(StopTest, InStoppedIsTrueAtOnce) {
  EXPECT_LT(timedStop("bool:true"), kWholeWait / 10);

  EXPECT_EQ(Strings{}, finishedActions());
  EXPECT_EQ(Strings{}, hostEntries());
}

TEST_F(StopTest, InConnectingIsFalseAtOnce) {
  enter(3);

  EXPECT_LT(timedStop("bool:false"), kWholeWait / 10);

  EXPECT_EQ(3, state());
}

TEST_F(StopTest, CancelsADeferredPlay_AlsoWhenItIsRefused) {
  ASSERT_EQ("bool:true", plugin.callShown("play"));
  ASSERT_EQ(3, state());

  EXPECT_EQ("bool:false", stop());
  forget();
  ASSERT_TRUE(say("READY_TO_PLAY"));

  EXPECT_EQ(Strings{}, finishedActions());
  EXPECT_EQ(3, state());
}

class ConfirmedStopTest : public StopTest, public ::testing::WithParamInterface<int> {};

TEST_P(ConfirmedStopTest, EndsWithTheLibrarysWord) {
  startPlaying();
  enter(GetParam());
  library().addHook(isCommand("STOP"), [this](const fakes::Call& call) { library().fire(call.handle, "STOPPED"); });

  EXPECT_LT(timedStop("bool:true"), kWholeWait / 2);

  EXPECT_EQ(0, state());
  EXPECT_EQ((Strings{"playState=int:0", "onPlayStateChange(int:0)", "speed=double:0"}), hostEntries());
  EXPECT_EQ((Strings{"STOP"}), finishedActions());
  EXPECT_EQ((std::vector<int>{0, 1}), defaultSelections());
}

INSTANTIATE_TEST_SUITE_P(States, ConfirmedStopTest, ::testing::Values(1, 2, 4, 5));

TEST_F(StopTest, TakesOnlyStoppedWhileItWaits) {
  startPlaying();
  library().addHook(isCommand("STOP"), [this](const fakes::Call& call) {
    for (const char* word : {"PAUSED", "BUFFERING", "FINISHED", "READY_TO_PLAY", "SELECTED_VIDEO_COMPONENT_CHANGED", "STOPPED"}) {
      library().fire(call.handle, word);
    }
  });

  EXPECT_EQ("bool:true", stop());

  EXPECT_EQ((Strings{"onPlayStateChange(int:0)"}), events(plugin));
}

TEST_F(StopTest, IsConfirmedWithoutTheProcessWideLock) {
  startPlaying();
  library().addHook(isCommand("STOP"), [this](const fakes::Call& call) { library().fire(call.handle, "STOPPED"); });
  fixture::Gate held;
  fixture::Gate leave;
  std::thread holder([&] {
    const AVControlLock lock(AVControlPlugin::the_mutex);
    held.open();
    leave.wait();
  });
  ASSERT_TRUE(held.wait());

  const milliseconds time = timedStop("bool:true");
  leave.open();
  holder.join();

  EXPECT_LT(time, kWholeWait / 2);
  EXPECT_EQ(0, state());
}

TEST_F(StopTest, ForgetsQueuedMediaAndAPendingSeek) {
  startPlaying();
  ASSERT_TRUE(av->JS_Seek(2000.0));
  ASSERT_TRUE(av->isSeeking());
  av->queueUrl(kNextUrl, lengthOf(kNextUrl));
  library().addHook(isCommand("STOP"), [this](const fakes::Call& call) { library().fire(call.handle, "STOPPED"); });

  EXPECT_EQ("bool:true", stop());

  EXPECT_FALSE(av->isSeeking());
  EXPECT_FALSE(av->alreadyHasQueuedMedia());
}

TEST_F(StopTest, IsFalseAtOnce_WhenTheQueueIsFull) {
  startPlaying();
  const auto blocked = blockWorker();
  fillQueue();

  EXPECT_LT(timedStop("bool:false"), kWholeWait / 2);

  EXPECT_EQ(1, state());
}

TEST_F(StopTest, WaitsItsWholeTime_WhenNothingPlaysInTheLibrary) {
  enter(1);  // no "PLAY" was sent, so no "STOP" is, and nobody confirms: deliberate

  const milliseconds time = timedStop("bool:true");

  EXPECT_GE(time, kWholeWait);
  EXPECT_LT(time, kWholeWait * 2);
  EXPECT_EQ(1, state());
  EXPECT_EQ((Strings{"speed=double:0"}), hostEntries());
  EXPECT_EQ(Strings{}, finishedActions());
}

TEST_F(StopTest, AConfirmationThatNobodyAskedForDoesNotStop) {
  startPlaying();

  ASSERT_TRUE(say("STOPPED"));

  EXPECT_EQ(1, state());
  EXPECT_EQ(Strings{}, hostEntries());
  EXPECT_EQ(std::vector<int>{}, defaultSelections());
}

TEST_F(StopTest, InErrorRenewsThePlayerSilently) {
  startPlaying();
  enter(6);
  const unsigned long before = av->getNativePlayerHandle();

  EXPECT_LT(timedStop("bool:true"), kWholeWait / 2);

  EXPECT_NE(before, av->getNativePlayerHandle());
  EXPECT_EQ(0, state());
  EXPECT_EQ(Strings{}, events(plugin));
  EXPECT_EQ("int:0", plugin.readShown("playState"));
}

TEST_F(StopTest, ThePlayerPlaysAgainWithoutANewSource) {
  library().setAutoAnswer(true);
  ASSERT_TRUE(setData(kNextUrl));
  ASSERT_EQ("bool:true", plugin.callShown("play"));
  ASSERT_TRUE(waitForEvent(plugin, "onPlayStateChange(int:1)"));
  ASSERT_EQ("bool:true", stop());
  ASSERT_TRUE(library().waitIdle());
  forget();

  EXPECT_EQ("bool:true", plugin.callShown("play"));

  EXPECT_TRUE(waitForEvent(plugin, "onPlayStateChange(int:1)"));
  EXPECT_EQ(0U, library().count(fakes::isWrite("INPUT")));
}

}  // namespace
