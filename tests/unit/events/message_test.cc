// SPDX-License-Identifier: Apache-2.0
// What each status word of the media library does, in every play state and with every request pending.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include "plugin/av_control_plugin.h"
#include "tests/support/plugin_fixture.h"

namespace {

using fakes::Call;
using fakes::Function;
using fakes::isCommand;
using fakes::isFunction;
using fakes::ofHandle;
using fixture::integer;
using fixture::number;
using fixture::TestPlugin;
using fixture::text;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

enum State { kStopped, kPlaying, kPaused, kConnecting, kBuffering, kFinished, kError };
const char* const kStateNames[] = {"Stopped", "Playing", "Paused", "Connecting", "Buffering", "Finished", "Error"};

class MessageTest : public fixture::PluginTest {
 protected:
  void say(const TestPlugin& plugin, const std::string& word) {
    ASSERT_TRUE(library().fireAndWait(plugin.handle, word)) << word;
    drainWorker(plugin);
  }
  int playState(const TestPlugin& plugin) {
    const auto value = plugin.read("playState");
    return value ? value->integer : -1;
  }

  /// A plugin brought to a state by the road that a page takes. Connecting comes with a deferred play.
  TestPlugin makePluginIn(State state) {
    TestPlugin plugin = state == kConnecting ? makePluginWithSource() : makeReadyPlugin();
    if (state != kStopped) {
      EXPECT_EQ(plugin.callShown("play"), "bool:true");
    }
    if (state == kPlaying || state == kPaused || state == kFinished) say(plugin, "BUFFER_READY");
    if (state == kPaused) say(plugin, "PAUSED");
    if (state == kFinished) say(plugin, "FINISHED");
    if (state == kError) say(plugin, "ERROR");
    drainWorker(plugin);
    EXPECT_EQ(playState(plugin), state);
    log().clear();
    library().clearCalls();
    return plugin;
  }
};

// --- Every word in every state: where the machine goes, and which events of play state script gets

struct WordRow {
  const char* word;
  int stateAfter[7];                        ///< by state before
  std::vector<std::string> events[7] = {};  ///< by state before
};

const std::string kTo0 = "onPlayStateChange(int:0)";
const std::string kTo1 = "onPlayStateChange(int:1)";
const std::string kTo2 = "onPlayStateChange(int:2)";
const std::string kTo4 = "onPlayStateChange(int:4)";
const std::string kTo5 = "onPlayStateChange(int:5)";
const std::string kTo6 = "onPlayStateChange(int:6)";

const WordRow kWords[] = {
    {"FINISHED", {0, 5, 2, 3, 4, 5, 6}, {{}, {kTo5}, {}, {}, {}, {}, {}}},
    {"STOPPED", {0, 1, 2, 3, 4, 5, 6}, {}},
    {"ERROR", {6, 6, 2, 6, 6, 5, 6}, {{kTo6}, {kTo6}, {}, {kTo6}, {kTo6}, {}, {}}},
    {"PLAYING", {0, 1, 1, 3, 1, 5, 6}, {{}, {}, {kTo1}, {}, {kTo1}, {}, {}}},
    {"PAUSED", {2, 2, 2, 2, 2, 5, 6}, {{kTo2}, {kTo2}, {}, {kTo2}, {kTo2}, {}, {}}},
    {"BUFFERING", {0, 4, 2, 3, 4, 5, 6}, {{}, {kTo4}, {}, {}, {}, {}, {}}},
    {"BUFFER_READY", {0, 1, 2, 1, 1, 5, 6}, {{}, {}, {}, {kTo4, kTo1}, {kTo1}, {}, {}}},
    {"CONNECTED", {0, 1, 2, 4, 4, 5, 6}, {{}, {}, {}, {kTo4}, {}, {}, {}}},
    {"ON_DRM_RIGHTS_ERROR", {0, 1, 2, 3, 4, 5, 6}, {}},
    {"ON_PARENTAL_RATING_CHANGE", {0, 1, 2, 3, 4, 5, 6}, {}},
    {"ON_PARENTAL_RATING_ERROR", {0, 1, 2, 3, 4, 5, 6}, {}},
    {"SELECTED_VIDEO_COMPONENT_CHANGED", {0, 1, 2, 3, 4, 5, 6}, {}},
    {"SELECTED_AUDIO_COMPONENT_CHANGED", {0, 1, 2, 3, 4, 5, 6}, {}},
    {"SELECTED_SUBTITLE_COMPONENT_CHANGED", {0, 1, 2, 3, 4, 5, 6}, {}},
    {"PLAY_POSITION_CHANGED", {0, 1, 2, 3, 4, 5, 6}, {}},
    {"PLAY_SPEED_CHANGED", {0, 1, 2, 3, 4, 5, 6}, {}},
    // Differ from a word by letter case, by more or by less: they match nothing.
    {"playing", {0, 1, 2, 3, 4, 5, 6}, {}},
    {"Paused", {0, 1, 2, 3, 4, 5, 6}, {}},
    {"ERROR ", {0, 1, 2, 3, 4, 5, 6}, {}},
    {" ERROR", {0, 1, 2, 3, 4, 5, 6}, {}},
    {"FINISHED\n", {0, 1, 2, 3, 4, 5, 6}, {}},
    {"BUFFER", {0, 1, 2, 3, 4, 5, 6}, {}},
    {"BUFFER_READY2", {0, 1, 2, 3, 4, 5, 6}, {}},
    {"PAUSE", {0, 1, 2, 3, 4, 5, 6}, {}},
    {"", {0, 1, 2, 3, 4, 5, 6}, {}},
};

class EveryWordTest : public MessageTest, public ::testing::WithParamInterface<std::tuple<std::size_t, int>> {
 protected:
  const WordRow& row() const { return kWords[std::get<0>(GetParam())]; }
  State before() const { return static_cast<State>(std::get<1>(GetParam())); }
  std::vector<std::string> playStateEvents(const TestPlugin& plugin) const {
    std::vector<std::string> found;
    for (const auto& event : events(plugin)) {
      if (event.rfind("onPlayStateChange", 0) == 0) found.push_back(event);
    }
    return found;
  }
};

TEST_P(EveryWordTest, MovesTheMachineAsTheTableSays) {
  const auto plugin = makePluginIn(before());

  say(plugin, row().word);

  EXPECT_EQ(playState(plugin), row().stateAfter[before()]);
  EXPECT_EQ(playStateEvents(plugin), row().events[before()]);
}

std::string everyWordName(const ::testing::TestParamInfo<std::tuple<std::size_t, int>>& info) {
  const std::size_t word = std::get<0>(info.param);
  std::string name = std::to_string(word) + "_";
  for (const char c : std::string(kWords[word].word)) name += std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
  return name + "_In" + kStateNames[std::get<1>(info.param)];
}

INSTANTIATE_TEST_SUITE_P(All, EveryWordTest,
                         ::testing::Combine(::testing::Range<std::size_t>(0, std::size(kWords)), ::testing::Range(0, 7)),
                         everyWordName);

// --- FINISHED

TEST_F(MessageTest, FinishedRaisesItsEventOnTheLibrarysThread) {
  const auto plugin = makePluginIn(kPlaying);

  say(plugin, "FINISHED");

  const auto event = waitForEntry(plugin, "onPlayStateChange(int:5)");
  ASSERT_TRUE(event);
  EXPECT_EQ(event->thread, library().dispatcherThread(plugin.handle));
}

TEST_F(MessageTest, FinishedDropsADeferredPlay) {
  const auto plugin = makePluginIn(kConnecting);

  say(plugin, "FINISHED");
  say(plugin, "READY_TO_PLAY");

  EXPECT_EQ(library().count(isCommand("PLAY")), 0U);
  EXPECT_EQ(playState(plugin), kConnecting);
}

// --- STOPPED

TEST_F(MessageTest, StoppedDropsADeferredPlay) {
  const auto plugin = makePluginIn(kConnecting);

  say(plugin, "STOPPED");
  say(plugin, "READY_TO_PLAY");

  EXPECT_EQ(library().count(isCommand("PLAY")), 0U);
  EXPECT_EQ(playState(plugin), kConnecting);
}

TEST_F(MessageTest, StoppedSelectsNoDefaults_WhenNoStopWasRequested) {
  const auto plugin = makePluginIn(kPlaying);

  say(plugin, "STOPPED");

  EXPECT_EQ(library().count(isFunction(Function::kSelectDefaultAvComponent)), 0U);
}

TEST_F(MessageTest, StoppedEndsASeek) {
  library().setProperty("DURATION", "60000");
  const auto plugin = makePluginIn(kBuffering);
  ASSERT_EQ(plugin.callShown("seek", {integer(1000)}), "bool:true");
  say(plugin, "PLAYING");
  ASSERT_EQ(playState(plugin), kBuffering) << "ignored while seeking";

  say(plugin, "STOPPED");
  say(plugin, "PLAYING");

  EXPECT_EQ(playState(plugin), kPlaying);
}

class RequestedStopTest : public MessageTest {
 protected:
  /// The library confirms every "STOP" from its own thread.
  void confirmStops() {
    library().addHook(isCommand("STOP"), [this](const Call& call) { library().fire(call.handle, "STOPPED"); });
  }
};

TEST_F(RequestedStopTest, MovesToStopped) {
  for (const State state : {kPlaying, kPaused, kBuffering, kFinished}) {
    SCOPED_TRACE(kStateNames[state]);
    const auto plugin = makePluginIn(state);
    confirmStops();

    EXPECT_EQ(plugin.callShown("stop"), "bool:true");

    EXPECT_EQ(playState(plugin), kStopped);
    EXPECT_THAT(events(plugin), ElementsAre(kTo0));
    EXPECT_EQ(library().count(isCommand("STOP", "")), 1U);
    library().clearHooks();
  }
}

TEST_F(RequestedStopTest, RaisesItsEventOnTheLibrarysThread) {
  const auto plugin = makePluginIn(kPlaying);
  confirmStops();

  ASSERT_EQ(plugin.callShown("stop"), "bool:true");

  const auto event = waitForEntry(plugin, kTo0);
  ASSERT_TRUE(event);
  EXPECT_EQ(event->thread, library().dispatcherThread(plugin.handle));
}

TEST_F(RequestedStopTest, SelectsDefaultVideoThenAudio) {
  const auto plugin = makePluginIn(kPlaying);
  confirmStops();

  ASSERT_EQ(plugin.callShown("stop"), "bool:true");

  const auto defaults = library().calls(isFunction(Function::kSelectDefaultAvComponent));
  ASSERT_EQ(defaults.size(), 2U);
  EXPECT_EQ(defaults[0].number, 0);
  EXPECT_EQ(defaults[1].number, 1);
  EXPECT_EQ(defaults[0].thread, library().dispatcherThread(plugin.handle));
}

TEST_F(RequestedStopTest, SelectsDefaultsBeforeItMoves) {
  const auto plugin = makePluginIn(kPlaying);
  confirmStops();
  std::vector<std::string> atSelection;
  library().addHook(isFunction(Function::kSelectDefaultAvComponent), [&](const Call&) { atSelection = events(plugin); });

  ASSERT_EQ(plugin.callShown("stop"), "bool:true");

  EXPECT_THAT(atSelection, IsEmpty());
}

TEST_F(RequestedStopTest, AnswersTrueAndSpeedZero) {
  const auto plugin = makePluginIn(kPlaying);
  confirmStops();

  ASSERT_EQ(plugin.callShown("stop"), "bool:true");

  EXPECT_THAT(entries(plugin), ElementsAre("playState=int:0", kTo0, "speed=double:0"));
}

// Two confirmations that overlap: the machine moves once, and the second finds it there.
TEST_F(RequestedStopTest, MovesOnce_WhenTwoConfirmationsOverlap) {
  const auto plugin = makePluginIn(kPlaying);
  confirmStops();
  bool nested = false;
  library().addHook(isFunction(Function::kSelectDefaultAvComponent), [&](const Call& call) {
    if (call.number != 0 || nested) return;
    nested = true;
    std::async(std::launch::async, [&] { library().invoke(plugin.handle, "STOPPED"); }).get();
  });

  EXPECT_EQ(plugin.callShown("stop"), "bool:true");

  EXPECT_TRUE(nested);
  EXPECT_THAT(events(plugin), ElementsAre(kTo0));
}

// In error a stop renews the player; the confirmation comes while the old one is being closed, and completes the stop.
TEST_F(RequestedStopTest, IsCompletedSilently_WhileTheOldPlayerIsClosed_InError) {
  const auto plugin = makePluginIn(kError);
  bool delivered = false;
  library().addHook(ofHandle(plugin.handle, isCommand("STOP")),
                    [&](const Call& call) { delivered = library().fireAndWait(call.handle, "STOPPED"); });

  EXPECT_EQ(plugin.callShown("stop"), "bool:true");

  EXPECT_TRUE(delivered);
  const auto defaults = library().calls(isFunction(Function::kSelectDefaultAvComponent));
  ASSERT_EQ(defaults.size(), 2U);
  EXPECT_EQ(defaults[0].number, 0);
  EXPECT_EQ(defaults[1].number, 1);
  for (const Call& call : defaults) EXPECT_EQ(call.thread, library().dispatcherThread(plugin.handle));
  const auto moved = waitForEntry(plugin, "playState=int:0");
  ASSERT_TRUE(moved);
  EXPECT_EQ(moved->thread, library().dispatcherThread(plugin.handle));
  EXPECT_THAT(entries(plugin), Contains("playState=int:0").Times(1)) << "the stop itself finds the machine there";
  EXPECT_THAT(events(plugin), IsEmpty());
  EXPECT_EQ(playState(plugin), kStopped);
}

TEST_F(RequestedStopTest, LaterStoppedMovesNothing) {
  const auto plugin = makePluginIn(kPlaying);
  confirmStops();
  ASSERT_EQ(plugin.callShown("stop"), "bool:true");
  ASSERT_EQ(plugin.callShown("play"), "bool:true");
  drainWorker(plugin);
  const int before = playState(plugin);

  say(plugin, "STOPPED");

  EXPECT_EQ(playState(plugin), before);
  EXPECT_EQ(library().count(isFunction(Function::kSelectDefaultAvComponent)), 2U);
}

// --- ERROR

struct ErrorRow {
  const char* name;
  std::optional<std::string> code;
  const char* error;
};

class ErrorCodeTest : public MessageTest, public ::testing::WithParamInterface<ErrorRow> {};

TEST_P(ErrorCodeTest, BecomesTheErrorProperty) {
  const auto plugin = makePluginIn(kPlaying);
  library().setProperty("LAST_ERR_CODE", GetParam().code);

  say(plugin, "ERROR");

  EXPECT_EQ(plugin.readShown("error"), GetParam().error);
  EXPECT_EQ(playState(plugin), kError);
}

INSTANTIATE_TEST_SUITE_P(All, ErrorCodeTest,
                         ::testing::Values(ErrorRow{"Zero", "0", "int:0"}, ErrorRow{"One", "1", "int:1"},
                                           ErrorRow{"Six", "6", "int:6"}, ErrorRow{"NotReadable", std::nullopt, "int:2"},
                                           ErrorRow{"NotANumber", "abc", "int:0"}, ErrorRow{"Negative", "-5", "novalue"}),
                         [](const auto& info) { return info.param.name; });

TEST_F(MessageTest, ErrorIsReadIntoItsBuffer) {
  const auto plugin = makePluginIn(kPlaying);

  say(plugin, "ERROR");

  const auto reads = library().calls(fakes::isRead("LAST_ERR_CODE"));
  ASSERT_EQ(reads.size(), 1U);
  EXPECT_EQ(reads[0].number, 32);
}

TEST_F(MessageTest, ErrorCodeIsStoredAlsoWhereTheMachineStays) {
  library().setProperty("LAST_ERR_CODE", "4");
  const auto plugin = makePluginIn(kPaused);

  say(plugin, "ERROR");

  EXPECT_EQ(plugin.readShown("error"), "int:4");
  EXPECT_EQ(playState(plugin), kPaused);
}

TEST_F(MessageTest, ErrorEndsASeek) {
  library().setProperty("DURATION", "60000");
  const auto plugin = makePluginIn(kPaused);
  ASSERT_EQ(plugin.callShown("seek", {integer(1000)}), "bool:true");
  // In paused an error is stored and nothing moves, so the seeking mark is all that it changes.
  say(plugin, "ERROR");

  say(plugin, "PLAYING");
  say(plugin, "BUFFERING");
  ASSERT_EQ(playState(plugin), kBuffering);
  say(plugin, "PAUSED");

  EXPECT_EQ(playState(plugin), kPaused) << "ignored in buffering only while seeking";
}

// --- PLAYING, PAUSED: held back while a seek is under way

TEST_F(MessageTest, PlayingAndPausedAreIgnored_InBufferingWhileSeeking) {
  library().setProperty("DURATION", "60000");
  const auto plugin = makePluginIn(kBuffering);
  ASSERT_EQ(plugin.callShown("seek", {integer(1000)}), "bool:true");

  say(plugin, "PLAYING");
  say(plugin, "PAUSED");

  EXPECT_EQ(playState(plugin), kBuffering);
  EXPECT_THAT(events(plugin), IsEmpty());
}

TEST_F(MessageTest, PlayPositionChangedEndsASeek) {
  library().setProperty("DURATION", "60000");
  const auto plugin = makePluginIn(kBuffering);
  ASSERT_EQ(plugin.callShown("seek", {integer(1000)}), "bool:true");

  say(plugin, "PLAY_POSITION_CHANGED");
  say(plugin, "PAUSED");

  EXPECT_EQ(playState(plugin), kPaused);
}

TEST_F(MessageTest, PlayingRestoresTheSpeedThatPlaySet) {
  const auto plugin = makeReadyPlugin();
  ASSERT_EQ(plugin.callShown("play", {number(1.5)}), "bool:true");
  log().clear();

  say(plugin, "PLAYING");

  EXPECT_THAT(entries(plugin), ElementsAre("speed=double:1.5", "playState=int:1", kTo1));
}

TEST_F(MessageTest, BufferingSetsSpeedZero) {
  const auto plugin = makePluginIn(kPlaying);

  say(plugin, "BUFFERING");

  EXPECT_THAT(entries(plugin), ElementsAre("speed=double:0", "playState=int:4", kTo4));
}

// The connection that was reported anywhere lets a paused player go on.
TEST_F(MessageTest, PlayingCountsAsConnected_WhereverItArrives) {
  const auto plugin = makeReadyPlugin();
  say(plugin, "PLAYING");
  say(plugin, "PAUSED");
  ASSERT_EQ(playState(plugin), kPaused);
  library().clearCalls();

  ASSERT_EQ(plugin.callShown("play"), "bool:true");

  EXPECT_TRUE(library().waitForCall(isCommand("PLAY", "1.00")));
  EXPECT_EQ(playState(plugin), kPaused);
}

TEST_F(MessageTest, BufferReadyDoesNotCountAsConnected) {
  const auto plugin = makePluginIn(kPlaying);
  say(plugin, "PAUSED");
  library().clearCalls();

  ASSERT_EQ(plugin.callShown("play"), "bool:true");
  drainWorker(plugin);

  EXPECT_EQ(library().count(isCommand("PLAY")), 0U);
}

TEST_F(MessageTest, ConnectedInPausedLetsAPlayGoOn) {
  const auto plugin = makePluginIn(kPaused);
  say(plugin, "CONNECTED");
  library().clearCalls();

  ASSERT_EQ(plugin.callShown("play", {integer(2)}), "bool:true");

  EXPECT_TRUE(library().waitForCall(isCommand("PLAY", "2.00")));
}

// --- CONNECTED

TEST_F(MessageTest, ConnectedOutsideConnectingOnlySetsTheFlag) {
  const auto plugin = makePluginWithSource();
  say(plugin, "CONNECTED");
  ASSERT_EQ(playState(plugin), kStopped);
  ASSERT_THAT(events(plugin), IsEmpty());

  ASSERT_EQ(plugin.callShown("play"), "bool:true");

  EXPECT_THAT(events(plugin), ElementsAre("onPlayStateChange(int:3)", kTo4)) << "the flag lets play leave connecting at once";
}

// --- READY_TO_PLAY

TEST_F(MessageTest, ReadyToPlayRaisesHandleThenSeven_WithoutATransition) {
  const auto plugin = makePluginWithSource();

  say(plugin, "READY_TO_PLAY");

  // 7 is no play state: deliberate.
  EXPECT_THAT(entries(plugin), AllOf(Contains("onPlayerHandle(double:" + std::to_string(plugin.handle) + ")"),
                                     Contains("onPlayStateChange(int:7)"), Not(Contains("playState=int:7"))));
  EXPECT_THAT(events(plugin),
              ElementsAre("onPlayerHandle(double:" + std::to_string(plugin.handle) + ")", "onPlayStateChange(int:7)"));
  EXPECT_EQ(playState(plugin), kStopped);
}

TEST_F(MessageTest, ReadyToPlayDoesSoInEveryState) {
  for (const State state : {kStopped, kPlaying, kPaused, kBuffering, kFinished, kError}) {
    SCOPED_TRACE(kStateNames[state]);
    const auto plugin = makePluginIn(state);

    say(plugin, "READY_TO_PLAY");

    EXPECT_THAT(events(plugin),
                ElementsAre("onPlayerHandle(double:" + std::to_string(plugin.handle) + ")", "onPlayStateChange(int:7)"));
    EXPECT_EQ(playState(plugin), state);
    EXPECT_EQ(library().count(isCommand("PLAY")), 0U);
  }
}

TEST_F(MessageTest, ReadyToPlayReplaysTheDeferredPlayAfterItsEvents) {
  const auto plugin = makePluginWithSource();
  ASSERT_EQ(plugin.callShown("play", {number(0.5)}), "bool:true");
  drainWorker(plugin);
  ASSERT_EQ(library().count(isCommand("PLAY")), 0U);
  log().clear();

  say(plugin, "READY_TO_PLAY");

  EXPECT_THAT(events(plugin),
              ElementsAre("onPlayerHandle(double:" + std::to_string(plugin.handle) + ")", "onPlayStateChange(int:7)", kTo4));
  EXPECT_TRUE(library().waitForCall(isCommand("PLAY", "0.50")));
}

TEST_F(MessageTest, ReadyToPlayReplaysADeferredPlayOnce) {
  const auto plugin = makePluginIn(kConnecting);

  say(plugin, "READY_TO_PLAY");
  say(plugin, "READY_TO_PLAY");

  EXPECT_EQ(library().count(isCommand("PLAY")), 1U);
}

TEST_F(MessageTest, LatestDeferredSpeedIsReplayed) {
  const auto plugin = makePluginWithSource();
  ASSERT_EQ(plugin.callShown("play", {integer(2)}), "bool:true");
  ASSERT_EQ(plugin.callShown("play", {integer(4)}), "bool:true");

  say(plugin, "READY_TO_PLAY");

  EXPECT_TRUE(library().waitForCall(isCommand("PLAY", "4.00")));
  EXPECT_EQ(library().count(isCommand("PLAY")), 1U);
}

TEST_F(MessageTest, PlayAfterReadyToPlayIsNotDeferred) {
  const auto plugin = makeReadyPlugin();

  ASSERT_EQ(plugin.callShown("play"), "bool:true");

  EXPECT_EQ(playState(plugin), kBuffering);
  EXPECT_TRUE(library().waitForCall(isCommand("PLAY", "1.00")));
}

// --- Component changes

struct SelectedRow {
  const char* word;
  const char* event;
};

class SelectedComponentTest : public MessageTest, public ::testing::WithParamInterface<SelectedRow> {};

TEST_P(SelectedComponentTest, RaisesItsKindNumberOnTheLibrarysThread) {
  const auto plugin = makePlugin();

  ASSERT_TRUE(library().fireAndWait(plugin.handle, GetParam().word));

  EXPECT_THAT(events(plugin), ElementsAre(GetParam().event));
  const auto event = waitForEntry(plugin, GetParam().event);
  ASSERT_TRUE(event);
  EXPECT_EQ(event->thread, library().dispatcherThread(plugin.handle));
}

INSTANTIATE_TEST_SUITE_P(All, SelectedComponentTest,
                         ::testing::Values(SelectedRow{"SELECTED_VIDEO_COMPONENT_CHANGED", "onSelectedComponentChanged(int:0)"},
                                           SelectedRow{"SELECTED_AUDIO_COMPONENT_CHANGED", "onSelectedComponentChanged(int:1)"},
                                           SelectedRow{"SELECTED_SUBTITLE_COMPONENT_CHANGED", "onSelectedComponentChanged(int:2)"}),
                         [](const auto& info) { return info.param.word; });

// --- Strangers

TEST_F(MessageTest, UnknownWordsDoNothingAtAll) {
  const auto plugin = makePluginIn(kPlaying);

  for (const char* word : {"HELLO", "ready_to_play", "READY_TO_PLAY ", "SELECTED_VIDEO_COMPONENT_CHANGED2", "STOPPEDD", ""}) {
    ASSERT_TRUE(library().fireAndWait(plugin.handle, word));
  }

  EXPECT_THAT(entries(plugin), IsEmpty());
  EXPECT_THAT(library().calls(), IsEmpty());
}

TEST_F(MessageTest, UserPointerIsIgnored) {
  const auto plugin = makePlugin();
  int anything = 0;

  AVControlPlugin::msgReceivedWrapper(plugin.handle, "SELECTED_AUDIO_COMPONENT_CHANGED", &anything);

  EXPECT_THAT(events(plugin), ElementsAre("onSelectedComponentChanged(int:1)"));
}

}  // namespace
