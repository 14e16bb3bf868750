// SPDX-License-Identifier: Apache-2.0
// The window, full screen, volume, focus, the read-only properties, and the small operations behind them.
#include <string>
#include <thread>
#include <vector>

#include "tests/support/playing_plugin.h"

namespace {

using fakes::isFunction;
using fixture::integer;
using fixture::kFirstUrl;
using fixture::Strings;

class WindowTest : public fixture::PlayingPluginTest {
 protected:
  WindowTest() { forget(); }
  void introduceFullScreen(bool on) { pluginhost::introduceProperty(*plugin.base, "fullScreen", on); }
  bool fullScreen() const {
    bool on = false;
    EXPECT_TRUE(pluginhost::readIntroduced(*plugin.base, "fullScreen", on));
    return on;
  }
};

// The window.

TEST_F(WindowTest, IsPassedOn) {
  EXPECT_TRUE(plugin.base->setWindowProperties(10, 20, 640, 360));

  EXPECT_EQ((Strings{"SET_WINDOW_PROPERTIES 10|20|640|360|"}), finishedActions());
}

TEST_F(WindowTest, HasASmallestSize) {
  EXPECT_TRUE(plugin.base->setWindowProperties(1, 1, 149, 80));
  EXPECT_TRUE(plugin.base->setWindowProperties(1, 1, 150, 79));
  EXPECT_TRUE(plugin.base->setWindowProperties(1, 1, -5, -5));
  EXPECT_EQ(Strings{}, finishedActions());

  EXPECT_TRUE(plugin.base->setWindowProperties(-7, -8, 150, 80));
  EXPECT_EQ((Strings{"SET_WINDOW_PROPERTIES -7|-8|150|80|"}), finishedActions());
}

TEST_F(WindowTest, IsUsedByTheResizeOfTheNextPlay) {
  ASSERT_TRUE(plugin.base->setWindowProperties(10, 20, 640, 360));
  forget();

  ASSERT_EQ("bool:true", plugin.callShown("play"));

  EXPECT_EQ((Strings{"SET_WINDOW_PROPERTIES 10|20|640|360|"}), finishedActions());
}

TEST_F(WindowTest, WithoutAPlayerIsAcceptedAllTheSame) {
  library().failOpens(1);
  const fixture::TestPlugin poor = makePlugin();

  EXPECT_TRUE(poor.base->setWindowProperties(10, 20, 640, 360));
}

// Full screen.

TEST_F(WindowTest, FullScreenIsTheWholePlane_SentTwice) {
  introduceFullScreen(false);
  ASSERT_TRUE(plugin.base->setWindowProperties(10, 20, 640, 360));
  forget();

  av->JS_SetFullScreen(true);

  const std::string whole = "SET_WINDOW_PROPERTIES 0|0|1280|720|";
  EXPECT_EQ((Strings{whole, whole}), finishedActions());  // two resizes are queued: deliberate
  EXPECT_TRUE(fullScreen());
  EXPECT_EQ((Strings{"onFullScreenChange()"}), events(plugin));
}

TEST_F(WindowTest, LeavingFullScreenRestoresTheWindow) {
  introduceFullScreen(false);
  ASSERT_TRUE(plugin.base->setWindowProperties(10, 20, 640, 360));
  av->JS_SetFullScreen(true);
  forget();

  av->JS_SetFullScreen(false);

  const std::string window = "SET_WINDOW_PROPERTIES 10|20|640|360|";
  EXPECT_EQ((Strings{window, window}), finishedActions());
  EXPECT_FALSE(fullScreen());
  EXPECT_EQ((Strings{"onFullScreenChange()"}), events(plugin));
}

TEST_F(WindowTest, LeavingFullScreenRestoresTheLastWindowThatWasLargeEnough) {
  introduceFullScreen(false);
  ASSERT_TRUE(plugin.base->setWindowProperties(10, 20, 640, 360));
  ASSERT_TRUE(plugin.base->setWindowProperties(1, 1, 149, 80));
  av->JS_SetFullScreen(true);
  forget();

  av->JS_SetFullScreen(false);

  const std::string window = "SET_WINDOW_PROPERTIES 10|20|640|360|";
  EXPECT_EQ((Strings{window, window}), finishedActions());
}

TEST_F(WindowTest, FullScreenSetsThePropertyBeforeTheEvent) {
  introduceFullScreen(false);
  bool seen = false;
  log().setHook([&](const fixture::Entry& entry) { seen = seen || (entry.name == "onFullScreenChange" && fullScreen()); });

  av->JS_SetFullScreen(true);

  EXPECT_TRUE(seen);
}

TEST_F(WindowTest, LeavingFullScreenWithoutAWindowKeepsThePlane) {
  introduceFullScreen(true);

  av->JS_SetFullScreen(false);

  EXPECT_EQ((Strings{"SET_WINDOW_PROPERTIES 0|0|1280|720|"}),
            finishedActions());  // no window to go back to: only the second resize
}

TEST_F(WindowTest, FullScreenTwiceIsOnce) {
  introduceFullScreen(true);

  av->JS_SetFullScreen(true);

  EXPECT_EQ(Strings{}, finishedActions());
  EXPECT_EQ(Strings{}, events(plugin));
}

TEST_F(WindowTest, FullScreenDoesNothing_WhereTheHostDoesNotKnowIt) {
  av->JS_SetFullScreen(true);

  EXPECT_EQ(Strings{}, finishedActions());
  EXPECT_EQ(Strings{}, events(plugin));
}

// Volume and focus.

TEST_F(WindowTest, VolumeIsCheckedAndNothingElse) {
  EXPECT_FALSE(av->JS_SetVolume(-1));
  EXPECT_TRUE(av->JS_SetVolume(0));
  EXPECT_TRUE(av->JS_SetVolume(100));
  EXPECT_TRUE(av->JS_SetVolume(101));
  EXPECT_FALSE(av->JS_SetVolume(102));
  EXPECT_EQ("bool:true", plugin.callShown("setVolume", {integer(101)}));
  EXPECT_EQ("bool:false", plugin.callShown("setVolume", {integer(102)}));

  EXPECT_EQ(Strings{}, finishedActions());
  EXPECT_EQ(Strings{}, hostEntries());
}

TEST_F(WindowTest, FocusIsAnEventOnTheCallersThread) {
  av->JS_Focus();

  const auto focus = waitForEntry(plugin, "onFocus()");
  ASSERT_TRUE(focus.has_value());
  EXPECT_EQ(std::this_thread::get_id(), focus->thread);
}

// Read-only properties.

TEST_F(WindowTest, PositionComesFromTheState) {
  EXPECT_EQ("double:0", plugin.readShown("playPosition"));
  enter(1);
  EXPECT_EQ("double:1500", plugin.readShown("playPosition"));
  library().setProperty("POSITION", "1750.25");
  EXPECT_EQ("double:1750.25", plugin.readShown("playPosition"));
  enter(0);
  library().setProperty("POSITION", "9999.00");
  EXPECT_EQ("double:1750.25", plugin.readShown("playPosition"));
}

TEST_F(WindowTest, PlayTimeIsTheDuration) {
  EXPECT_EQ("double:60000", plugin.readShown("playTime"));
  library().setProperty("DURATION", "0.00");
  EXPECT_EQ("double:0", plugin.readShown("playTime"));
  library().setProperty("DURATION", std::nullopt);
  EXPECT_EQ("failed", plugin.readShown("playTime"));
}

TEST_F(WindowTest, SpeedIsAskedForAndKept) {
  library().setProperty("PLAY_SPEED", "-2.00");

  EXPECT_EQ("double:-2", plugin.readShown("speed"));

  double kept = 0.0;
  EXPECT_TRUE(av->getSpeedProperty(kept));
  EXPECT_EQ(-2.0, kept);
  EXPECT_EQ((Strings{"speed=double:-2"}), hostEntries());
}

TEST_F(WindowTest, SpeedThatCannotBeAskedForIsNotChanged) {
  library().setProperty("PLAY_SPEED", std::nullopt);

  EXPECT_EQ("failed", plugin.readShown("speed"));

  EXPECT_EQ(Strings{}, hostEntries());
}

TEST_F(WindowTest, ErrorIsTheLastCode) {
  EXPECT_EQ("novalue", plugin.readShown("error"));
  av->setErrorProperty(0);
  EXPECT_EQ("int:0", plugin.readShown("error"));
  av->setErrorProperty(5);
  EXPECT_EQ("int:5", plugin.readShown("error"));
  av->setErrorProperty(-1);
  EXPECT_EQ("novalue", plugin.readShown("error"));
}

TEST_F(WindowTest, WithoutAPlayerThereIsNothingToRead) {
  library().failOpens(1);
  const fixture::TestPlugin poor = makePlugin();

  EXPECT_EQ("failed", poor.readShown("playPosition"));
  EXPECT_EQ("failed", poor.readShown("playTime"));
  EXPECT_EQ("failed", poor.readShown("speed"));
  EXPECT_EQ("novalue", poor.readShown("error"));
}

// The small operations.

TEST_F(WindowTest, CachedTimeIsFilledAndReset) {
  double time = -1.0;
  EXPECT_TRUE(av->refreshCachedTime());
  EXPECT_TRUE(av->getCachedTime(&time));
  EXPECT_EQ(1500.0, time);
  library().setProperty("POSITION", std::nullopt);
  EXPECT_FALSE(av->refreshCachedTime());
  EXPECT_TRUE(av->getCachedTime(&time));
  EXPECT_EQ(1500.0, time);
  av->resetCachedTime();
  EXPECT_TRUE(av->getCachedTime(&time));
  EXPECT_EQ(0.0, time);
}

TEST_F(WindowTest, PausingTakesThePositionFirst) {
  EXPECT_TRUE(av->pausePlayer());

  double time = 0.0;
  EXPECT_TRUE(av->getCachedTime(&time));
  EXPECT_EQ(1500.0, time);
  EXPECT_EQ((Strings{"PAUSE"}), finishedActions());
}

TEST_F(WindowTest, PausingNeedsNoPosition) {
  library().setProperty("POSITION", std::nullopt);

  EXPECT_TRUE(av->pausePlayer());

  EXPECT_EQ((Strings{"PAUSE"}), finishedActions());
}

TEST_F(WindowTest, StopPlayerDoesNotWait_UnlessAStopWasRequested) {
  ASSERT_TRUE(av->startPlayer(1.0));

  EXPECT_TRUE(av->stopPlayer());

  EXPECT_EQ((Strings{"PLAY 1.00", "STOP"}), finishedActions());
}

TEST_F(WindowTest, PlayStatePropertyIsReadBack) {
  EXPECT_EQ(0, av->getPlayState());
  av->setPlayStateProperty(4);
  EXPECT_EQ(4, av->getPlayState());
}

TEST_F(WindowTest, PlayPositionPropertyComesFromTheMachine) {
  enter(1);

  EXPECT_TRUE(av->setPlayPositionFromPlayer());

  EXPECT_EQ((Strings{"playPosition=double:1500"}), hostEntries());
}

// Components at the start and in recovery.

TEST_F(WindowTest, DefaultComponentsAreSelectedForTheProcess_VideoThenAudio) {
  av->selectDefaultAVcomponent();

  EXPECT_EQ((std::vector<int>{0, 1}), defaultSelections());
  EXPECT_EQ(Strings{}, finishedActions());
}

TEST_F(WindowTest, TheActiveBroadcastIsStoppedThroughTheQueue) {
  const auto blocked = blockWorker();

  av->stopActiveAVComp();

  EXPECT_EQ(Strings{}, library().actions());  // queued behind what the worker is at
  blocked->release();
  EXPECT_TRUE(library().waitForCall(fakes::isCommand("STOPBROADCAST", "")));
}

TEST_F(WindowTest, WithoutAPlayerTheSmallOperationsSayFalse) {
  library().failOpens(1);
  const fixture::TestPlugin poor = makePlugin();
  AVControlPlugin* const control = AVControlPlugin::cast(poor.base.get());

  EXPECT_FALSE(control->startPlayer(1.0));
  EXPECT_FALSE(control->pausePlayer());
  EXPECT_FALSE(control->seekPlayer(1.0));
  EXPECT_FALSE(control->resizePlayer());
  EXPECT_FALSE(control->stopPlayer());
  EXPECT_FALSE(control->refreshCachedTime());
  control->stopActiveAVComp();
}

}  // namespace
