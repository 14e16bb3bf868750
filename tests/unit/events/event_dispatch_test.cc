// SPDX-License-Identifier: Apache-2.0
// The script events: names, arguments, order, and the thread on which each is raised.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
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
using fakes::isRead;
using fixture::Gate;
using fixture::integer;
using fixture::number;
using fixture::TestPlugin;
using fixture::text;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class EventDispatchTest : public fixture::PluginTest {
 protected:
  static AVControlPlugin* object(const TestPlugin& plugin) { return AVControlPlugin::cast(plugin.base.get()); }
  void say(const TestPlugin& plugin, const std::string& word) {
    ASSERT_TRUE(library().fireAndWait(plugin.handle, word)) << word;
    drainWorker(plugin);
  }
  /// The worker's thread, as the library sees it.
  std::thread::id workerThread(const TestPlugin& plugin) {
    drainWorker(plugin);
    const auto marks = library().calls(fakes::ofHandle(plugin.handle, fakes::isWrite("LOOP")));
    return marks.empty() ? std::thread::id() : marks.back().thread;
  }
  void expectRaisedOnTheWorker(const TestPlugin& plugin, const std::string& shownEvent) {
    const auto event = waitForEntry(plugin, shownEvent);
    ASSERT_TRUE(event) << shownEvent;
    EXPECT_EQ(event->thread, workerThread(plugin));
    EXPECT_NE(event->thread, std::this_thread::get_id());
    EXPECT_NE(event->thread, library().dispatcherThread(plugin.handle));
  }
};

// --- PLAY_POSITION_CHANGED

TEST_F(EventDispatchTest, PositionIsRaisedOnTheWorker) {
  library().setProperty("POSITION", "1500.5");
  const auto plugin = makePlugin();

  say(plugin, "PLAY_POSITION_CHANGED");

  EXPECT_THAT(events(plugin), ElementsAre("onPlayPositionChanged(double:1500.5)"));
  expectRaisedOnTheWorker(plugin, "onPlayPositionChanged(double:1500.5)");
}

TEST_F(EventDispatchTest, PositionIsReadOnTheWorker) {
  library().setProperty("POSITION", "1500");
  const auto plugin = makePlugin();

  say(plugin, "PLAY_POSITION_CHANGED");

  const auto reads = library().calls(isRead("POSITION"));
  ASSERT_EQ(reads.size(), 1U);
  EXPECT_EQ(reads[0].thread, workerThread(plugin));
  EXPECT_EQ(reads[0].number, 128);
}

TEST_F(EventDispatchTest, PositionEventRefreshesTheCachedTime) {
  library().setProperty("POSITION", "1500");
  const auto plugin = makePlugin();
  ASSERT_EQ(plugin.readShown("playPosition"), "double:0");

  say(plugin, "PLAY_POSITION_CHANGED");

  EXPECT_EQ(plugin.readShown("playPosition"), "double:1500");
}

TEST_F(EventDispatchTest, NoPositionEvent_WhenThePositionCannotBeRead) {
  const auto plugin = makePlugin();

  say(plugin, "PLAY_POSITION_CHANGED");

  EXPECT_THAT(events(plugin), IsEmpty());
  EXPECT_EQ(library().count(isRead("POSITION")), 1U);
}

TEST_F(EventDispatchTest, PositionsAreReadAsTheLibraryWritesThem) {
  const auto plugin = makePlugin();
  for (const char* position : {"0", "12abc", "abc", "-3.25", "1e3"}) {
    library().setProperty("POSITION", position);
    say(plugin, "PLAY_POSITION_CHANGED");
  }

  EXPECT_THAT(events(plugin),
              ElementsAre("onPlayPositionChanged(double:0)", "onPlayPositionChanged(double:12)", "onPlayPositionChanged(double:0)",
                          "onPlayPositionChanged(double:-3.25)", "onPlayPositionChanged(double:1000)"));
}

TEST_F(EventDispatchTest, SeekBeyondTheEndRaisesAPositionEventOnTheWorker) {
  library().setProperty("DURATION", "10000");
  library().setProperty("POSITION", "2000");
  const auto plugin = makePlugin();

  EXPECT_EQ(plugin.callShown("seek", {integer(10001)}), "bool:false");

  expectRaisedOnTheWorker(plugin, "onPlayPositionChanged(double:2000)");
  EXPECT_EQ(library().count(isCommand("SEEK")), 0U);
}

// --- PLAY_SPEED_CHANGED

TEST_F(EventDispatchTest, SpeedIsStoredThenRaisedOnTheWorker) {
  library().setProperty("PLAY_SPEED", "2.00");
  const auto plugin = makePlugin();
  log().clear();

  say(plugin, "PLAY_SPEED_CHANGED");

  EXPECT_THAT(entries(plugin), ElementsAre("speed=double:2", "onPlaySpeedChanged(double:2)"));
  expectRaisedOnTheWorker(plugin, "onPlaySpeedChanged(double:2)");
}

