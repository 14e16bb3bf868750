// SPDX-License-Identifier: Apache-2.0
// Each command: its code, its payload, and the exact call that the library gets.
#include <functional>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include "tests/unit/player/player_test_base.h"

namespace {

using fakes::isCommand;
using fakes::isFunction;
using Strings = std::vector<std::string>;

constexpr char kText[] = "borrowed text";

enum class Payload { kNone, kNumber, kText };

struct Row {
  const char* name;
  std::function<bool(Player&)> queue;
  int code;
  Payload payload;
  const char* action;  ///< what reaches the library; empty for nothing
};

std::ostream& operator<<(std::ostream& out, const Row& row) { return out << row.name; }

const std::vector<Row>& rows() {
  static const std::vector<Row> table{
      {"Play", [](Player& p) { return p.play(1.5); }, 0, Payload::kNumber, "PLAY 1.50"},
      {"Stop", [](Player& p) { return p.stop(); }, 1, Payload::kNone, ""},
      {"Pause", [](Player& p) { return p.pause(); }, 2, Payload::kNone, "PAUSE"},
      {"Seek", [](Player& p) { return p.seek(1.5); }, 3, Payload::kNumber, "SEEK 1.50"},
      {"Resize", [](Player& p) { return p.resize(); }, 4, Payload::kNone, "SET_WINDOW_PROPERTIES 0|0|1280|720|"},
      {"SetInput", [](Player& p) { return p.setInput(kText); }, 5, Payload::kText, "INPUT=borrowed text"},
      {"SetForcedFormat", [](Player& p) { return p.setForcedFormat(kText); }, 6, Payload::kText, "FORCED_FORMAT=borrowed text"},
      {"SetUserAgent", [](Player& p) { return p.setUserAgent(kText); }, 7, Payload::kText, "USER_AGENT=borrowed text"},
      {"SetLoopParam", [](Player& p) { return p.setLoopParam(kText); }, 8, Payload::kText, "LOOP=borrowed text"},
      {"SetCacheParam", [](Player& p) { return p.setCacheParam(kText); }, 9, Payload::kText, "CACHED=borrowed text"},
      {"Error", [](Player& p) { return p.handleDispatchEvent("ERROR"); }, 10, Payload::kNone, ""},
      {"PlayPositionChanged", [](Player& p) { return p.handleDispatchEvent("PLAY_POSITION_CHANGED"); }, 11, Payload::kNone, ""},
      {"PlaySpeedChanged", [](Player& p) { return p.handleDispatchEvent("PLAY_SPEED_CHANGED"); }, 12, Payload::kNone, ""},
      {"DrmRightsError", [](Player& p) { return p.handleDispatchEvent("ON_DRM_RIGHTS_ERROR"); }, 13, Payload::kNone, ""},
      {"SetNativeWindowSize", [](Player& p) { return p.setNativeWindowSize(kText); }, 16, Payload::kText,
       "NATIVE_WINDOW_SIZE=borrowed text"},
      {"ParentalRatingChange", [](Player& p) { return p.handleDispatchEvent("ON_PARENTAL_RATING_CHANGE"); }, 17, Payload::kNone,
       ""},
      {"ParentalRatingError", [](Player& p) { return p.handleDispatchEvent("ON_PARENTAL_RATING_ERROR"); }, 18, Payload::kNone, ""},
      {"StopBroadcast", [](Player& p) { return p.stopBroadcast(); }, 19, Payload::kNone, "STOPBROADCAST"},
  };
  return table;
}

class PlayerCommandRowTest : public PlayerTestBase, public ::testing::WithParamInterface<Row> {};

TEST_P(PlayerCommandRowTest, IsQueuedWithItsCodeAndPayload) {
  const auto blocked = blockWorker();

  ASSERT_TRUE(GetParam().queue(*player));

  _player_thread_command command{};
  ASSERT_TRUE(player->popCommand(command));
  EXPECT_EQ(GetParam().code, command.code);
  switch (GetParam().payload) {
    case Payload::kNone: EXPECT_EQ(nullptr, command.data); break;
    case Payload::kNumber:
      ASSERT_NE(nullptr, command.data);
      EXPECT_EQ(1.5, *static_cast<double*>(command.data));
      break;
    case Payload::kText:
      EXPECT_EQ(static_cast<const void*>(kText), command.data);  // borrowed, not copied
      break;
  }
  Player::releaseCmdData(command);
}

TEST_P(PlayerCommandRowTest, MakesItsCall) {
  ASSERT_TRUE(GetParam().queue(*player));

  Strings actions = actionsUntilClosed();
  if (GetParam().code == 0) {
    ASSERT_FALSE(actions.empty());
    actions.pop_back();  // the end stops what plays
  }
  const std::string action = GetParam().action;
  EXPECT_EQ(action.empty() ? Strings{} : Strings{action}, actions);
}

INSTANTIATE_TEST_SUITE_P(Commands, PlayerCommandRowTest, ::testing::ValuesIn(rows()),
                         [](const auto& info) { return std::string(info.param.name); });

class PlayerCommandTest : public PlayerTestBase {};

TEST_F(PlayerCommandTest, UsesItsHandle) {
  player->pause();
  player->setInput("http://media.example/a.mp4");
  player->close();

  for (const fakes::Call& call : library().calls()) {
    EXPECT_EQ(handle, call.handle) << fakes::describe(call);
  }
}

TEST_F(PlayerCommandTest, WritesNumbersWithTwoPlaces) {
  for (const double number : {1.0, 0.5, -2.0, 0.004, 90000.0, 1234567.891}) {
    ASSERT_TRUE(player->seek(number));
  }

  const Strings expected{"SEEK 1.00", "SEEK 0.50", "SEEK -2.00", "SEEK 0.00", "SEEK 90000.00", "SEEK 1234567.89"};
  EXPECT_EQ(expected, actionsUntilClosed());
}

TEST_F(PlayerCommandTest, WritesTheLargestNumberInFull) {
  ASSERT_TRUE(player->seek(1e308));
  ASSERT_TRUE(player->play(-1e308));
  player->close();

  const auto seek = library().waitForCall(isCommand("SEEK"));
  ASSERT_TRUE(seek.has_value());
  EXPECT_EQ(312U, seek->argument->size());  // 309 digits, the point, two places
  EXPECT_EQ(".00", seek->argument->substr(309));
  EXPECT_EQ("-" + *seek->argument, library().waitForCall(isCommand("PLAY"))->argument);
}

TEST_F(PlayerCommandTest, PassesANullTextOn) {
  ASSERT_TRUE(player->setUserAgent(nullptr));
  ASSERT_TRUE(player->setNativeWindowSize(nullptr));

  EXPECT_EQ((Strings{"USER_AGENT=(null)", "NATIVE_WINDOW_SIZE=(null)"}), actionsUntilClosed());
}

TEST_F(PlayerCommandTest, DispatchRefusesEveryOtherWord) {
  const auto blocked = blockWorker();

  for (const char* word : {"PLAYING", "STOPPED", "FINISHED", "error", "ERROR ", "", "CONNECTED", "READY_TO_PLAY", "ON_FOCUS"}) {
    EXPECT_FALSE(player->handleDispatchEvent(word)) << word;
  }

  _player_thread_command command{};
  EXPECT_FALSE(player->popCommand(command));
}

TEST_F(PlayerCommandTest, EventsWithoutAnOwnerAreDropped) {
  for (const char* word : {"ERROR", "PLAY_POSITION_CHANGED", "PLAY_SPEED_CHANGED", "ON_DRM_RIGHTS_ERROR",
                           "ON_PARENTAL_RATING_CHANGE", "ON_PARENTAL_RATING_ERROR"}) {
    EXPECT_TRUE(player->handleDispatchEvent(word)) << word;
  }
  player->close();

  EXPECT_EQ(0U, library().count(isFunction(fakes::Function::kGetPlayerProperty)));
}

TEST_F(PlayerCommandTest, GoesOn_WhenTheLibraryRefuses) {
  library().setCommandResult("SEEK", 0);
  library().setWriteResult("INPUT", 0);
  ASSERT_TRUE(player->setInput("http://media.example/a.mp4"));
  ASSERT_TRUE(player->seek(1.0));
  ASSERT_TRUE(player->pause());

  EXPECT_EQ((Strings{"INPUT=http://media.example/a.mp4", "SEEK 1.00", "PAUSE"}), actionsUntilClosed());  // and never retried
}

// The stopped flag.

TEST_F(PlayerCommandTest, StopOfAFreshPlayerSendsNothing) {
  ASSERT_TRUE(player->stop());

  EXPECT_EQ(Strings{}, actionsUntilClosed());
}

TEST_F(PlayerCommandTest, StopsOnceForOnePlay) {
  ASSERT_TRUE(player->play(1.0));
  ASSERT_TRUE(player->stop());
  ASSERT_TRUE(player->stop());

  EXPECT_EQ((Strings{"PLAY 1.00", "STOP"}), actionsUntilClosed());
}

TEST_F(PlayerCommandTest, StopsAgainAfterAnotherPlay) {
  for (int i = 0; i < 2; ++i) {
    ASSERT_TRUE(player->play(1.0));
    ASSERT_TRUE(player->stop());
  }

  EXPECT_EQ((Strings{"PLAY 1.00", "STOP", "PLAY 1.00", "STOP"}), actionsUntilClosed());
}

TEST_F(PlayerCommandTest, ARefusedPlayStillNeedsAStop) {
  library().setCommandResult("PLAY", 0);
  ASSERT_TRUE(player->play(1.0));

  EXPECT_EQ((Strings{"PLAY 1.00", "STOP"}), actionsUntilClosed());
}

TEST_F(PlayerCommandTest, ARefusedStopCountsAsStopped) {
  library().setCommandResult("STOP", 0);
  ASSERT_TRUE(player->play(1.0));
  ASSERT_TRUE(player->stop());
  ASSERT_TRUE(player->stop());

  EXPECT_EQ((Strings{"PLAY 1.00", "STOP"}), actionsUntilClosed());
}

TEST_F(PlayerCommandTest, StopBroadcastLeavesTheStoppedFlagAlone) {
  ASSERT_TRUE(player->play(1.0));
  ASSERT_TRUE(player->stopBroadcast());

  EXPECT_EQ((Strings{"PLAY 1.00", "STOPBROADCAST", "STOP"}), actionsUntilClosed());
}

TEST_F(PlayerCommandTest, EndsWithStopThenClose_OnTheEndingThread) {
  ASSERT_TRUE(player->play(1.0));
  player->close();

  const auto calls = library().calls();
  ASSERT_GE(calls.size(), 3U);
  const fakes::Call& stop = calls[calls.size() - 2];
  EXPECT_EQ("STOP", stop.name);
  EXPECT_EQ("", stop.argument);
  EXPECT_EQ(std::this_thread::get_id(), stop.thread);
  EXPECT_EQ(fakes::Function::kClosePlayer, calls.back().function);
  EXPECT_EQ(handle, calls.back().handle);
  EXPECT_EQ(std::this_thread::get_id(), calls.back().thread);
}

// The window.

TEST_F(PlayerCommandTest, CoordinatesAreStoredAndSent) {
  player->setCoordinates(10, -20, 640, 360);

  EXPECT_FALSE(player->positionChanged(10, -20, 640, 360));
  EXPECT_EQ((Strings{"SET_WINDOW_PROPERTIES 10|-20|640|360|"}), actionsUntilClosed());
}

TEST_F(PlayerCommandTest, FirstCoordinatesAreTheWholePlane) {
  EXPECT_FALSE(player->positionChanged(0, 0, 1280, 720));
  EXPECT_TRUE(player->positionChanged(1, 0, 1280, 720));
  EXPECT_TRUE(player->positionChanged(0, 1, 1280, 720));
  EXPECT_TRUE(player->positionChanged(0, 0, 1279, 720));
  EXPECT_TRUE(player->positionChanged(0, 0, 1280, 719));
}

TEST_F(PlayerCommandTest, UnchangedCoordinatesAreSentAllTheSame) {
  player->setCoordinates(0, 0, 1280, 720);

  EXPECT_EQ((Strings{"SET_WINDOW_PROPERTIES 0|0|1280|720|"}), actionsUntilClosed());
}

TEST_F(PlayerCommandTest, CoordinatesWithoutAreaAreIgnored) {
  player->setCoordinates(10, 10, 0, 720);
  player->setCoordinates(10, 10, 1280, 0);
  player->setCoordinates(10, 10, -1, -1);

  EXPECT_FALSE(player->positionChanged(0, 0, 1280, 720));
  EXPECT_EQ(Strings{}, actionsUntilClosed());
}

TEST_F(PlayerCommandTest, OnePixelIsEnough) {
  player->setCoordinates(0, 0, 1, 1);

  EXPECT_EQ((Strings{"SET_WINDOW_PROPERTIES 0|0|1|1|"}), actionsUntilClosed());
}

TEST_F(PlayerCommandTest, AResizeSendsTheCoordinatesOfTheMomentItRuns) {
  const auto blocked = blockWorker();
  ASSERT_TRUE(player->resize());
  player->setCoordinates(1, 2, 3, 4);
  blocked->release();

  EXPECT_EQ((Strings{"SET_WINDOW_PROPERTIES 1|2|3|4|", "SET_WINDOW_PROPERTIES 1|2|3|4|"}), actionsUntilClosed());
}

TEST_F(PlayerCommandTest, IsValidAndUnused_WhenFresh) {
  EXPECT_TRUE(player->valid());
  EXPECT_FALSE(player->is_used());
  EXPECT_EQ(handle, player->getNativePlayerHandle());

  ASSERT_TRUE(player->setInput("http://media.example/a.mp4"));

  EXPECT_TRUE(player->is_used());
}

}  // namespace
