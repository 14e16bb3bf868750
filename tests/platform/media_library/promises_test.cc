// SPDX-License-Identifier: Apache-2.0
// What the library promises whatever it plays: handles, threads, closing, refusals, answers.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <clocale>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <set>
#include <thread>

#include "host/mediamgmnt.h"
#include "platform/mediamgmnt/media_plane.h"
#include "sample_server.h"
#include "test_player.h"

namespace {

using Clock = std::chrono::steady_clock;

double msSince(Clock::time_point start) { return std::chrono::duration<double, std::milli>(Clock::now() - start).count(); }

std::string mp4() { return SampleServer::instance().url("short/two.mp4"); }

TEST(HandleTest, IsNeverZeroAndNeverUsedAgain) {
  std::set<unsigned long> handles;
  for (int i = 0; i < 200; ++i) {
    const unsigned long handle = openPlayer(1);
    EXPECT_NE(handle, 0UL);
    EXPECT_TRUE(handles.insert(handle).second);
    EXPECT_NE(closePlayer(handle), 0);
  }
}

TEST(HandleTest, IsRefusedByEveryFunctionOnceClosed) {
  const unsigned long handle = openPlayer(1);
  closePlayer(handle);
  char buffer[16] = "kept";
  int position = -1;

  EXPECT_EQ(closePlayer(handle), 0);
  EXPECT_EQ(cmdPlayer(handle, "PLAY", "1.00"), 0);
  EXPECT_EQ(setPlayerProperty(handle, "INPUT", "x"), 0);
  EXPECT_EQ(getPlayerProperty(handle, "POSITION", buffer, sizeof buffer), 0);
  EXPECT_EQ(registerCallback(handle, nullptr), 0);
  EXPECT_EQ(registerTextTrackCallback(handle, nullptr), 0);
  EXPECT_EQ(registerSubtitleSettingsChangedCallback(handle, nullptr), 0);
  EXPECT_EQ(getOOBPlayerPosition(handle, &position), 0);
  EXPECT_EQ(position, -1);
}

TEST(ArgumentTest, NullsAreTolerated) {
  const TestPlayer player;
  char buffer[4] = "abc";
  EXPECT_EQ(cmdPlayer(player.handle(), nullptr, nullptr), 0);
  EXPECT_EQ(cmdPlayer(player.handle(), "PLAY", nullptr), 0);
  EXPECT_EQ(cmdPlayer(player.handle(), "SEEK", nullptr), 0);
  EXPECT_EQ(cmdPlayer(player.handle(), "SET_WINDOW_PROPERTIES", nullptr), 0);
  EXPECT_EQ(setPlayerProperty(player.handle(), nullptr, nullptr), 0);
  EXPECT_NE(setPlayerProperty(player.handle(), "USER_AGENT", nullptr), 0);
  EXPECT_NE(setPlayerProperty(player.handle(), "NATIVE_WINDOW_SIZE", nullptr), 0);
  EXPECT_NE(setPlayerProperty(player.handle(), "LOOP", nullptr), 0);
  EXPECT_NE(setPlayerProperty(player.handle(), "CACHED", nullptr), 0);
  EXPECT_NE(setPlayerProperty(player.handle(), "FORCED_FORMAT", nullptr), 0);
  EXPECT_EQ(getPlayerProperty(player.handle(), nullptr, buffer, sizeof buffer), 0);
  EXPECT_EQ(getPlayerProperty(player.handle(), "POSITION", nullptr, 10), 0);
  EXPECT_EQ(getOOBPlayerPosition(player.handle(), nullptr), 0);
}

TEST(ArgumentTest, AnswersAreCutAndTerminated) {
  TestPlayer player;
  player.load(mp4());
  player.command("SEEK", "123456");
  char buffer[8];

  std::memset(buffer, '#', sizeof buffer);
  EXPECT_EQ(getPlayerProperty(player.handle(), "POSITION", buffer, 4), 0);
  EXPECT_STREQ(buffer, "123");
  EXPECT_EQ(buffer[4], '#');

  EXPECT_NE(getPlayerProperty(player.handle(), "POSITION", buffer, 7), 0);
  EXPECT_STREQ(buffer, "123456");

  std::memset(buffer, '#', sizeof buffer);
  EXPECT_EQ(getPlayerProperty(player.handle(), "POSITION", buffer, 0), 0);
  EXPECT_EQ(buffer[0], '#');
}

TEST(ArgumentTest, NumbersHaveAPointInAnyLocale) {
  if (std::setlocale(LC_ALL, "de_DE.UTF-8") == nullptr) GTEST_FAIL() << "the locale de_DE.UTF-8 is not installed";
  TestPlayer player;
  player.load(mp4());
  player.command("PLAY", "0.50");
  player.wordsUntil("PLAY_SPEED_CHANGED");
  EXPECT_EQ(player.get("PLAY_SPEED"), "0.50");
  player.command("SEEK", "1500.75");
  EXPECT_EQ(player.get("POSITION"), "1501");
  std::setlocale(LC_ALL, "C");
}

TEST(ArgumentTest, UnknownNamesAreRefused) {
  TestPlayer player;
  EXPECT_EQ(player.command("DANCE"), 0);
  EXPECT_EQ(player.set("COLOUR", "red"), 0);
  EXPECT_EQ(player.get("COLOUR"), std::nullopt);
  EXPECT_NE(player.command("STOPBROADCAST"), 0);
  EXPECT_EQ(player.command("SET_WINDOW_PROPERTIES", "1|2|0|4|"), 0);
  EXPECT_EQ(player.command("SET_WINDOW_PROPERTIES", "1|2|3|4"), 0);
  EXPECT_NE(player.command("SET_WINDOW_PROPERTIES", "1|2|3|4|"), 0);
  EXPECT_NE(hbbSelectDefaultAVComponent(AV_COMPONENT_TYPE_VIDEO), 0);
  EXPECT_NE(hbbSelectDefaultAVComponent(AV_COMPONENT_TYPE_AUDIO), 0);
}

TEST(WordTest, ComesFromAnotherThreadAndOneAtATime) {
  TestPlayer player;
  std::mutex mutex;
  std::set<std::thread::id> threads;
  std::atomic<int> inside{0};
  std::atomic<bool> overlapped{false};
  player.onWord([&](const std::string&) {
    if (++inside > 1) overlapped = true;
    std::lock_guard lock(mutex);
    threads.insert(std::this_thread::get_id());
    --inside;
  });
  player.start(mp4());
  player.command("STOP");
  player.wordsUntil("STOPPED");
  player.onWord(nullptr);

  EXPECT_FALSE(overlapped);
  std::lock_guard lock(mutex);
  EXPECT_EQ(threads.size(), 1U);
  EXPECT_EQ(threads.count(std::this_thread::get_id()), 0U);
}

TEST(WordTest, ReadyToPlayAnswersEachInput) {
  TestPlayer player;
  for (std::size_t i = 1; i <= 3; ++i) {
    player.set("INPUT", mp4());
    EXPECT_EQ(player.wordsUpTo(i), Words(i, "READY_TO_PLAY"));
  }
}

TEST(StopTest, IsAnsweredWhenIdleAndOnceForEach) {
  TestPlayer player;
  for (std::size_t i = 1; i <= 3; ++i) {
    const auto start = Clock::now();
    EXPECT_NE(player.command("STOP"), 0);
    player.wordsUpTo(2 * i, 5);
    EXPECT_LT(msSince(start), 1000);
  }
  EXPECT_EQ(player.words(),
            (Words{"STOPPED", "PLAY_POSITION_CHANGED", "STOPPED", "PLAY_POSITION_CHANGED", "STOPPED", "PLAY_POSITION_CHANGED"}));
}

TEST(StopTest, IsAnsweredAtEachMomentOfAStart) {
  for (int delayMs = 0; delayMs < 100; delayMs += 7) {
    TestPlayer player;
    player.load(mp4());
    player.command("PLAY", "1.00");
    std::this_thread::sleep_for(std::chrono::milliseconds(delayMs));  // the moment is what is tried
    player.command("STOP");
    const Words words = player.wordsUntil("PLAY_POSITION_CHANGED", 5);
    EXPECT_EQ(count(words, "STOPPED"), 1);
    EXPECT_EQ(words.back(), "PLAY_POSITION_CHANGED");
    EXPECT_EQ(player.get("POSITION"), "0");
  }
}

TEST(StopTest, IsAnsweredWhileTheServerIsSilent) {
  TestPlayer player;
  player.load(SampleServer::instance().url("fault/hang/two.mp4"));
  player.command("PLAY", "1.00");
  player.command("STOP");
  player.wordsUntil("PLAY_POSITION_CHANGED", 5);
  EXPECT_EQ(player.words(), (Words{"READY_TO_PLAY", "STOPPED", "PLAY_POSITION_CHANGED"}));
}

TEST(PauseTest, IsAnsweredWithoutASource) {
  TestPlayer player;
  player.command("PAUSE");
  EXPECT_EQ(player.wordsUpTo(2), (Words{"PAUSED", "PLAY_SPEED_CHANGED"}));
}

TEST(PauseTest, BeforePlayOpensTheSourceAndWaitsAtItsStart) {
  TestPlayer player;
  player.load(mp4());

  player.command("PAUSE");

  EXPECT_EQ(player.wordsUntil("PLAY_SPEED_CHANGED"), (Words{"READY_TO_PLAY", "CONNECTED", "PAUSED", "PLAY_SPEED_CHANGED"}));
  EXPECT_EQ(player.get("POSITION"), "0");
  player.forget();
  player.command("PLAY", "1.00");
  EXPECT_EQ(player.wordsUntil("PLAY_SPEED_CHANGED"), (Words{"BUFFER_READY", "PLAYING", "PLAY_SPEED_CHANGED"}));
}

TEST(PauseTest, IsAnsweredWhileTheServerIsSilent) {
  TestPlayer player;
  player.load(SampleServer::instance().url("fault/hang/two.mp4"));
  player.command("PAUSE");
  EXPECT_EQ(player.wordsUntil("PLAY_SPEED_CHANGED", 5), (Words{"READY_TO_PLAY", "PAUSED", "PLAY_SPEED_CHANGED"}));
}

TEST(SeekTest, BeforePlayIsWhereItStarts) {
  TestPlayer player;
  player.load(mp4());
  player.forget();

  player.command("SEEK", "2000.00");

  EXPECT_EQ(player.wordsUpTo(1), (Words{"PLAY_POSITION_CHANGED"}));
  EXPECT_EQ(player.get("POSITION"), "2000");
  player.forget();
  player.command("PLAY", "1.00");
  EXPECT_EQ(player.wordsUntil("PLAY_SPEED_CHANGED"), (Words{"CONNECTED", "BUFFER_READY", "PLAYING", "PLAY_SPEED_CHANGED"}));
  EXPECT_NEAR(player.number("POSITION"), 2000, 400);
}

TEST(SeekTest, ToJustBeforeTheEndOfAFragmentedFileEnds) {
  TestPlayer player;
  player.start(SampleServer::instance().url("frag.mp4"));

  player.command("SEEK", "19970.00");

  player.wordsUntil("FINISHED");
  EXPECT_EQ(player.get("POSITION"), "20000");
}

/// A few pictures into the second segment, of two seconds.
void expectRewindsToItsStart(const std::string& url) {
  TestPlayer player;
  player.start(url);
  player.command("PAUSE");
  player.wordsUntil("PAUSED");
  player.forget();
  player.command("SEEK", "2040.00");
  player.wordsUntil("PLAY_POSITION_CHANGED");
  player.forget();

  player.command("PLAY", "-2.00");

  player.wordsUntil("PLAYING", 5);
  player.wordsUntil("PAUSED");
  EXPECT_EQ(player.get("POSITION"), "0");
}

TEST(RewindTest, FromJustBehindASegmentsBeginning_Dash) { expectRewindsToItsStart(SampleServer::instance().url("dash/av.mpd")); }
TEST(RewindTest, FromJustBehindASegmentsBeginning_Hls) { expectRewindsToItsStart(SampleServer::instance().url("hls/muxed.m3u8")); }

void expectARefusedSeekLeavesItGoingOn(const std::string& url) {
  TestPlayer player;
  player.start(url);
  ASSERT_TRUE(TestPlayer::eventually([&] { return player.number("POSITION") > 500; }));

  player.command("SEEK", "15000.00");

  EXPECT_TRUE(TestPlayer::eventually([&] { return player.number("POSITION") > 6000 && player.number("POSITION") < 14000; }, 20))
      << player.number("POSITION") << testing::PrintToString(player.words());
  EXPECT_EQ(count(player.words(), "ERROR"), 0);
}

TEST(SeekTest, ThatTheServerHasNoRangesForLeavesThePresentationGoingOn_Mp4) {
  expectARefusedSeekLeavesItGoingOn(SampleServer::instance().url("fault/stream/two.mp4"));
}
TEST(SeekTest, ThatTheServerHasNoRangesForLeavesThePresentationGoingOn_TransportStream) {
  expectARefusedSeekLeavesItGoingOn(SampleServer::instance().url("fault/stream/two.ts"));
}

void expectPlays(const std::string& url) {
  TestPlayer player;
  player.start(url);
  EXPECT_TRUE(TestPlayer::eventually([&] { return player.number("POSITION") > 500; })) << testing::PrintToString(player.words());
}

TEST(RangeTest, ServersWithoutThemArePlayedFrom_TransportStream) {
  expectPlays(SampleServer::instance().url("fault/plain/two.ts"));
}
TEST(RangeTest, ServersWithoutThemArePlayedFrom_FragmentedMp4) {
  expectPlays(SampleServer::instance().url("fault/plain/frag.mp4"));
}
TEST(RangeTest, ServersWithoutThemArePlayedFrom_IndexBehindTheMedia) {
  expectPlays(SampleServer::instance().url("fault/plain/tail.mp4"));
}
TEST(RangeTest, ServersWithoutThemArePlayedFrom_IndexFirst) { expectPlays(SampleServer::instance().url("fault/plain/two.mp4")); }

TEST(RangeTest, AreUsedWhereTheServerSaysNothingOfThem) {
  TestPlayer player;
  player.start(SampleServer::instance().url("fault/quiet/two.ts"));

  player.command("SEEK", "15000.00");

  EXPECT_TRUE(TestPlayer::eventually([&] { return player.number("POSITION") >= 14000; }, 10)) << player.number("POSITION");
}

void expectPlaysTwice(const std::string& url) {
  TestPlayer player;
  player.set("LOOP", "2");
  player.start(url);
  player.forget();

  player.wordsUntil("PLAY_POSITION_CHANGED");
  EXPECT_TRUE(TestPlayer::eventually([&] { return player.number("POSITION") > 300 && player.number("POSITION") < 2000; }));
  player.waitFor([](const Words& words) { return words.back() == "PLAY_SPEED_CHANGED"; }, 20);

  EXPECT_EQ(player.words(), (Words{"PLAY_POSITION_CHANGED", "FINISHED", "PLAY_SPEED_CHANGED"}));
}

TEST(LoopTest, BeginsAgainWhereTheServerHasNoRanges_Mp4) {
  expectPlaysTwice(SampleServer::instance().url("fault/stream/short/two.mp4"));
}
TEST(LoopTest, BeginsAgainWhereTheServerHasNoRanges_TransportStream) {
  expectPlaysTwice(SampleServer::instance().url("fault/stream/short/two.ts"));
}

TEST(RewindTest, ThatTheServerHasNoRangesForLeavesTheSpeed) {
  TestPlayer player;
  player.start(SampleServer::instance().url("fault/stream/two.ts"));
  ASSERT_TRUE(TestPlayer::eventually([&] { return player.number("POSITION") > 1000; }));
  player.forget();

  player.command("PLAY", "-2.00");

  EXPECT_EQ(player.wordsUntil("PLAY_SPEED_CHANGED"), (Words{"PLAYING", "PLAY_SPEED_CHANGED"}));
  EXPECT_EQ(player.get("PLAY_SPEED"), "1.00");
  EXPECT_TRUE(TestPlayer::eventually([&] { return player.number("POSITION") > 2500; }));
}

TEST(DurationTest, OfATransportStreamWhoseSizeNobodyKnowsIsNone) {
  TestPlayer player;
  player.start(SampleServer::instance().url("fault/stream/short/two.ts"));
  EXPECT_LT(player.number("POSITION"), 500);
  EXPECT_EQ(player.get("DURATION"), "0");
  player.wordsUntil("FINISHED");
  EXPECT_NEAR(player.number("DURATION"), 4000, 200);
  EXPECT_EQ(player.get("POSITION"), player.get("DURATION"));
}

TEST(LiveTest, ThatDriesUpIsToldAndGoesOnWhereItIsByThen) {
  TestPlayer player;
  player.start(SampleServer::instance().url("live/dip/hls/live.m3u8"));
  player.forget();

  EXPECT_EQ(player.wordsUntil("PLAYING"), (Words{"BUFFERING", "BUFFER_READY", "PLAYING"}));
  const double position = player.number("POSITION");
  EXPECT_GT(position, 9000);
  EXPECT_TRUE(TestPlayer::eventually([&] { return player.number("POSITION") > position + 1500; }));
  EXPECT_EQ(player.words().size(), 3U);
}

TEST(SeekTest, BelowZeroIsZero) {
  TestPlayer player;
  player.start(mp4());
  player.command("SEEK", "-500.00");
  EXPECT_EQ(player.get("POSITION"), "0");
}

TEST(SeekTest, ToWhatIsNoPlaceIsAnswered) {
  TestPlayer player;
  player.start(mp4());
  player.command("PAUSE");
  for (const char* target : {"nan", "-nan", "-inf"}) {
    player.forget();
    EXPECT_NE(player.command("SEEK", target), 0) << target;
    player.wordsUntil("PLAY_POSITION_CHANGED");
    EXPECT_EQ(player.get("POSITION"), "0") << target;
  }
  EXPECT_NE(player.command("SEEK", "inf"), 0);
  player.wordsUntil("PLAY_POSITION_CHANGED");
}

void expectNewestOfFiftySeeksWins(const std::string& url) {
  TestPlayer player;
  player.start(url);
  player.forget();
  int target = 0;
  for (int i = 0; i < 50; ++i) {
    target = 3000 + (i * 7919) % 12000;
    EXPECT_NE(player.command("SEEK", std::to_string(target)), 0);
  }
  EXPECT_EQ(player.number("POSITION"), target);
  player.waitFor([](const Words& words) { return count(words, "PLAY_POSITION_CHANGED") == 50 && words.back() == "PLAYING"; }, 30);
  EXPECT_EQ(count(player.words(), "PLAY_POSITION_CHANGED"), 50);
  EXPECT_EQ(player.words().back(), "PLAYING");
  EXPECT_NEAR(player.number("POSITION"), target, 500);
  EXPECT_TRUE(TestPlayer::eventually([&] { return player.number("POSITION") > target + 300; }));
  EXPECT_EQ(count(player.words(), "ERROR"), 0);
}

TEST(SeekTest, NewestOfFiftyWins_Mp4) { expectNewestOfFiftySeeksWins(SampleServer::instance().url("two.mp4")); }
TEST(SeekTest, NewestOfFiftyWins_TransportStream) { expectNewestOfFiftySeeksWins(SampleServer::instance().url("two.ts")); }
TEST(SeekTest, NewestOfFiftyWins_Dash) { expectNewestOfFiftySeeksWins(SampleServer::instance().url("dash/av.mpd")); }
TEST(SeekTest, NewestOfFiftyWins_Hls) { expectNewestOfFiftySeeksWins(SampleServer::instance().url("hls/master.m3u8")); }

/// A gate that a callback waits at.
class Gate {
 public:
  void wait() {
    std::unique_lock lock(m_mutex);
    m_waiting = true;
    m_changed.notify_all();
    m_changed.wait(lock, [this] { return m_open; });
  }
  bool untilSomebodyWaits() {
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, std::chrono::seconds(20), [this] { return m_waiting; });
  }
  void open() {
    std::lock_guard lock(m_mutex);
    m_open = true;
    m_changed.notify_all();
  }

