// SPDX-License-Identifier: Apache-2.0
// The machine itself: the one place where the state changes, and what it remembers for a later pause.
#include <functional>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include "statemachine/play_states.h"
#include "tests/support/playing_plugin.h"

namespace {

using fixture::kFirstUrl;
using fixture::kNextUrl;
using fixture::lengthOf;
using fixture::Strings;
using fixture::operator+;

template <typename State>
void expectIdentity(int id, const std::string& name) {
  State state(nullptr);
  EXPECT_EQ(id, State::id());
  EXPECT_EQ(name, state.type());
}

TEST(PlayStatesTest, HaveTheirNumbersAndNames) {
  expectIdentity<AVControlStoppedState>(0, "stopped");
  expectIdentity<AVControlPlayingState>(1, "playing");
  expectIdentity<AVControlPausedState>(2, "paused");
  expectIdentity<AVControlConnectingState>(3, "connecting");
  expectIdentity<AVControlBufferingState>(4, "buffering");
  expectIdentity<AVControlFinishedState>(5, "finished");
  expectIdentity<AVControlErrorState>(6, "error");
}

class StateMachineTest : public fixture::PlayingPluginTest {
 protected:
  StateMachineTest() {
    EXPECT_TRUE(av->setDataProperty(kFirstUrl, lengthOf(kFirstUrl)));
    forget();
  }

