// SPDX-License-Identifier: Apache-2.0
// Media libraries with bad manners: whatever they do, every script call ends, and so does the element.
#include <chrono>
#include <string>

#include "tests/storm/storm_test.h"

namespace storm {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds kStopWait{5000};  // fifty times a tenth of a second: the one documented wait
constexpr char kUrl[] = "http://media.example/film.mp4";

template <typename Call>
milliseconds timeOf(Call call) {
  const auto begin = steady_clock::now();
  call();
  return std::chrono::duration_cast<milliseconds>(steady_clock::now() - begin);
}

class HostileLibraryTest : public StormTest {
 protected:
  AVControlPlugin& createWithData() {
    AVControlPlugin& element = page.create();
    EXPECT_TRUE(Page::setData(element, kUrl));
    return element;
  }

  bool waitForState(AVControlPlugin& element, int state) {
    return page.runUntil([&] { return element.stateMachine().isCurrentState(state); }, kPatience);
  }

  /// What a page does in a life of an element; nothing of it may hang.
  void useAndDestroy(int stops) {
    AVControlPlugin& element = createWithData();
    element.JS_Play(1.0);
    element.JS_Seek(1000.0);
    element.JS_Play(0.0);
    Page::queue(element, kUrl);
    element.JS_SetTypeParam("video/mp4", 9);
    for (int i = 0; i < stops; ++i) {
      element.JS_Stop();
    }
    Page::setData(element, kUrl);
    page.runQueued();
    page.destroy();
  }
};

TEST_F(HostileLibraryTest, QueuedCallsDoNotWait_WhenEveryCallIsSlow) {
  Manners manners;
  manners.callTime = milliseconds(200);
  library.start(manners);
  AVControlPlugin& element = createWithData();

  const milliseconds time = timeOf([&] {
    element.JS_Play(1.0);
    element.JS_Play(2.0);
    Page::queue(element, kUrl);
    element.setWindowProperties(0, 0, 640, 360);
    element.JS_SetVolume(50);
  });

  EXPECT_LT(time, manners.callTime);
  endStorm();
}

TEST_F(HostileLibraryTest, PlaysAndStops_WhenEveryCallIsSlow) {
  Manners manners;
  manners.callTime = milliseconds(200);
  library.start(manners);
  AVControlPlugin& element = createWithData();
  element.JS_Play(1.0);

  EXPECT_TRUE(waitForState(element, 1));
  const milliseconds stopTime = timeOf([&] { EXPECT_TRUE(element.JS_Stop()); });

  EXPECT_TRUE(element.stateMachine().isCurrentState(0));
  EXPECT_LT(stopTime, kStopWait);
  endStorm();
}

TEST_F(HostileLibraryTest, DestructionRunsWhatIsQueuedAndEnds_WhenEveryCallIsSlow) {
  Manners manners;
  manners.callTime = milliseconds(200);
  library.start(manners);
  AVControlPlugin& element = createWithData();
  element.JS_Play(1.0);
  for (int i = 0; i < 20; ++i) {
    element.setWindowProperties(i, 0, 640, 360);  // more than the queue takes
  }

  const milliseconds time = timeOf([&] { page.destroy(); });

  EXPECT_LT(time, milliseconds(200) * 20);
  endStorm();
}

TEST_F(HostileLibraryTest, EveryCallEnds_WhenTheLibraryRefusesEverything) {
  Manners manners;
  manners.accepts = false;
  library.start(manners);

  const milliseconds time = timeOf([&] { useAndDestroy(1); });

  EXPECT_LT(time, milliseconds(2000));  // nothing is ready to play, so there is nothing to stop
  endStorm();
}

TEST_F(HostileLibraryTest, StopWaitsFiveSecondsAndNoMore_WhenTheLibraryRefusesIt) {
  Manners manners;
  manners.accepts = false;
  library.start(manners);
  AVControlPlugin& element = createWithData();
  library.say(library.lastHandle(), "READY_TO_PLAY");
  element.JS_Play(1.0);
  ASSERT_TRUE(element.stateMachine().isCurrentState(4));

  const milliseconds time = timeOf([&] { EXPECT_TRUE(element.JS_Stop()); });

  EXPECT_TRUE(element.stateMachine().isCurrentState(4));
  EXPECT_GE(time, kStopWait);
  EXPECT_LT(time, kStopWait + milliseconds(2000));
  endStorm();
}

TEST_F(HostileLibraryTest, EveryCallEnds_WhenTheLibraryGivesNoPlayer) {
  Manners manners;
  manners.opens = false;
  library.start(manners);
  AVControlPlugin& element = page.create();
  double number = 0.0;

  EXPECT_FALSE(element.JS_Play(1.0));
  EXPECT_FALSE(element.JS_Seek(1.0));
  EXPECT_FALSE(element.JS_GetPlayTimeProp(number));
  EXPECT_FALSE(element.JS_GetPlayPositionProp(number));
  EXPECT_FALSE(element.JS_GetSpeedProp(number));
  element.JS_Stop();
  Page::setData(element, kUrl);
  element.JS_Stop();
  EXPECT_EQ(0UL, element.getNativePlayerHandle());

  EXPECT_EQ(0U, library.opened());
  endStorm();
}

TEST_F(HostileLibraryTest, WordsAfterTheCloseChangeNothing) {
  Manners manners;
  manners.callsAfterClose = true;
  library.start(manners);
  AVControlPlugin& element = createWithData();
  element.JS_Play(1.0);
  ASSERT_TRUE(waitForState(element, 1));
  const unsigned long handle = library.lastHandle();
  page.destroy();
  page.runQueued();
  int events = 0;
  page.onEvent([&](AVControlPlugin&, const pluginhost::Event&) { ++events; });

  for (const std::string& word : everyWord()) {
    library.say(handle, word);
  }
  page.runQueued();

  EXPECT_EQ(0, events);
  endStorm();
}

TEST_F(HostileLibraryTest, LateWordsOfAnOldPlayerDoNotReachTheNewOne) {
  Manners manners;
  manners.callsAfterClose = true;
  library.start(manners);
  AVControlPlugin& element = createWithData();
  element.JS_Play(1.0);
  ASSERT_TRUE(waitForState(element, 1));
  const unsigned long oldHandle = library.lastHandle();
  ASSERT_TRUE(Page::setData(element, "http://media.example/next.mp4"));
  ASSERT_NE(oldHandle, library.lastHandle());
  element.JS_Play(1.0);
  ASSERT_TRUE(waitForState(element, 1));

  for (const char* word : {"FINISHED", "ERROR", "PAUSED", "BUFFERING", "STOPPED"}) {
    library.say(oldHandle, word);
  }

  EXPECT_TRUE(element.stateMachine().isCurrentState(1));
  endStorm();
}

TEST_F(HostileLibraryTest, PlaysPausesAndStops_WhenEveryWordIsSaidFiveTimes) {
  Manners manners;
  manners.repeats = 5;
  library.start(manners);
  // The words of a speed pass the queue that commands pass, which refuses what is too much for it.
  int speeds = 0;
  page.onEvent([&](AVControlPlugin&, const pluginhost::Event& event) { speeds += event.name == "onPlaySpeedChanged" ? 1 : 0; });
  const auto waitForSpeeds = [&](int count) { return page.runUntil([&] { return speeds >= count; }, kPatience); };
  AVControlPlugin& element = createWithData();
  element.JS_Play(1.0);
  ASSERT_TRUE(waitForState(element, 1) && waitForSpeeds(manners.repeats));
  element.JS_Play(0.0);
  ASSERT_TRUE(waitForState(element, 2) && waitForSpeeds(2 * manners.repeats));
  element.JS_Play(1.0);
  ASSERT_TRUE(waitForState(element, 1) && waitForSpeeds(3 * manners.repeats));

  EXPECT_TRUE(element.JS_Stop());

  EXPECT_TRUE(element.stateMachine().isCurrentState(0));
  endStorm();
}

TEST_F(HostileLibraryTest, StopWaitsFiveSecondsAndNoMore_WhenItIsNeverAnswered) {
  Manners manners;
  manners.answersStop = false;
  library.start(manners);
  AVControlPlugin& element = createWithData();
  element.JS_Play(1.0);
  ASSERT_TRUE(waitForState(element, 1));

  bool stopped = false;
  const milliseconds time = timeOf([&] { stopped = element.JS_Stop(); });

  EXPECT_TRUE(stopped);  // the command was taken; the confirmation is what did not come
  EXPECT_TRUE(element.stateMachine().isCurrentState(1));
  EXPECT_GE(time, kStopWait);
  EXPECT_LT(time, kStopWait + milliseconds(2000));
  endStorm();
}

TEST_F(HostileLibraryTest, DestructionNeedsNoAnswerToStop) {
  Manners manners;
  manners.answersStop = false;
  library.start(manners);
  AVControlPlugin& element = createWithData();
  element.JS_Play(1.0);
  ASSERT_TRUE(waitForState(element, 1));

  const milliseconds time = timeOf([&] { page.destroy(); });

  EXPECT_LT(time, milliseconds(2000));
  EXPECT_EQ(1U, library.commands("STOP"));
  endStorm();
}

}  // namespace
}  // namespace storm
