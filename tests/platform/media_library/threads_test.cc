// SPDX-License-Identifier: Apache-2.0
// The parts that carry commands and words between threads, without any media.
#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/mediamgmnt/dispatcher.h"
#include "platform/mediamgmnt/playback_facts.h"
#include "platform/mediamgmnt/task_loop.h"
#include "platform/mediamgmnt/voice.h"

namespace mediamgmnt {
namespace {

using std::chrono::milliseconds;

TEST(TaskLoopTest, RunsTasksInOrderAndTimersWhenDue) {
  TaskLoop loop;
  std::string order;
  loop.postAfter(milliseconds(20), [&] {
    order += "t";
    loop.quit();
  });
  const TaskLoop::TimerId cancelled = loop.postAfter(milliseconds(5), [&] { order += "x"; });
  loop.post([&] { order += "1"; });
  loop.post([&] {
    order += "2";
    loop.cancel(cancelled);
  });
  loop.run();
  EXPECT_EQ(order, "12t");
}

TEST(TaskLoopTest, TakesNothingAfterQuit) {
  TaskLoop loop;
  bool ran = false;
  loop.quit();
  loop.post([&] { ran = true; });
  loop.run();
  EXPECT_FALSE(ran);
}

/// A dispatcher with its thread, and what it said.
class VoiceTest : public testing::Test {
 protected:
  VoiceTest() {
    s_words.clear();
    m_dispatcher.setMessageCallback([](unsigned long, const char* word, void*) {
      std::lock_guard lock(s_mutex);
      s_words.emplace_back(word);
      s_changed.notify_all();
    });
    m_thread = std::thread([this] { m_dispatcher.run(); });
  }
  ~VoiceTest() override {
    m_dispatcher.close();
    m_thread.join();
  }
  static std::vector<std::string> wordsUpTo(std::size_t count) {
    std::unique_lock lock(s_mutex);
    s_changed.wait_for(lock, std::chrono::seconds(10), [count] { return s_words.size() >= count; });
    return s_words;
  }

  static inline std::mutex s_mutex;
  static inline std::condition_variable s_changed;
  static inline std::vector<std::string> s_words;
  PlaybackFacts m_facts;
  Dispatcher m_dispatcher{7};
  Voice m_voice{m_dispatcher, m_facts};
  std::thread m_thread;
};

using Said = std::vector<std::string>;

TEST_F(VoiceTest, AnswersAStopWhenItIsDone) {
  const Voice::Ticket ticket = m_voice.stopAsked();
  m_voice.say(status::kPaused);
  m_voice.stopDone(ticket);
  m_voice.say(status::kPlaying);
  EXPECT_EQ(wordsUpTo(4), (Said{"PAUSED", "STOPPED", "PLAY_POSITION_CHANGED", "PLAYING"}));
}

TEST_F(VoiceTest, AnswersAStopOnceWhenItIsLateAndHushesWhatIsStopped) {
  const Voice::Ticket ticket = m_voice.stopAsked();
  EXPECT_EQ(wordsUpTo(2), (Said{"STOPPED", "PLAY_POSITION_CHANGED"}));
  m_voice.say(status::kPlaying);
  m_voice.stopDone(ticket);
  m_voice.say(status::kReadyToPlay);
  EXPECT_EQ(wordsUpTo(3), (Said{"STOPPED", "PLAY_POSITION_CHANGED", "READY_TO_PLAY"}));
}

TEST_F(VoiceTest, SaysThatASourceIsReadyAlsoBeforeALateStopIsDone) {
  m_voice.stopAsked();
  EXPECT_EQ(wordsUpTo(2), (Said{"STOPPED", "PLAY_POSITION_CHANGED"}));
  m_voice.sayReady();
  EXPECT_EQ(wordsUpTo(3), (Said{"STOPPED", "PLAY_POSITION_CHANGED", "READY_TO_PLAY"}));
}

TEST_F(VoiceTest, TellsWhetherAWordIsHeardSoThatItCanBeSaidAgain) {
  const Voice::Ticket ticket = m_voice.stopAsked();
  EXPECT_EQ(wordsUpTo(2), (Said{"STOPPED", "PLAY_POSITION_CHANGED"}));
  EXPECT_FALSE(m_voice.say(status::kConnected));
  m_voice.stopDone(ticket);
  EXPECT_TRUE(m_voice.say(status::kConnected));
}

TEST_F(VoiceTest, AnswersTwoStopsWhicheverIsDoneFirstAndSpeaksOn) {
  const Voice::Ticket first = m_voice.stopAsked();
  const Voice::Ticket second = m_voice.stopAsked();
  m_voice.stopDone(second);
  m_voice.stopDone(first);
  m_voice.say(status::kReadyToPlay);
  EXPECT_EQ(wordsUpTo(5), (Said{"STOPPED", "PLAY_POSITION_CHANGED", "STOPPED", "PLAY_POSITION_CHANGED", "READY_TO_PLAY"}));
}

TEST(PlaybackFactsTest, KeepsASeekUntilItIsTaken) {
  PlaybackFacts facts;
  facts.seekAsked(5000);
  facts.freezeAt(100);
  EXPECT_EQ(facts.position(), 5000);
  facts.seekTaken();
  facts.freezeAt(100);
  EXPECT_EQ(facts.position(), 100);
}

TEST(PlaybackFactsTest, StaysWithinItsDurationUnlessOpenEnded) {
  PlaybackFacts facts;
  facts.setDuration(1000);
  facts.runFrom(5000, 1);
  EXPECT_EQ(facts.position(), 1000);
  facts.setOpenEnded(true);
  EXPECT_GE(facts.position(), 5000);
  facts.runFrom(10, -1000);
  std::this_thread::sleep_for(milliseconds(2));  // time itself is what is looked at
  EXPECT_EQ(facts.position(), 0);
}

TEST(PlaybackFactsTest, APauseDoesNotStepBackBehindWhatWasShown) {
  PlaybackFacts facts;
  facts.setOpenEnded(true);
  facts.runFrom(1000, 0.1);
  std::this_thread::sleep_for(milliseconds(30));  // time itself is what is looked at
  const long long shown = facts.position();
  facts.endRunAt(1000);
  EXPECT_GT(shown, 1000);
  EXPECT_GE(facts.position(), shown);
  facts.runFrom(5000, 1);
  facts.endRunAt(1000);
  EXPECT_EQ(facts.position(), 1000) << "a stall is no noise";
}

TEST(PlaybackFactsTest, ForgetsWithANewSource) {
  PlaybackFacts facts;
  facts.setDuration(1000);
  facts.setSpeed(2);
  facts.freezeAt(500);
  EXPECT_TRUE(facts.positionKnown());
  facts.forget();
  EXPECT_EQ(facts.position(), 0);
  EXPECT_EQ(facts.speed(), 0);
  EXPECT_EQ(facts.duration(), std::nullopt);
  EXPECT_FALSE(facts.positionKnown());
}

}  // namespace
}  // namespace mediamgmnt