 private:
  std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_waiting = false;
  bool m_open = false;
};

TEST(CloseTest, DoesNotWaitForACallbackAndNoneFollows) {
  for (const char* const word : {"READY_TO_PLAY", "CONNECTED", "PLAYING"}) {
    TestPlayer player;
    Gate gate;
    player.onWord([&, word](const std::string& said) {
      if (said == word) gate.wait();
    });
    player.set("INPUT", mp4());
    player.command("PLAY", "1.00");
    ASSERT_TRUE(gate.untilSomebodyWaits());

    const auto start = Clock::now();
    player.close();
    EXPECT_LT(msSince(start), 200);

    gate.open();
    EXPECT_NE(mediaLibraryWaitIdle(10000), 0);
    EXPECT_EQ(player.words().back(), word);
    player.onWord(nullptr);
  }
}

TEST(CloseTest, WorksFromInsideACallback) {
  TestPlayer player;
  player.onWord([&](const std::string& word) {
    if (word == "PLAYING") player.close();
  });
  player.set("INPUT", mp4());
  player.command("PLAY", "1.00");
  player.wordsUntil("PLAYING");
  EXPECT_NE(mediaLibraryWaitIdle(10000), 0);
  EXPECT_EQ(player.words().back(), "PLAYING");
  EXPECT_EQ(player.command("PLAY", "1.00"), 0);
}

