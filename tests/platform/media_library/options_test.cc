// SPDX-License-Identifier: Apache-2.0
// The options of a source, live sources, and files without a server.
#include <glib.h>
#include <gtest/gtest.h>

#include <atomic>

#include "platform/mediamgmnt/media_plane.h"
#include "sample_server.h"
#include "test_player.h"

namespace {

TEST(OptionTest, AFilePlaysWithoutAServer) {
  TestPlayer player;
  player.start(fileUrl("short/two.mp4"));
  EXPECT_EQ(player.words(), (Words{"READY_TO_PLAY", "CONNECTED", "BUFFER_READY", "PLAYING", "PLAY_SPEED_CHANGED"}));
}

TEST(OptionTest, AManifestWithALongRootTagPlays) {
  TestPlayer player;
  player.start(SampleServer::instance().url("short/dash/long-tag.mpd"));
  EXPECT_EQ(count(player.words(), "PLAYING"), 1);
}

TEST(OptionTest, TheDeclaredTypeHelpsAndDoesNotHurt) {
  for (const char* const type : {"video/mp4", "video/mpeg", "application/dash+xml", "audio/mpeg", "nonsense"}) {
    TestPlayer player;
    player.set("FORCED_FORMAT", type);
    player.start(SampleServer::instance().url("short/two.mp4"));
    EXPECT_EQ(count(player.words(), "PLAYING"), 1) << type;
  }
}

TEST(OptionTest, WithoutDownloadItPlaysAndRewinds) {
  TestPlayer player;
  player.set("CACHED", "false");
  player.start(SampleServer::instance().url("short/two.mp4"));
  player.command("SEEK", "1200.00");
  player.waitFor([](const Words& words) { return count(words, "PLAYING") == 2; }, 10);
  player.command("PLAY", "-1.00");
  player.wordsUntil("PAUSED");
  EXPECT_EQ(player.get("POSITION"), "0");
}

TEST(OptionTest, EndlessLoopDoesNotEnd) {
  TestPlayer player;
  player.set("LOOP", "infinite");
  player.start(SampleServer::instance().url("short/two.mp4"));
  for (int round = 0; round < 3; ++round) {
    player.forget();
    player.command("SEEK", "3500.00");
    ASSERT_TRUE(player.waitFor([](const Words& words) { return count(words, "PLAY_POSITION_CHANGED") == 2; }, 20));
  }
  EXPECT_EQ(count(player.words(), "FINISHED"), 0);
}

TEST(OptionTest, ASlowNetworkDelaysTheStartAndDoesNotBreakIt) {
  TestPlayer player;
  player.start(SampleServer::instance().url("slow/150k/short/two.mp4"));
  EXPECT_EQ(without(player.words(), "BUFFERING"),
            (Words{"READY_TO_PLAY", "CONNECTED", "BUFFER_READY", "PLAYING", "PLAY_SPEED_CHANGED"}));
}

void expectLive(const std::string& path, double shortest, double longest, double least = 2500) {
  TestPlayer player;
  player.start(SampleServer::instance().url(path));
  const double first = player.number("POSITION");
  EXPECT_GE(player.number("DURATION"), shortest);
  EXPECT_LE(player.number("DURATION"), longest);
  EXPECT_TRUE(TestPlayer::eventually([&] { return player.number("POSITION") > first + least; }));
  EXPECT_EQ(count(player.words(), "FINISHED") + count(player.words(), "ERROR"), 0);
}

TEST(LiveTest, DashHasAWindowAndGoesOn) { expectLive("live/dash/live.mpd", 20000, 32000); }
TEST(LiveTest, DashGoesOnFromPeriodToPeriod) { expectLive("live/dash/periods.mpd", 20000, 32000, 10000); }
TEST(LiveTest, HlsHasAWindowAndGoesOn) { expectLive("live/hls/window.m3u8", 6000, 22000); }

/// What GStreamer finds wrong with how it is used.
class Complaints {
 public:
  Complaints() : m_handler(g_log_set_handler("GStreamer", G_LOG_LEVEL_CRITICAL, &Complaints::note, &m_count)) {}
  ~Complaints() { g_log_remove_handler("GStreamer", m_handler); }
  Complaints(const Complaints&) = delete;
  Complaints& operator=(const Complaints&) = delete;

  int count() const { return m_count; }

 private:
  static void note(const char* domain, GLogLevelFlags level, const char* text, gpointer count) {
    ++*static_cast<std::atomic<int>*>(count);
    g_log_default_handler(domain, level, text, nullptr);
  }

  std::atomic<int> m_count{0};
  guint m_handler;
};

/// Of two periods of four seconds each: the second one is fetched while the first one is presented.
class PeriodsTest : public testing::TestWithParam<double> {};

TEST_P(PeriodsTest, AreSoughtForwardsAndBackWhileTheNextOneIsFetched) {
  const Complaints complaints;
  TestPlayer player;
  player.start(SampleServer::instance().url("short/dash/periods.mpd"));
  ASSERT_TRUE(TestPlayer::eventually([&] { return player.number("POSITION") > 100; }));
  for (const double place : {GetParam(), 500.0, GetParam()}) {
    player.command("SEEK", std::to_string(place));
    EXPECT_TRUE(TestPlayer::eventually(
        [&] {
          const double position = player.number("POSITION");
          return position > place + 300 && position < place + 2500;
        },
        8))
        << place << ": at " << player.number("POSITION");
  }
  EXPECT_EQ(count(player.words(), "ERROR"), 0);
  EXPECT_EQ(complaints.count(), 0);
}

INSTANTIATE_TEST_SUITE_P(Places, PeriodsTest, testing::Values(3999.5, 4000, 4500, 6500));

TEST(PeriodRewindTest, GoesOnBehindAnotherTrackThatIsSelected) {
  TestPlayer player;
  player.start(SampleServer::instance().url("short/dash/periods.mpd"));
  ASSERT_TRUE(TestPlayer::eventually([&] { return player.number("POSITION") > 2500; }));
  player.command("PLAY", "-2.00");
  ASSERT_TRUE(TestPlayer::eventually([&] { return player.get("PLAY_SPEED") == "-2.00"; }));
  player.command("SELECT_AUDIO_COMPONENT", "1");
  double lowest = 2500;
  EXPECT_TRUE(TestPlayer::eventually([&] {
    if (player.get("PLAY_SPEED") != "-2.00") return true;
    lowest = player.number("POSITION");
    return lowest < 1000;
  }));
  EXPECT_LT(lowest, 1000);
}

TEST(WindowTest, PlacesThePicture) {
  TestPlayer player;
  player.command("SET_WINDOW_PROPERTIES", "320|180|640|360|");
  player.start(SampleServer::instance().url("short/two.mp4"));
  std::vector<unsigned char> pixels(kMediaPlaneBytes);
  const auto lit = [&pixels](int x, int y) {
    const unsigned char* const pixel = pixels.data() + y * kMediaPlaneStride + x * 4;
    return pixel[0] + pixel[1] + pixel[2] > 0;
  };
  const auto anyLit = [&](int left, int right) {
    for (int y = 200; y < 500; ++y) {
      for (int x = left; x < right; ++x) {
        if (lit(x, y)) return true;
      }
    }
    return false;
  };
  ASSERT_NE(mediaPlaneSnapshot(pixels.data(), kMediaPlaneBytes), 0);
  EXPECT_TRUE(anyLit(330, 950));
  EXPECT_FALSE(anyLit(0, 320));
  EXPECT_FALSE(anyLit(960, 1280));
}

}  // namespace