TEST_F(EventDispatchTest, SpeedIsReadIntoItsBuffer) {
  library().setProperty("PLAY_SPEED", "-1.00");
  const auto plugin = makePlugin();

  say(plugin, "PLAY_SPEED_CHANGED");

  const auto reads = library().calls(isRead("PLAY_SPEED"));
  ASSERT_EQ(reads.size(), 1U);
  EXPECT_EQ(reads[0].number, 2048);
  EXPECT_THAT(events(plugin), ElementsAre("onPlaySpeedChanged(double:-1)"));
}

TEST_F(EventDispatchTest, NothingHappens_WhenTheSpeedCannotBeRead) {
  const auto plugin = makePlugin();
  log().clear();

  say(plugin, "PLAY_SPEED_CHANGED");

  EXPECT_THAT(entries(plugin), IsEmpty());
}

// --- ERROR

TEST_F(EventDispatchTest, ErrorIsHandledOnTheWorker) {
  library().setProperty("LAST_ERR_CODE", "5");
  const auto plugin = makePlugin();
  log().clear();

  say(plugin, "ERROR");

  EXPECT_THAT(entries(plugin), ElementsAre("playState=int:6", "onPlayStateChange(int:6)", "speed=double:0"));
  expectRaisedOnTheWorker(plugin, "onPlayStateChange(int:6)");
  EXPECT_EQ(plugin.readShown("error"), "int:5");
}

TEST_F(EventDispatchTest, ErrorIsStoredBeforeThePageLearnsOfIt) {
  library().setProperty("LAST_ERR_CODE", "5");
  const auto plugin = makePlugin();
  int atEvent = -100;
  log().setHook([&](const fixture::Entry& entry) {
    if (shown(entry) == "onPlayStateChange(int:6)") object(plugin)->JS_GetErrorProp(atEvent);
  });

  say(plugin, "ERROR");

  EXPECT_EQ(atEvent, 5);
}

TEST_F(EventDispatchTest, ErrorSelectsTheDefaultComponentsOnTheWorker) {
  const auto plugin = makePlugin();

  say(plugin, "ERROR");

  const auto defaults = library().calls(isFunction(Function::kSelectDefaultAvComponent));
  ASSERT_EQ(defaults.size(), 2U);
  EXPECT_EQ(defaults[0].number, 0);
  EXPECT_EQ(defaults[1].number, 1);
  EXPECT_EQ(defaults[0].thread, workerThread(plugin));
}

TEST_F(EventDispatchTest, SecondErrorRaisesNothing) {
  library().setProperty("LAST_ERR_CODE", "1");
  const auto plugin = makePlugin();
  say(plugin, "ERROR");
  library().setProperty("LAST_ERR_CODE", "3");
  log().clear();

  say(plugin, "ERROR");

  EXPECT_THAT(events(plugin), IsEmpty());
  EXPECT_EQ(plugin.readShown("error"), "int:3");
}

// --- The words keep their order through the queue

TEST_F(EventDispatchTest, WorkerRaisesInTheOrderOfTheWords) {
  library().setProperty("POSITION", "1000");
  library().setProperty("PLAY_SPEED", "1");
  const auto plugin = makePlugin();

  for (const char* word : {"PLAY_SPEED_CHANGED", "PLAY_POSITION_CHANGED", "PLAY_SPEED_CHANGED"})
    library().fire(plugin.handle, word);
  ASSERT_TRUE(library().waitIdle());
  drainWorker(plugin);

  EXPECT_THAT(events(plugin),
              ElementsAre("onPlaySpeedChanged(double:1)", "onPlayPositionChanged(double:1000)", "onPlaySpeedChanged(double:1)"));
}

// A full queue refuses the newest; the words say so to nobody.
TEST_F(EventDispatchTest, WordsAreDropped_WhenTheQueueIsFull) {
  library().setProperty("POSITION", "1000");
  const auto plugin = makePlugin();
  Gate inside;
  Gate go;
  library().addHook(isCommand("SET_WINDOW_PROPERTIES", "1|2|640|360|"), [inside, go](const Call&) {
    inside.open();
    go.wait();
  });
  plugin.base->setWindowProperties(1, 2, 640, 360);
  ASSERT_TRUE(inside.wait());

  for (int i = 0; i < 15; ++i) ASSERT_TRUE(library().fireAndWait(plugin.handle, "PLAY_POSITION_CHANGED"));
  go.open();
  ASSERT_TRUE(library().waitForCount(isRead("POSITION"), 10));
  drainWorker(plugin);

  EXPECT_EQ(events(plugin).size(), 10U);
}

// What was queued before the end still runs and still reaches the page.
TEST_F(EventDispatchTest, QueuedWordIsStillRaised_WhenItsPluginEnds) {
  library().setProperty("POSITION", "1000");
  auto plugin = makePlugin();
  Gate inside;
  Gate go;
  library().addHook(isCommand("SET_WINDOW_PROPERTIES"), [inside, go](const Call&) {
    inside.open();
    go.wait();
  });
  plugin.base->setWindowProperties(1, 2, 640, 360);
  ASSERT_TRUE(inside.wait());
  ASSERT_TRUE(library().fireAndWait(plugin.handle, "PLAY_POSITION_CHANGED"));

  auto destroying = std::async(std::launch::async, [&] { plugin.base->willBeDestroyed(); });
  go.open();
  destroying.get();

  EXPECT_THAT(events(plugin), ElementsAre("onPlayPositionChanged(double:1000)"));
}