TEST(CloseTest, LeavesTheVideoPlaneBlack) {
  std::vector<unsigned char> pixels(kMediaPlaneBytes);
  TestPlayer player;
  const unsigned long before = mediaPlaneFrames();
  player.start(mp4());
  ASSERT_TRUE(TestPlayer::eventually([&] { return mediaPlaneFrames() > before; }));
  player.close();
  ASSERT_NE(mediaLibraryWaitIdle(10000), 0);
  ASSERT_NE(mediaPlaneSnapshot(pixels.data(), kMediaPlaneBytes), 0);
  std::size_t lit = 0;
  for (std::size_t i = 0; i < pixels.size(); ++i) lit += i % 4 != 3 && pixels[i] != 0;
  EXPECT_EQ(lit, 0U);
}

TEST(ThreadTest, CommandsAndReadsFromSeveralThreadsReturnAtOnce) {
  TestPlayer player;
  player.start(mp4());
  std::atomic<bool> done{false};
  std::atomic<int> reads{0};
  std::vector<std::thread> readers;
  for (int i = 0; i < 2; ++i) {
    readers.emplace_back([&] {
      while (!done) {
        player.get("POSITION");
        player.get("DURATION");
        player.get("PLAY_SPEED");
        ++reads;
      }
    });
  }
  for (int i = 0; i < 10; ++i) {
    player.command("SEEK", std::to_string(i * 300));
    player.command("PAUSE");
    player.command("PLAY", "1.00");
  }
  player.waitFor([](const Words& words) { return count(words, "PAUSED") == 10 && words.back() == "PLAY_SPEED_CHANGED"; }, 20);
  EXPECT_TRUE(TestPlayer::eventually([&] { return reads > 10; }));
  done = true;
  for (std::thread& reader : readers) reader.join();
  EXPECT_EQ(count(player.words(), "PAUSED"), 10);
}

TEST(ThreadTest, ACommandTakesLessThanAMillisecondInTheMedian) {
  TestPlayer player;
  player.start(mp4());
  std::vector<double> times;
  char buffer[128];
  for (int i = 0; i < 101; ++i) {
    const auto start = Clock::now();
    cmdPlayer(player.handle(), "SEEK", i % 2 == 0 ? "1000.00" : "2000.00");
    getPlayerProperty(player.handle(), "POSITION", buffer, sizeof buffer);
    getPlayerProperty(player.handle(), "DURATION", buffer, sizeof buffer);
    times.push_back(msSince(start));
  }
  std::nth_element(times.begin(), times.begin() + 50, times.end());
  EXPECT_LT(times[50], 1.0);
}

}  // namespace
