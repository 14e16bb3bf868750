// SPDX-License-Identifier: Apache-2.0
// seek(): bounds, what is remembered, and when a seek is over.
#include <string>

#include "tests/support/playing_plugin.h"

namespace {

using fakes::isRead;
using fixture::integer;
using fixture::kFirstUrl;
using fixture::number;
using fixture::Strings;

class SeekTest : public fixture::PlayingPluginTest {
 protected:
  SeekTest() {
    EXPECT_TRUE(setData(kFirstUrl));
    enter(1);
  }
  std::string seek(double position) { return plugin.callShown("seek", {number(position)}); }
  double cachedTime() {
    double time = -1.0;
    EXPECT_TRUE(av->getCachedTime(&time));
    return time;
  }
};

TEST_F(SeekTest, IsSent) {
  EXPECT_EQ("bool:true", seek(30000.5));

  EXPECT_EQ((Strings{"SEEK 30000.50"}), finishedActions());
  EXPECT_TRUE(av->isSeeking());
  EXPECT_EQ(30000.5, cachedTime());
  EXPECT_EQ(Strings{}, hostEntries());
}

TEST_F(SeekTest, TakesIntegers) {
  EXPECT_EQ("bool:true", plugin.callShown("seek", {integer(30000)}));

  EXPECT_EQ((Strings{"SEEK 30000.00"}), finishedActions());
}

TEST_F(SeekTest, GoesUpToTheDuration) {
  EXPECT_EQ("bool:true", seek(60000.0));

  EXPECT_EQ((Strings{"SEEK 60000.00"}), finishedActions());
}

TEST_F(SeekTest, BeyondTheDurationIsRefused_AndThePositionTold) {
  EXPECT_EQ("bool:false", seek(60000.01));

  EXPECT_TRUE(waitForEvent(plugin, "onPlayPositionChanged(double:1500)"));
  EXPECT_EQ(Strings{}, finishedActions());
  EXPECT_FALSE(av->isSeeking());
}

TEST_F(SeekTest, BeyondTheDurationEndsTheWaitForAnEarlierSeek) {
  ASSERT_EQ("bool:true", seek(1000.0));
  ASSERT_TRUE(av->isSeeking());

  EXPECT_EQ("bool:false", seek(70000.0));

  EXPECT_FALSE(av->isSeeking());  // the position message that it feeds clears the flag, like the library's
}

TEST_F(SeekTest, ADurationOfZeroIsNoBound) {
  library().setProperty("DURATION", "0.00");

  EXPECT_EQ("bool:true", seek(90000.0));

  EXPECT_EQ((Strings{"SEEK 90000.00"}), finishedActions());
}

TEST_F(SeekTest, AnUnknownDurationIsNoBound) {
  library().setProperty("DURATION", std::nullopt);

  EXPECT_EQ("bool:true", seek(90000.0));
}

TEST_F(SeekTest, ANegativePositionIsTheLibrarysBusiness) {
  EXPECT_EQ("bool:true", seek(-5.0));

  EXPECT_EQ((Strings{"SEEK -5.00"}), finishedActions());
}

TEST_F(SeekTest, ANegativeDurationRefusesEverySeek) {
  library().setProperty("DURATION", "-1.00");

  EXPECT_EQ("bool:false", seek(0.0));
}

TEST_F(SeekTest, TwoQuickSeeksAreTwoCommands) {
  EXPECT_EQ("bool:true", seek(1000.0));
  EXPECT_EQ("bool:true", seek(2000.0));

  EXPECT_EQ((Strings{"SEEK 1000.00", "SEEK 2000.00"}), finishedActions());
  EXPECT_EQ(2000.0, cachedTime());
}

class RefusingStateTest : public SeekTest, public ::testing::WithParamInterface<int> {};

TEST_P(RefusingStateTest, RefusesButRemembersThePosition) {
  enter(GetParam());

  EXPECT_EQ("bool:false", seek(1000.0));

  EXPECT_EQ(Strings{}, finishedActions());
  EXPECT_FALSE(av->isSeeking());
  EXPECT_EQ(1000.0, cachedTime());
}

INSTANTIATE_TEST_SUITE_P(FinishedAndError, RefusingStateTest, ::testing::Values(5, 6));

class SeekingStateTest : public SeekTest, public ::testing::WithParamInterface<int> {};

TEST_P(SeekingStateTest, Seeks) {
  enter(GetParam());

  EXPECT_EQ("bool:true", seek(1000.0));

  EXPECT_EQ((Strings{"SEEK 1000.00"}), finishedActions());
  EXPECT_EQ(GetParam(), state());
}

INSTANTIATE_TEST_SUITE_P(States, SeekingStateTest, ::testing::Values(0, 1, 2, 3, 4));

class SeekEndTest : public SeekTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(SeekEndTest, EndsTheSeek) {
  ASSERT_EQ("bool:true", seek(1000.0));

  ASSERT_TRUE(say(GetParam()));

  EXPECT_FALSE(av->isSeeking());
}

INSTANTIATE_TEST_SUITE_P(Words, SeekEndTest, ::testing::Values("PLAY_POSITION_CHANGED", "STOPPED", "ERROR"));

TEST_F(SeekTest, OtherWordsDoNotEndIt) {
  ASSERT_EQ("bool:true", seek(1000.0));

  for (const char* word : {"BUFFERING", "BUFFER_READY", "PLAY_SPEED_CHANGED", "CONNECTED", "PLAYING", "READY_TO_PLAY"}) {
    ASSERT_TRUE(say(word));
    EXPECT_TRUE(av->isSeeking()) << word;
  }
}

TEST_F(SeekTest, ARefusedCommandIsNoSeek) {
  const auto blocked = blockWorker();
  fillQueue();

  EXPECT_EQ("bool:false", seek(1000.0));

  EXPECT_FALSE(av->isSeeking());
}

TEST_F(SeekTest, ANewPlayerKnowsOfNoSeek) {
  ASSERT_EQ("bool:true", seek(1000.0));

  ASSERT_TRUE(setData(fixture::kNextUrl));

  EXPECT_FALSE(av->isSeeking());
  EXPECT_EQ(0.0, cachedTime());
}

TEST_F(SeekTest, IsFalse_WhenNoPlayerCanBeOpened) {
  library().failOpens(2);
  const fixture::TestPlugin poor = makePlugin();

  EXPECT_EQ("bool:false", poor.callShown("seek", {number(1000.0)}));
}

TEST_F(SeekTest, OpensThePlayerThatWasMissing) {
  library().failOpens(1);
  const fixture::TestPlugin poor = makePlugin();

  EXPECT_EQ("bool:true", poor.callShown("seek", {number(1000.0)}));

  EXPECT_TRUE(library().waitForCall(fakes::isCommand("SEEK", "1000.00")));
}

TEST_F(SeekTest, ThePositionIsTheTarget_WherePlayDoesNotMoveIt) {
  enter(2);

  ASSERT_EQ("bool:true", seek(30000.0));

  EXPECT_EQ("double:30000", plugin.readShown("playPosition"));
  EXPECT_EQ(0U, library().count(isRead("POSITION")));
}

}  // namespace