TEST_F(EventDispatchTest, OnlyTheSixWordsGoThroughThePlayer) {
  library().setProperty("POSITION", "1000");
  library().setProperty("PLAY_SPEED", "1");
  const auto plugin = makePlugin();

  for (const char* word : {"PLAYING", "PAUSED", "STOPPED", "play_position_changed", "PLAY_POSITION_CHANGED ", ""}) {
    object(plugin)->handleDispatchEventFromCb(word);
  }

  EXPECT_THAT(events(plugin), IsEmpty());
}

// --- Events of other threads

TEST_F(EventDispatchTest, PlayRaisesConnectingOnTheScriptThread) {
  const auto plugin = makePluginWithSource();

  ASSERT_EQ(plugin.callShown("play"), "bool:true");

  const auto event = waitForEntry(plugin, "onPlayStateChange(int:3)");
  ASSERT_TRUE(event);
  EXPECT_EQ(event->thread, std::this_thread::get_id());
}

TEST_F(EventDispatchTest, PlayerHandleAndSevenAreRaisedOnTheLibrarysThread) {
  const auto plugin = makePluginWithSource();

  say(plugin, "READY_TO_PLAY");

  for (const std::string& name :
       {"onPlayerHandle(double:" + std::to_string(plugin.handle) + ")", std::string("onPlayStateChange(int:7)")}) {
    const auto event = waitForEntry(plugin, name);
    ASSERT_TRUE(event) << name;
    EXPECT_EQ(event->thread, library().dispatcherThread(plugin.handle)) << name;
  }
}

TEST_F(EventDispatchTest, PlayStatePropertyChangesBeforeItsEvent) {
  const auto plugin = makePluginWithSource();
  log().clear();

  ASSERT_EQ(plugin.callShown("play"), "bool:true");

  EXPECT_THAT(entries(plugin), ElementsAre("playState=int:3", "onPlayStateChange(int:3)"));
}

TEST_F(EventDispatchTest, FocusIsRaisedOnTheScriptThreadWithoutArguments) {
  const auto plugin = makePlugin();

  EXPECT_EQ(plugin.callShown("focus"), "undefined");

  const auto event = waitForEntry(plugin, "onFocus()");
  ASSERT_TRUE(event);
  EXPECT_EQ(event->thread, std::this_thread::get_id());
}

TEST_F(EventDispatchTest, FullScreenChangeIsRaisedWithoutArguments) {
  const auto plugin = makePlugin();
  pluginhost::introduceProperty(*plugin.base, "fullScreen", false);

  object(plugin)->JS_SetFullScreen(true);

  EXPECT_THAT(events(plugin), ElementsAre("onFullScreenChange()"));
  const auto event = waitForEntry(plugin, "onFullScreenChange()");
  ASSERT_TRUE(event);
  EXPECT_EQ(event->thread, std::this_thread::get_id());
}

TEST_F(EventDispatchTest, FullScreenChangeIsNotRaised_WhenNothingChanges) {
  const auto plugin = makePlugin();

  object(plugin)->JS_SetFullScreen(true);
  pluginhost::introduceProperty(*plugin.base, "fullScreen", true);
  object(plugin)->JS_SetFullScreen(true);

  EXPECT_THAT(events(plugin), IsEmpty());
}

// --- dispatch

TEST_F(EventDispatchTest, DispatchForwardsNameArgumentsAndResult) {
  const auto plugin = makePlugin();
  _CorvelNativeVariant args[] = {integer(4), text("abc"), number(1.5)};

  EXPECT_TRUE(object(plugin)->dispatch("onAnything", args, 2));

  EXPECT_THAT(events(plugin), ElementsAre("onAnything(int:4, string:abc)"));
}

TEST_F(EventDispatchTest, DispatchTakesNoArguments) {
  const auto plugin = makePlugin();

  EXPECT_TRUE(object(plugin)->dispatch("onFocus", nullptr, 0));

  EXPECT_THAT(events(plugin), ElementsAre("onFocus()"));
}

TEST_F(EventDispatchTest, ShellReceivesTheEventsInOrder) {
  library().setProperty("POSITION", "1000");
  const auto plugin = makePluginWithSource();
  ASSERT_EQ(plugin.callShown("play"), "bool:true");
  say(plugin, "READY_TO_PLAY");
  say(plugin, "BUFFER_READY");
  say(plugin, "PLAY_POSITION_CHANGED");

  EXPECT_THAT(drainEvents(), ElementsAre("onPlayStateChange(int:3)", "onPlayerHandle(double:" + std::to_string(plugin.handle) + ")",
                                         "onPlayStateChange(int:7)", "onPlayStateChange(int:4)", "onPlayStateChange(int:1)",
                                         "onPlayPositionChanged(double:1000)"));
}

}  // namespace
