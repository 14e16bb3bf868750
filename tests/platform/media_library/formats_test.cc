// SPDX-License-Identifier: Apache-2.0
// What a viewer does, with each format: the order of the words, positions and speeds.
#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "platform/mediamgmnt/media_plane.h"
#include "sample_server.h"
#include "test_player.h"

namespace {

struct Format {
  const char* name;
  const char* path;
  bool hasVideo;
};

void PrintTo(const Format& format, std::ostream* out) { *out << format.name; }

class FormatTest : public testing::TestWithParam<Format> {
 protected:
  std::string url() const { return SampleServer::instance().url(GetParam().path); }
  /// Waits until the position has passed @p position.
  bool reaches(double position) {
    return TestPlayer::eventually([=, this] { return m_player.number("POSITION") >= position; });
  }

  /// The best of three stretches of 250 ms: a busy machine may be late with one of them.
  bool runsAt(double speed) {
    for (int i = 0; i < 3; ++i) {
      const double first = m_player.number("POSITION");
      const auto start = std::chrono::steady_clock::now();
      if (!reaches(first + 250)) return false;
      const double milliseconds = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
      if (std::abs((m_player.number("POSITION") - first) / milliseconds - speed) < 0.35) return true;
    }
    return false;
  }

  TestPlayer m_player;
};

TEST_P(FormatTest, SaysEachWordOfAStartOnce) {
  ASSERT_NE(mediaLibraryWaitIdle(10000), 0);  // no earlier player draws any more
  m_player.load(url());
  const unsigned long framesBefore = mediaPlaneFrames();

  m_player.command("PLAY", "1.00");

  EXPECT_EQ(m_player.wordsUntil("PLAY_SPEED_CHANGED"),
            (Words{"READY_TO_PLAY", "CONNECTED", "BUFFER_READY", "PLAYING", "PLAY_SPEED_CHANGED"}));
  EXPECT_EQ(m_player.get("PLAY_SPEED"), "1.00");
  EXPECT_TRUE(reaches(300));
  // Plain AAC has no duration in it; it is estimated once enough has been received.
  EXPECT_TRUE(TestPlayer::eventually([this] { return m_player.number("DURATION") > 0; }));
  EXPECT_NEAR(m_player.number("DURATION"), 4000, 400);
  EXPECT_EQ(mediaPlaneFrames() > framesBefore, GetParam().hasVideo);
}

TEST_P(FormatTest, PausesAndGoesOnWhereItWas) {
  m_player.start(url());
  ASSERT_TRUE(reaches(300));
  m_player.forget();

  m_player.command("PAUSE");

  EXPECT_EQ(m_player.wordsUntil("PLAY_SPEED_CHANGED"), (Words{"PAUSED", "PLAY_SPEED_CHANGED"}));
  EXPECT_EQ(m_player.get("PLAY_SPEED"), "0.00");
  const double position = m_player.number("POSITION");
  EXPECT_GE(position, 300);
  m_player.forget();

  m_player.command("PLAY", "1.00");

  EXPECT_EQ(m_player.wordsUntil("PLAY_SPEED_CHANGED"), (Words{"PLAYING", "PLAY_SPEED_CHANGED"}));
  EXPECT_LT(m_player.number("POSITION"), position + 1000);
  EXPECT_TRUE(reaches(position + 200));
}

TEST_P(FormatTest, SeeksWhilePlaying) {
  m_player.start(url());
  ASSERT_TRUE(reaches(200));
  m_player.forget();

  m_player.command("SEEK", "2500.00");

  EXPECT_EQ(m_player.get("POSITION"), "2500");
  EXPECT_EQ(m_player.wordsUntil("PLAYING"), (Words{"BUFFERING", "BUFFER_READY", "PLAY_POSITION_CHANGED", "PLAYING"}));
  EXPECT_NEAR(m_player.number("POSITION"), 2500, 400);
  EXPECT_TRUE(reaches(2800));
}

TEST_P(FormatTest, SeeksWhilePaused) {
  m_player.start(url());
  m_player.command("PAUSE");
  m_player.wordsUntil("PAUSED");
  m_player.waitFor([](const Words& words) { return count(words, "PLAY_SPEED_CHANGED") == 2; }, 10);
  m_player.forget();

  m_player.command("SEEK", "1500.75");

  EXPECT_EQ(m_player.wordsUntil("PLAY_POSITION_CHANGED"), (Words{"PLAY_POSITION_CHANGED"}));
  EXPECT_NEAR(m_player.number("POSITION"), 1501, 1);
  m_player.forget();
  m_player.command("PLAY", "1.00");
  EXPECT_EQ(m_player.wordsUntil("PLAY_SPEED_CHANGED"), (Words{"PLAYING", "PLAY_SPEED_CHANGED"}));
  EXPECT_NEAR(m_player.number("POSITION"), 1501, 400);
}

TEST_P(FormatTest, EndsAtItsDuration) {
  m_player.start(url());
  m_player.command("SEEK", "3300.00");
  m_player.wordsUntil("PLAY_POSITION_CHANGED");
  m_player.waitFor([](const Words& words) { return count(words, "PLAYING") == 2; }, 10);
  m_player.forget();

  m_player.waitFor([](const Words& words) { return words.size() >= 2; }, 20);

  EXPECT_EQ(m_player.words(), (Words{"FINISHED", "PLAY_SPEED_CHANGED"}));
  EXPECT_EQ(m_player.get("POSITION"), m_player.get("DURATION"));
  EXPECT_EQ(m_player.get("PLAY_SPEED"), "0.00");
}

TEST_P(FormatTest, EndsAfterASeekToItsEndOrJustBefore) {
  for (const int rest : {0, 10, 30, 100}) {
    m_player.start(url());
    ASSERT_TRUE(reaches(100));
    m_player.forget();

    m_player.command("SEEK", std::to_string(static_cast<int>(m_player.number("DURATION")) - rest) + ".00");
    m_player.waitFor([](const Words& words) { return !words.empty() && words.back() == "PLAY_SPEED_CHANGED"; }, 10);

    EXPECT_EQ(m_player.words(),
              (Words{"BUFFERING", "BUFFER_READY", "PLAY_POSITION_CHANGED", "PLAYING", "FINISHED", "PLAY_SPEED_CHANGED"}))
        << rest << " ms before the end";
    EXPECT_EQ(m_player.get("POSITION"), m_player.get("DURATION"));
    m_player.forget();
  }
}

TEST_P(FormatTest, PlaysFromTheStartAfterAStop) {
  m_player.start(url());
  ASSERT_TRUE(reaches(300));
  m_player.forget();

  m_player.command("STOP");

  EXPECT_EQ(m_player.wordsUntil("PLAY_POSITION_CHANGED"), (Words{"STOPPED", "PLAY_POSITION_CHANGED"}));
  EXPECT_EQ(m_player.get("POSITION"), "0");
  EXPECT_EQ(m_player.get("PLAY_SPEED"), "0.00");
  m_player.forget();

  m_player.command("PLAY", "1.00");

  EXPECT_EQ(m_player.wordsUntil("PLAY_SPEED_CHANGED"), (Words{"BUFFER_READY", "PLAYING", "PLAY_SPEED_CHANGED"}));
  EXPECT_LT(m_player.number("POSITION"), 500);
}

TEST_P(FormatTest, PlaysFastAndSlow) {
  m_player.start(url());
  for (const char* const speed : {"2.00", "0.50"}) {
    m_player.forget();
    m_player.command("SEEK", "1000.00");
    m_player.wordsUntil("PLAYING");
    m_player.forget();

    m_player.command("PLAY", speed);

    const Words words = m_player.wordsUntil("PLAY_SPEED_CHANGED");
    EXPECT_EQ(without(words, "PLAY_POSITION_CHANGED"), (Words{"PLAYING", "PLAY_SPEED_CHANGED"}));
    EXPECT_EQ(m_player.get("PLAY_SPEED"), speed);
    EXPECT_TRUE(runsAt(std::stod(speed)));
  }
}

TEST_P(FormatTest, RewindsToItsStartAndPausesThere) {
  m_player.start(url());
  m_player.command("SEEK", "1200.00");
  m_player.waitFor([](const Words& words) { return count(words, "PLAYING") == 2; }, 10);
  m_player.forget();

  m_player.command("PLAY", "-1.00");

  m_player.wordsUntil("PLAYING");
  m_player.wordsUntil("PAUSED");
  m_player.waitFor([](const Words& words) { return words.back() == "PLAY_SPEED_CHANGED"; }, 10);
  EXPECT_EQ(without(m_player.words(), "PLAY_POSITION_CHANGED"),
            (Words{"PLAYING", "PLAY_SPEED_CHANGED", "PAUSED", "PLAY_SPEED_CHANGED"}));
  EXPECT_EQ(m_player.get("POSITION"), "0");
  EXPECT_EQ(m_player.get("PLAY_SPEED"), "0.00");
  m_player.forget();
  m_player.command("PLAY", "1.00");
  EXPECT_EQ(m_player.wordsUntil("PLAY_SPEED_CHANGED"), (Words{"PLAYING", "PLAY_SPEED_CHANGED"}));
  EXPECT_TRUE(reaches(200));
}

TEST_P(FormatTest, GoesBackwards) {
  m_player.start(url());
  m_player.command("SEEK", "3000.00");
  m_player.waitFor([](const Words& words) { return count(words, "PLAYING") == 2; }, 10);

  m_player.command("PLAY", "-2.00");

  m_player.waitFor([](const Words& words) { return count(words, "PLAYING") == 3; }, 10);
  EXPECT_TRUE(TestPlayer::eventually([this] { return m_player.number("POSITION") < 2000; }));
  EXPECT_EQ(m_player.get("PLAY_SPEED"), "-2.00");
}

TEST_P(FormatTest, StartsAgainAtItsEndWhenLooping) {
  m_player.set("LOOP", "2");
  m_player.start(url());
  m_player.command("SEEK", "3300.00");
  m_player.waitFor([](const Words& words) { return count(words, "PLAYING") == 2; }, 10);
  m_player.forget();

  m_player.wordsUntil("PLAY_POSITION_CHANGED");

  EXPECT_EQ(m_player.words(), (Words{"PLAY_POSITION_CHANGED"}));
  EXPECT_LT(m_player.number("POSITION"), 1000);
  EXPECT_TRUE(reaches(200));
  m_player.wordsUntil("FINISHED");
}

/// A picture that ends long before its sound.
using UnevenTest = FormatTest;

TEST(StillTest, IsShownToItsEnd) {
  TestPlayer player;
  player.start(SampleServer::instance().url("short/stills.mp4"));
  player.forget();

  player.waitFor([](const Words& words) { return !words.empty() && words.back() == "PLAY_SPEED_CHANGED"; }, 20);

  EXPECT_EQ(player.words(), (Words{"FINISHED", "PLAY_SPEED_CHANGED"})) << player.get("LAST_ERR_CODE").value_or("no error");
  EXPECT_NEAR(player.number("DURATION"), 4000, 100);
}

/// Where the bar of the interlaced sample stands on the plane, in steps of a field: -1 while there is none.
int stepOfTheBar(const std::vector<unsigned char>& plane, int row) {
  const unsigned char* const pixels = plane.data() + static_cast<std::ptrdiff_t>(row) * kMediaPlaneStride;
  for (int x = 0; x < kMediaPlaneWidth; ++x) {
    if (pixels[x * 4] > 128) return (x + 8) / 16;
  }
  return -1;
}

TEST(InterlacedTest, ShowsOneFieldAfterTheOther) {
  TestPlayer player;
  player.start(SampleServer::instance().url("short/interlaced.ts"));
  std::vector<unsigned char> plane(kMediaPlaneBytes);
  std::set<int> parities;
  int woven = 0;

  EXPECT_TRUE(TestPlayer::eventually([&] {
    mediaPlaneSnapshot(plane.data(), kMediaPlaneBytes);
    const int step = stepOfTheBar(plane, 300);
    for (int row = 301; row < 400; ++row) woven += stepOfTheBar(plane, row) == step ? 0 : 1;
    if (step > 0) parities.insert(step % 2);
    return player.number("POSITION") > 2000 && parities.size() == 2;
  }));
  EXPECT_EQ(woven, 0);
}

TEST(BareFragmentsTest, AreAsLongAsTheyTurnOutToBe) {
  TestPlayer player;
  player.start(SampleServer::instance().url("short/bare.mp4"));
  player.forget();
  double length = player.number("DURATION");
  int longer = 0;

  while (count(player.words(), "FINISHED") == 0) {
    ASSERT_TRUE(
        TestPlayer::eventually([&] { return player.number("DURATION") > length || count(player.words(), "FINISHED") > 0; }));
    longer += player.number("DURATION") > length ? 1 : 0;
    length = player.number("DURATION");
  }

  EXPECT_GT(longer, 2);
  EXPECT_NEAR(length, 4000, 200);
  EXPECT_EQ(player.get("POSITION"), player.get("DURATION"));
}

TEST_P(UnevenTest, PlaysTheSoundToItsEnd) {
  m_player.start(url());
  m_player.forget();

  EXPECT_TRUE(reaches(2500));
  EXPECT_TRUE(runsAt(1));
  m_player.waitFor([](const Words& words) { return !words.empty() && words.back() == "PLAY_SPEED_CHANGED"; }, 20);

  EXPECT_EQ(m_player.words(), (Words{"FINISHED", "PLAY_SPEED_CHANGED"}));
  EXPECT_EQ(m_player.get("POSITION"), m_player.get("DURATION"));
  EXPECT_NEAR(m_player.number("DURATION"), 4000, 200);
}

/// What nobody has selected goes on after the rest.
using LongerTest = FormatTest;

TEST_P(LongerTest, EndsWithWhatIsPresentedAndPlaysAgain) {
  m_player.start(url());
  m_player.waitFor([](const Words& words) { return count(words, "PLAY_SPEED_CHANGED") == 2; }, 20);
  EXPECT_EQ(m_player.words(), (Words{"READY_TO_PLAY", "CONNECTED", "BUFFER_READY", "PLAYING", "PLAY_SPEED_CHANGED", "FINISHED",
                                     "PLAY_SPEED_CHANGED"}));
  m_player.forget();

  m_player.command("PLAY", "1.00");

  m_player.wordsUntil("PLAY_SPEED_CHANGED");
  EXPECT_TRUE(reaches(200));
  m_player.wordsUntil("FINISHED");
}

TEST_P(UnevenTest, PlaysOnFromWhereThereIsNoPicture) {
  m_player.start(url());
  ASSERT_TRUE(reaches(200));
  m_player.forget();

  m_player.command("SEEK", "1500.00");

  EXPECT_EQ(m_player.wordsUntil("PLAYING"), (Words{"BUFFERING", "BUFFER_READY", "PLAY_POSITION_CHANGED", "PLAYING"}));
  EXPECT_NEAR(m_player.number("POSITION"), 1500, 400);
  EXPECT_TRUE(reaches(2000));
}

/// Long ones, of which only key pictures are shown.
using TrickTest = FormatTest;

TEST_P(TrickTest, RewindsToTheStartFromAnywhere) {
  m_player.start(url());
  for (const char* const place : {"9000.00", "14500.00", "5000.00"}) {
    for (const char* const speed : {"-4.00", "-8.00"}) {
      m_player.forget();
      m_player.command("SEEK", place);
      m_player.command("PLAY", "1.00");
      m_player.wordsUntil("PLAY_SPEED_CHANGED");
      m_player.forget();

      m_player.command("PLAY", speed);

      m_player.waitFor([](const Words& words) { return count(words, "PLAY_SPEED_CHANGED") == 2; }, 30);
      EXPECT_EQ(without(m_player.words(), "PLAY_POSITION_CHANGED"),
                (Words{"PLAYING", "PLAY_SPEED_CHANGED", "PAUSED", "PLAY_SPEED_CHANGED"}))
          << speed << " from " << place;
    }
  }
}

TEST_P(TrickTest, WindsForwardToTheEnd) {
  m_player.load(url());
  for (const char* const speed : {"4.00", "16.00"}) {
    m_player.command("PLAY", "1.00");
    EXPECT_TRUE(reaches(200));
    m_player.forget();

    m_player.command("PLAY", speed);

    m_player.wordsUntil("FINISHED");
    EXPECT_EQ(count(m_player.words(), "ERROR"), 0) << speed;
    EXPECT_EQ(m_player.get("POSITION"), m_player.get("DURATION"));
  }
}

INSTANTIATE_TEST_SUITE_P(Samples, TrickTest,
                         testing::Values(Format{"Mp4", "two.mp4", true}, Format{"TransportStream", "two.ts", true},
                                         Format{"Dash", "dash/av.mpd", true}, Format{"Hls", "hls/master.m3u8", true}),
                         [](const auto& info) { return info.param.name; });

INSTANTIATE_TEST_SUITE_P(Samples, LongerTest,
                         testing::Values(Format{"Sound", "longer.mp4", true}, Format{"Text", "longer-text.mp4", true}),
                         [](const auto& info) { return info.param.name; });

INSTANTIATE_TEST_SUITE_P(Samples, UnevenTest,
                         testing::Values(Format{"Mp4", "short/uneven.mp4", true},
                                         Format{"TransportStream", "short/uneven.ts", true}),
                         [](const auto& info) { return info.param.name; });

INSTANTIATE_TEST_SUITE_P(Samples, FormatTest,
                         testing::Values(Format{"Mp4", "short/two.mp4", true}, Format{"Mp4Tail", "short/tail.mp4", true},
                                         Format{"TransportStream", "short/two.ts", true}, Format{"Mp3", "short/tone.mp3", false},
                                         Format{"Aac", "short/tone.aac", false}, Format{"Dash", "short/dash/av.mpd", true},
                                         Format{"Hls", "short/hls/master.m3u8", true}, Format{"Hevc", "short/hevc.mp4", true},
                                         Format{"HevcTransportStream", "short/hevc.ts", true},
                                         Format{"HevcDash", "short/dash/hevc.mpd", true},
                                         Format{"HevcHls", "short/hls/hevc.m3u8", true}),
                         [](const auto& info) { return info.param.name; });

}  // namespace
