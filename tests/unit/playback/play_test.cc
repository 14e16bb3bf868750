// SPDX-License-Identifier: Apache-2.0
// play(): what it sends at once, what it defers, and the elements that play no media.
#include <string>

#include "tests/support/playing_plugin.h"

namespace {

using fakes::isCommand;
using fakes::isFunction;
using fixture::inputActions;
using fixture::kFirstUrl;
using fixture::number;
using fixture::Strings;
using fixture::text;
using fixture::operator+;

const std::string kResize = "SET_WINDOW_PROPERTIES 0|0|1280|720|";
const Strings kConnecting{"playState=int:3", "onPlayStateChange(int:3)"};
const Strings kBuffering{"playState=int:4", "onPlayStateChange(int:4)"};

class PlayTest : public fixture::PlayingPluginTest {
 protected:
  PlayTest() {
    EXPECT_TRUE(setData(kFirstUrl));
    forget();
  }
  std::string play(double speed) { return plugin.callShown("play", {number(speed)}); }
  void makeReady() {
    ASSERT_TRUE(say("READY_TO_PLAY"));
    forget();
  }
};

TEST_F(PlayTest, WaitsForTheLibrarysReadiness) {
  EXPECT_EQ("bool:true", play(1.0));

  EXPECT_EQ(Strings{kResize}, finishedActions());
  EXPECT_EQ(kConnecting, hostEntries());
  forget();
  ASSERT_TRUE(say("READY_TO_PLAY"));
  EXPECT_EQ((Strings{"PLAY 1.00", kResize}), finishedActions());
  EXPECT_EQ(4, state());
}

TEST_F(PlayTest, TheLastSpeedIsTheOneThatWaits) {
  EXPECT_EQ("bool:true", play(1.0));
  EXPECT_EQ("bool:true", play(2.5));
  forget();

  ASSERT_TRUE(say("READY_TO_PLAY"));

  EXPECT_EQ((Strings{"PLAY 2.50", kResize}), finishedActions());
}

TEST_F(PlayTest, KeepsWaiting_WhenItIsPausedMeanwhile) {
  EXPECT_EQ("bool:true", play(1.0));
  forget();
  EXPECT_EQ("bool:true", play(0.0));
  EXPECT_EQ((Strings{kResize, "PAUSE"}), finishedActions());
  EXPECT_EQ(3, state());
  forget();

  ASSERT_TRUE(say("READY_TO_PLAY"));

  EXPECT_EQ((Strings{"PLAY 1.00", kResize}), finishedActions());
  EXPECT_EQ(4, state());
}

TEST_F(PlayTest, ZeroNeverWaits) {
  EXPECT_EQ("bool:true", play(0.0));
  ASSERT_TRUE(library().waitForCount(isCommand("STOPBROADCAST"), 1));  // its own, before drain() sends one
  EXPECT_EQ((Strings{kResize, "PAUSE"}), finishedActions());
  forget();

  ASSERT_TRUE(say("READY_TO_PLAY"));

  EXPECT_EQ(Strings{}, finishedActions());
  EXPECT_EQ(0, state());
}

TEST_F(PlayTest, WaitsOnce) {
  EXPECT_EQ("bool:true", play(1.0));
  ASSERT_TRUE(say("READY_TO_PLAY"));
  forget();

  ASSERT_TRUE(say("READY_TO_PLAY"));

  EXPECT_EQ(Strings{}, finishedActions());
}

TEST_F(PlayTest, StartsAtOnce_WhenReady) {
  makeReady();

  EXPECT_EQ("bool:true", play(1.0));

  EXPECT_EQ((Strings{kResize, "PLAY 1.00", kResize}), finishedActions());
  EXPECT_EQ(kConnecting + kBuffering, hostEntries());
}

TEST_F(PlayTest, EstablishesTheConnectionFirst_WhenReadyAndConnected) {
  makeReady();
  ASSERT_TRUE(say("CONNECTED"));
  ASSERT_EQ(0, state());

  EXPECT_EQ("bool:true", play(1.0));

  EXPECT_EQ((Strings{kResize, "PLAY 1.00"}), finishedActions());  // from buffering: no second resize
  EXPECT_EQ(kConnecting + kBuffering, hostEntries());
}

TEST_F(PlayTest, GoesToBufferingAndWaits_WhenConnectedButNotReady) {
  ASSERT_TRUE(say("CONNECTED"));

  EXPECT_EQ("bool:true", play(1.0));

  EXPECT_EQ(Strings{kResize}, finishedActions());
  EXPECT_EQ(4, state());
  ASSERT_TRUE(say("READY_TO_PLAY"));
  EXPECT_EQ((Strings{kResize, "PLAY 1.00"}), finishedActions());
}

TEST_F(PlayTest, NegativeSpeedsPlayToo) {
  makeReady();

  EXPECT_EQ("bool:true", play(-2.0));

  EXPECT_EQ((Strings{kResize, "PLAY -2.00", kResize}), finishedActions());
}

TEST_F(PlayTest, ZeroInStoppedEndsTheBroadcastAndPauses_ReadyOrNot) {
  EXPECT_EQ("bool:true", play(0.0));
  ASSERT_TRUE(library().waitForCount(isCommand("STOPBROADCAST"), 1));  // its own, before drain() sends one
  drain();

  EXPECT_EQ((Strings{"STOPBROADCAST", kResize, "PAUSE", "STOPBROADCAST"}), library().actions());  // the last is drain()'s
  EXPECT_EQ((Strings{"speed=double:0"}), hostEntries());
  EXPECT_EQ(0, state());
}

TEST_F(PlayTest, ZeroElsewhereLeavesTheBroadcastAlone) {
  enter(1);

  EXPECT_EQ("bool:true", play(0.0));
  drain();

  EXPECT_EQ((Strings{kResize, "PAUSE", "STOPBROADCAST"}), library().actions());
}

TEST_F(PlayTest, AnotherSpeedInStoppedLeavesTheBroadcastAlone) {
  EXPECT_EQ("bool:true", play(1.0));
  drain();

  EXPECT_EQ(1U, library().count(isCommand("STOPBROADCAST")));  // drain()'s
}

TEST_F(PlayTest, ChangesTheSpeedWhilePlaying) {
  makeReady();
  enter(1);

  EXPECT_EQ("bool:true", play(2.0));

  EXPECT_EQ((Strings{kResize, "PLAY 2.00"}), finishedActions());
  EXPECT_EQ(1, state());
}

TEST_F(PlayTest, PausesAndResumesOnTheLibrarysWord) {
  makeReady();
  ASSERT_TRUE(say("CONNECTED"));
  play(1.0);
  ASSERT_TRUE(say("BUFFER_READY"));
  ASSERT_EQ(1, state());

  play(0.0);
  EXPECT_EQ(1, state());
  ASSERT_TRUE(say("PAUSED"));
  EXPECT_EQ(2, state());
  play(1.0);
  EXPECT_EQ(2, state());
  ASSERT_TRUE(say("PLAYING"));
  EXPECT_EQ(1, state());
}

TEST_F(PlayTest, RestoresItsSpeed_WhenBufferingEnds) {
  makeReady();
  play(2.0);
  log().clear();

  ASSERT_TRUE(say("BUFFER_READY"));

  EXPECT_EQ((Strings{"speed=double:2", "playState=int:1", "onPlayStateChange(int:1)"}), hostEntries());
}

TEST_F(PlayTest, RestoresTheSpeedOfMedia_NotThatOfSubtitlesAlone) {
  makeReady();
  ASSERT_EQ("bool:true", play(2.0));
  ASSERT_TRUE(plugin.write("playerType", text("application/ttml+xml")));
  ASSERT_EQ("bool:true", play(0.5));

  ASSERT_TRUE(say("BUFFER_READY"));

  double speed = 0.0;
  EXPECT_TRUE(av->getSpeedProperty(speed));
  EXPECT_EQ(2.0, speed);
}

TEST_F(PlayTest, IsTrue_ThoughTheQueueIsFull) {
  makeReady();
  enter(1);
  const auto blocked = blockWorker();
  fillQueue();

  EXPECT_EQ("bool:true", play(1.0));

  EXPECT_EQ(6, state());  // the page learns of it this way
  EXPECT_EQ(2, errorCode());
}

TEST_F(PlayTest, WholeRoadToTheEndAndAgain) {
  library().setAutoAnswer(true);
  ASSERT_TRUE(setData(kFirstUrl));
  ASSERT_EQ("bool:true", play(1.0));
  ASSERT_TRUE(waitForEvent(plugin, "onPlayStateChange(int:1)"));
  ASSERT_TRUE(library().waitIdle());
  ASSERT_TRUE(say("FINISHED"));
  forget();

  EXPECT_EQ("bool:true", play(1.0));

  EXPECT_TRUE(waitForEvent(plugin, "onPlayStateChange(int:1)"));
  const Strings expected{"onPlayStateChange(int:3)",  // in finished play() itself does not move the machine, the restart does
                         "onPlayStateChange(int:4)",  // the source is sent again,
                         "onPlayStateChange(int:7)",  // so the library reports its readiness again
                         "onPlayStateChange(int:1)"};
  Strings seen;
  for (const std::string& event : events(plugin)) {
    if (event.find("onPlayStateChange") == 0) {
      seen.push_back(event);
    }
  }
  EXPECT_EQ(expected, seen);
}

/// The answers come from another thread while play() is still at work: they lead to playing, and nothing leads back.
TEST_F(PlayTest, StaysPlaying_HoweverSoonTheLibraryAnswers) {
  makeReady();
  ASSERT_EQ("bool:true", play(1.0));
  drainWorker(plugin);
  for (const char* word : {"BUFFER_READY", "PLAYING", "FINISHED"}) ASSERT_TRUE(say(word));
  library().setAutoAnswer(true);
  for (int round = 0; round < 300; ++round) {
    ASSERT_EQ("bool:true", play(1.0));
    drainWorker(plugin);
    ASSERT_TRUE(library().waitIdle());
    drainWorker(plugin);

    ASSERT_EQ(1, state()) << "in round " << round;
    ASSERT_TRUE(say("FINISHED"));
  }
}

// No player.

TEST_F(PlayTest, IsFalse_WhenNoPlayerCanBeOpened) {
  library().failOpens(2);
  const fixture::TestPlugin poor = makePlugin();

  EXPECT_EQ("bool:false", poor.callShown("play"));

  EXPECT_EQ(Strings{}, events(poor));
  EXPECT_EQ("int:0", poor.readShown("playState"));
}

TEST_F(PlayTest, OpensThePlayerThatWasMissing) {
  library().failOpens(1);
  const fixture::TestPlugin poor = makePlugin();
  ASSERT_EQ(0UL, poor.base->getNativePlayerHandle());

  EXPECT_EQ("bool:true", poor.callShown("play"));

  EXPECT_NE(0UL, poor.base->getNativePlayerHandle());
  EXPECT_EQ("int:3", poor.readShown("playState"));
}

// Subtitle-only elements.

class SubtitleElementTest : public PlayTest {
 protected:
  SubtitleElementTest() {
    EXPECT_TRUE(plugin.write("playerType", text("application/ttml+xml")));
    forget();
  }
};

TEST_F(SubtitleElementTest, FollowsTheSpeedWithoutAPlayer) {
  EXPECT_EQ("bool:true", play(1.0));
  EXPECT_EQ("bool:true", play(0.5));
  EXPECT_EQ("bool:true", play(-1.0));

  const Strings expected{"playState=int:1",          "onPlayStateChange(int:1)", "playState=int:1",
                         "onPlayStateChange(int:1)", "playState=int:6",          "onPlayStateChange(int:6)"};
  EXPECT_EQ(expected, hostEntries());
  EXPECT_EQ(Strings{}, finishedActions());
  EXPECT_EQ(0, state());  // the machine has no part in it
}

TEST_F(SubtitleElementTest, IsPausedAtSpeedZero_AndStillEndsTheBroadcast) {
  EXPECT_EQ("bool:true", play(0.0));
  ASSERT_TRUE(library().waitForCount(isCommand("STOPBROADCAST"), 1));  // its own, before drain() sends one
  drain();

  EXPECT_EQ((Strings{"playState=int:2", "onPlayStateChange(int:2)"}), hostEntries());
  EXPECT_EQ((Strings{"STOPBROADCAST", "STOPBROADCAST"}), library().actions());  // the second is drain()'s
}

TEST_F(SubtitleElementTest, NeedsTheWholeType) {
  ASSERT_TRUE(plugin.write("playerType", text("application/ttml+xml2")));

  EXPECT_EQ("bool:true", play(1.0));

  EXPECT_EQ(3, state());
}

TEST_F(SubtitleElementTest, PlaysWithoutAnyPlayer) {
  library().failOpens(2);
  const fixture::TestPlugin poor = makePlugin();
  ASSERT_TRUE(poor.write("playerType", text("application/ttml+xml")));

  EXPECT_EQ("bool:true", poor.callShown("play"));

  EXPECT_EQ("int:1", poor.readShown("playState"));
}

}  // namespace