  /// Whether a resume from paused starts the player: that is what the connected flag decides.
  bool resumes() {
    machine().transitTo(2);
    forget();
    machine().onPlay(1.0);
    return finishedActions() == Strings{"PLAY 1.00", "SET_WINDOW_PROPERTIES 0|0|1280|720|"};
  }
};

TEST_F(StateMachineTest, StartsStopped_WithoutSayingSo) {
  const fixture::TestPlugin fresh = makePlugin();

  EXPECT_TRUE(AVControlPlugin::cast(fresh.base.get())->stateMachine().isCurrentState(0));
  EXPECT_EQ(Strings{}, events(fresh));
  EXPECT_EQ("int:0", fresh.readShown("playState"));
}

TEST_F(StateMachineTest, KnowsItsCurrentState) {
  EXPECT_TRUE(machine().isCurrentState(0));
  for (const int other : {-1, 1, 2, 3, 4, 5, 6, 7}) {
    EXPECT_FALSE(machine().isCurrentState(other)) << other;
  }
}

TEST_F(StateMachineTest, IgnoresUnknownStates) {
  machine().transitTo(7);
  machine().transitTo(-1);

  EXPECT_EQ(0, state());
  EXPECT_EQ(Strings{}, hostEntries());
}

TEST_F(StateMachineTest, DoesNothing_WhenTheStateIsAlreadyTheCurrentOne) {
  for (int id = 0; id <= 6; ++id) {
    enter(id);
    av->queueUrl(kNextUrl, lengthOf(kNextUrl));
    machine().transitTo(id);
    EXPECT_EQ(Strings{}, hostEntries()) << id;
    EXPECT_EQ(Strings{}, finishedActions()) << id;
    EXPECT_EQ(std::vector<int>{}, defaultSelections()) << id;
    EXPECT_TRUE(av->alreadyHasQueuedMedia()) << id;  // stopped's own action would have cleared it
    av->queueUrl(nullptr, 0);
  }
}

TEST_F(StateMachineTest, SetsThePropertyThenRaisesTheEventThenActs) {
  machine().transitTo(6);

  EXPECT_EQ((Strings{"playState=int:6", "onPlayStateChange(int:6)", "speed=double:0"}), hostEntries());
  EXPECT_EQ((std::vector<int>{0, 1}), defaultSelections());
}

TEST_F(StateMachineTest, TheNewStateIsCurrent_WhenTheEventIsRaised) {
  int seen = -1;
  log().setHook([&](const fixture::Entry& entry) {
    if (entry.kind == fixture::Entry::Kind::kEvent) {
      seen = state();
    }
  });

  machine().transitTo(3);

  EXPECT_EQ(3, seen);
}

TEST_F(StateMachineTest, TheOldStateIsStillCurrent_WhenThePropertyChanges) {
  enter(1);
  int seen = -1;
  log().setHook([&](const fixture::Entry& entry) {
    if (shown(entry) == "playState=int:4") {
      seen = state();
    }
  });

  machine().transitTo(4);

  EXPECT_EQ(1, seen);
}

TEST_F(StateMachineTest, RaisesTheEventOnTheThreadOfTheTransition) {
  std::thread other([this] { machine().transitTo(3); });
  const std::thread::id id = other.get_id();
  other.join();

  const auto event = waitForEntry(plugin, "onPlayStateChange(int:3)");
  ASSERT_TRUE(event.has_value());
  EXPECT_EQ(id, event->thread);
}

TEST_F(StateMachineTest, LeavesTheErrorStateSilently_ToEveryState) {
  for (const int id : {0, 1, 2, 3, 4, 5}) {
    enter(6);
    machine().transitTo(id);
    EXPECT_EQ(id, state());
    EXPECT_EQ((Strings{"playState=int:" + std::to_string(id)}), hostEntries());
    EXPECT_EQ("int:" + std::to_string(id), plugin.readShown("playState"));
  }
}

TEST_F(StateMachineTest, SpeaksAgain_AfterTheSilentStep) {
  enter(6);

  machine().transitTo(3);
  machine().transitTo(4);

  EXPECT_EQ((Strings{"playState=int:3", "playState=int:4", "onPlayStateChange(int:4)"}), hostEntries());
}

TEST_F(StateMachineTest, EnteringStoppedClearsTheQueuedMedia) {
  enter(1);
  av->queueUrl(kNextUrl, lengthOf(kNextUrl));

  machine().transitTo(0);

  EXPECT_FALSE(av->alreadyHasQueuedMedia());
}

TEST_F(StateMachineTest, EnteringStoppedClearsTheQueuedMedia_AlsoSilentlyFromError) {
  enter(6);
  av->queueUrl(kNextUrl, lengthOf(kNextUrl));

  machine().transitTo(0);

  EXPECT_EQ((Strings{"playState=int:0"}), hostEntries());
  EXPECT_FALSE(av->alreadyHasQueuedMedia());
}

TEST_F(StateMachineTest, EnteringFinishedWithoutQueuedMediaKeepsThePlayer) {
  enter(1);

  machine().onReachedEnd();

  EXPECT_EQ(0U, library().count(fakes::isFunction(fakes::Function::kOpenPlayer)));
  EXPECT_EQ(5, state());
}

// The connected flag of the paused state.

struct FlagRow {
  const char* name;
  int in;  ///< the state in which the event comes
  std::function<void(StateMachine&)> raise;
  bool before;
  bool after;
};

std::ostream& operator<<(std::ostream& out, const FlagRow& row) { return out << row.name; }

const std::vector<FlagRow>& flagRows() {
  using M = StateMachine;
  static const std::vector<FlagRow> rows{
      {"PlayingSets", 1, [](M& m) { m.onAlreadyPlaying(); }, false, true},
      {"ConnectionSets", 1, [](M& m) { m.onConnectionEstablished(); }, false, true},
      {"ConnectionSetsInStopped", 0, [](M& m) { m.onConnectionEstablished(); }, false, true},
      {"ConnectionSetsInError", 6, [](M& m) { m.onConnectionEstablished(); }, false, true},
      {"BufferReadyDoesNotSet", 4, [](M& m) { m.onBufferReady(); }, false, false},
      {"BufferReadyDoesNotSetInConnecting", 3, [](M& m) { m.onBufferReady(); }, false, false},
      {"UnderrunDoesNotClear", 1, [](M& m) { m.onBufferUnderrun(); }, true, true},
      {"ConnectionLostClears", 1, [](M& m) { m.onConnectionLost(); }, true, false},
      {"DataClears", 1, [](M& m) { m.onDataChanged(kNextUrl, lengthOf(kNextUrl)); }, true, false},
      {"TypeClears", 1, [](M& m) { m.onTypeChanged(); }, true, false},
      {"SourceClears", 1, [](M& m) { m.onSetSource(kNextUrl, lengthOf(kNextUrl)); }, true, false},
      {"EndKeeps", 1, [](M& m) { m.onReachedEnd(); }, true, true},
      {"StopKeeps", 1, [](M& m) { m.onStop(); }, true, true},
      {"PauseKeeps", 1, [](M& m) { m.toPausedState(); }, true, true},
      {"ErrorClears", 1, [](M& m) { m.onError(); }, true, false},
      {"EnteringErrorAgainClears", 6, [](M& m) { m.transitTo(6); }, true, false},
      {"ConnectionSetsInPaused", 2, [](M& m) { m.onConnectionEstablished(); }, false, true},
      {"ConnectionLostClearsInPaused", 2, [](M& m) { m.onConnectionLost(); }, true, false},
      {"EnteringErrorFromPausedClears", 2, [](M& m) { m.transitTo(6); }, true, false},
      // In paused the machine leaves the flags to that state, which overrides neither of these: deliberate.
      {"PlayingDoesNotSetInPaused", 2, [](M& m) { m.onAlreadyPlaying(); }, false, false},
      {"DataKeepsInPaused", 2, [](M& m) { m.onDataChanged(kNextUrl, lengthOf(kNextUrl)); }, true, true},
      {"TypeKeepsInPaused", 2, [](M& m) { m.onTypeChanged(); }, true, true},
      {"ErrorEventKeepsInPaused", 2, [](M& m) { m.onError(); }, true, true},
  };
  return rows;
}

class ConnectedFlagTest : public StateMachineTest, public ::testing::WithParamInterface<FlagRow> {};

TEST_P(ConnectedFlagTest, DecidesWhetherAResumePlays) {
  enter(GetParam().in);
  if (GetParam().before) {
    if (GetParam().in == 2) {
      machine().onConnectionEstablished();
    } else {
      machine().transitTo(1);
      machine().onAlreadyPlaying();
      if (GetParam().in == 6) {
        machine().transitTo(6);
        machine().onConnectionEstablished();  // error takes note of it, and nothing else
      }
    }
  }
  ASSERT_EQ(GetParam().in, state());

  GetParam().raise(machine());

  EXPECT_EQ(GetParam().after, resumes());
}

INSTANTIATE_TEST_SUITE_P(Events, ConnectedFlagTest, ::testing::ValuesIn(flagRows()),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(StateMachineTest, ResumeStaysPaused_UntilTheLibraryPlays) {
  enter(2);
  machine().onConnectionEstablished();

  machine().onPlay(2.0);

  EXPECT_EQ((Strings{"PLAY 2.00", "SET_WINDOW_PROPERTIES 0|0|1280|720|"}), finishedActions());
  EXPECT_EQ(2, state());
  machine().onAlreadyPlaying();
  EXPECT_EQ(1, state());
}

TEST_F(StateMachineTest, PauseInPausedDoesNothing_EvenWhenConnected) {
  enter(2);
  machine().onConnectionEstablished();

  machine().onPlay(0.0);

  EXPECT_EQ(Strings{}, finishedActions());
  EXPECT_EQ(Strings{}, hostEntries());
}

// A seek under way, in buffering.

TEST_F(StateMachineTest, PlayingAndPausedAreIgnoredInBuffering_DuringASeek) {
  enter(1);
  ASSERT_TRUE(av->JS_Seek(1000.0));
  enter(4);

  machine().onAlreadyPlaying();
  machine().toPausedState();

  EXPECT_EQ(4, state());
  EXPECT_EQ(Strings{}, hostEntries());
}

TEST_F(StateMachineTest, BufferReadyCountsInBuffering_DuringASeek) {
  enter(1);
  ASSERT_TRUE(av->JS_Seek(1000.0));
  enter(4);

  machine().onBufferReady();

  EXPECT_EQ(1, state());
}

TEST_F(StateMachineTest, PauseCountsElsewhere_DuringASeek) {
  enter(1);
  ASSERT_TRUE(av->JS_Seek(1000.0));

  machine().toPausedState();

  EXPECT_EQ(2, state());
}

// Positions.

class PositionTest : public StateMachineTest, public ::testing::WithParamInterface<int> {
 protected:
  double position() {
    double value = -1.0;
    EXPECT_TRUE(machine().getCurrentPosition(&value));
    return value;
  }
  static bool asksTheLibrary() { return GetParam() == 1 || GetParam() == 5; }
};

TEST_P(PositionTest, IsFreshInPlayingAndFinished_CachedElsewhere) {
  enter(GetParam());
  library().setProperty("POSITION", "4000.00");
  ASSERT_TRUE(av->refreshCachedTime());
  library().setProperty("POSITION", "4500.00");
  library().clearCalls();

  EXPECT_EQ(asksTheLibrary() ? 4500.0 : 4000.0, position());
  EXPECT_EQ(asksTheLibrary() ? 1U : 0U, library().count(fakes::isRead("POSITION")));
}

TEST_P(PositionTest, IsTheLastKnown_WhenTheLibraryDoesNotSay) {
  enter(GetParam());
  library().setProperty("POSITION", "4000.00");
  ASSERT_TRUE(av->refreshCachedTime());
  library().setProperty("POSITION", std::nullopt);

  EXPECT_EQ(4000.0, position());
}

INSTANTIATE_TEST_SUITE_P(States, PositionTest, ::testing::Range(0, 7));

// Queued media.

TEST_F(StateMachineTest, ASecondQueuedItemIsRefused) {
  enter(1);
  ASSERT_TRUE(machine().onQueue(kNextUrl, lengthOf(kNextUrl)));

  EXPECT_FALSE(machine().onQueue(kFirstUrl, lengthOf(kFirstUrl)));
  EXPECT_TRUE(av->alreadyHasQueuedMedia());
}

TEST_F(StateMachineTest, NothingQueuedClearsTheItem_InTheFourStatesBetween) {
  for (const int id : {1, 2, 3, 4}) {
    enter(id);
    ASSERT_TRUE(machine().onQueue(kNextUrl, lengthOf(kNextUrl)));
    EXPECT_TRUE(machine().onQueue("null", 4));
    EXPECT_FALSE(av->alreadyHasQueuedMedia());
    ASSERT_TRUE(machine().onQueue(kNextUrl, lengthOf(kNextUrl)));
    EXPECT_TRUE(machine().onQueue(nullptr, 0));
    EXPECT_FALSE(av->alreadyHasQueuedMedia());
  }
}

TEST_F(StateMachineTest, OnlyTheWholeTextNullClears) {
  enter(1);

  EXPECT_TRUE(machine().onQueue("nullx", 5));

  EXPECT_TRUE(av->alreadyHasQueuedMedia());
}

TEST_F(StateMachineTest, StoppedAndFinishedClearTheItemEvenWhenTheyRefuse) {
  for (const int id : {0, 5}) {
    enter(id);
    av->queueUrl(kNextUrl, lengthOf(kNextUrl));
    EXPECT_FALSE(machine().onQueue(nullptr, 0)) << id;
    EXPECT_FALSE(av->alreadyHasQueuedMedia()) << id;
  }
}

TEST_F(StateMachineTest, StoppedAndFinishedClearTheItem_WhenTheyPlayAnotherAtOnce) {
  for (const int id : {0, 5}) {
    ASSERT_TRUE(av->setDataProperty(kFirstUrl, lengthOf(kFirstUrl)));
    enter(id);
    av->queueUrl(kFirstUrl, lengthOf(kFirstUrl));
    EXPECT_TRUE(machine().onQueue(kNextUrl, lengthOf(kNextUrl))) << id;
    drain();
    EXPECT_LT(0U, library().count(fakes::isWrite("INPUT", kNextUrl))) << id;
    EXPECT_EQ(0U, library().count(fakes::isWrite("INPUT", kFirstUrl))) << id;
    EXPECT_EQ(std::string("string:") + kNextUrl, plugin.readShown("data")) << id;
    ASSERT_FALSE(av->alreadyHasQueuedMedia()) << id;
  }
}

TEST_F(StateMachineTest, ErrorKeepsTheItem) {
  enter(6);
  av->queueUrl(kNextUrl, lengthOf(kNextUrl));

  EXPECT_FALSE(machine().onQueue(nullptr, 0));

  EXPECT_TRUE(av->alreadyHasQueuedMedia());
}

TEST_F(StateMachineTest, QueueInStoppedPlaysWithTheSpeedProperty) {
  ASSERT_TRUE(av->setSpeedProperty(2.0));
  log().clear();

  EXPECT_TRUE(machine().onQueue(kNextUrl, lengthOf(kNextUrl)));

  EXPECT_EQ(fixture::inputActions(kNextUrl) + (Strings{"PLAY 2.00", "SET_WINDOW_PROPERTIES 0|0|1280|720|"}), finishedActions());
}

TEST_F(StateMachineTest, QueueInStoppedOnlyPauses_AfterAStopHasSetTheSpeedToZero) {
  ASSERT_TRUE(av->setSpeedProperty(0.0));

  EXPECT_TRUE(machine().onQueue(kNextUrl, lengthOf(kNextUrl)));

  EXPECT_EQ(fixture::inputActions(kNextUrl) + Strings{"PAUSE"}, finishedActions());
  EXPECT_EQ(0, state());
}

TEST_F(StateMachineTest, QueueInFinishedIsAnError_WhenTheSpeedPropertyIsZero) {
  enter(5);
  ASSERT_TRUE(av->setSpeedProperty(0.0));

  EXPECT_TRUE(machine().onQueue(kNextUrl, lengthOf(kNextUrl)));

  EXPECT_EQ(6, state());
  EXPECT_EQ(2, errorCode());
}

// Renewals that a state asks for.

TEST_F(StateMachineTest, StopInErrorOpensAnotherPlayer) {
  enter(6);
  const unsigned long before = av->getNativePlayerHandle();

  EXPECT_TRUE(machine().onStop());

  EXPECT_NE(before, av->getNativePlayerHandle());
  EXPECT_NE(0UL, av->getNativePlayerHandle());
  EXPECT_EQ((std::vector<unsigned long>{av->getNativePlayerHandle()}), library().openHandles());
  EXPECT_EQ(0, state());
}

TEST_F(StateMachineTest, StopInErrorOpensTheOtherPlayer_BeforeTheStateChanges) {
  enter(6);
  const unsigned long before = av->getNativePlayerHandle();
  Strings calls;
  log().setHook([&](const fixture::Entry& entry) {
    if (shown(entry) != "playState=int:0") {
      return;
    }
    for (const fakes::Call& call : library().calls()) {
      if (call.function == fakes::Function::kClosePlayer || call.function == fakes::Function::kOpenPlayer) {
        calls.push_back(describe(call));
      }
    }
  });

  EXPECT_TRUE(machine().onStop());

  EXPECT_EQ((Strings{"closePlayer(" + std::to_string(before) + ")", "openPlayer(0)"}), calls);
}

TEST_F(StateMachineTest, StopInErrorStops_EvenWhenNoOtherPlayerCanBeOpened) {
  enter(6);
  library().failOpens(1);

  EXPECT_TRUE(machine().onStop());

  EXPECT_EQ(0UL, av->getNativePlayerHandle());
  EXPECT_EQ(0, state());
}

}  // namespace
