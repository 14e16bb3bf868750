// SPDX-License-Identifier: Apache-2.0
// What a status display is told of a presentation.
#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <string>

#include "platform/mediamgmnt/media_report.h"
#include "sample_server.h"
#include "test_player.h"

namespace {

namespace report = mediamgmnt::report;

/// Each read gives what was seen before: so it is asked until there is an answer that pleases.
bool comesToBe(TestPlayer& player, const char* key, long least, long most) {
  return TestPlayer::eventually([&] {
    const std::optional<std::string> text = player.get(key);
    return text && std::stol(*text) >= least && std::stol(*text) <= most;
  });
}

TEST(ReportTest, AFileTellsWhatIsStored) {
  TestPlayer player;
  player.start(SampleServer::instance().url("two.mp4"));
  EXPECT_TRUE(comesToBe(player, report::kBuffered, 5000, 20000));  // the whole film is soon here
  EXPECT_TRUE(comesToBe(player, report::kPictures, 5, 500));
  EXPECT_TRUE(comesToBe(player, report::kDropped, 0, 500));
  EXPECT_TRUE(comesToBe(player, report::kMediaRate, 10'000, 20'000'000));
  EXPECT_EQ(player.get(report::kLineRate), std::nullopt);
}

TEST(ReportTest, ASlowLineStoresLess) {
  TestPlayer player;
  player.start(SampleServer::instance().url("slow/150k/two.mp4"));
  EXPECT_TRUE(comesToBe(player, report::kBuffered, 1, 15000));
}

/// Three times what the film needs, or less: all of it would take long to come.
class SlowLineTest : public testing::TestWithParam<const char*> {};

TEST_P(SlowLineTest, BeginsWithAFewSecondsInStore) {
  TestPlayer player;
  player.start(SampleServer::instance().url(GetParam()));

  std::optional<std::string> stored;
  ASSERT_TRUE(TestPlayer::eventually([&] { return (stored = player.get(report::kBuffered)).has_value(); }));
  EXPECT_LT(std::stol(*stored), 10000);
}

INSTANTIATE_TEST_SUITE_P(Samples, SlowLineTest,
                         testing::Values("slow/300k/two.ts", "slow/300k/tail.mp4", "slow/300k/frag.mp4", "slow/150k/frag.mp4"));

TEST(ReportTest, AdaptiveSourcesTellOfTheLine) {
  for (const char* const source : {"dash/av.mpd", "hls/master.m3u8"}) {
    TestPlayer player;
    player.start(SampleServer::instance().url(source));
    EXPECT_TRUE(comesToBe(player, report::kLineRate, 10'000, 4'000'000'000)) << source;
    EXPECT_TRUE(comesToBe(player, report::kPictures, 5, 500)) << source;
  }
}

/// What is stored and the position belong to two moments, one read apart.
bool isStoredUpTo(TestPlayer& player, double end) {
  return TestPlayer::eventually([&] {
    const double position = player.number("POSITION");
    const std::optional<std::string> stored = player.get(report::kBuffered);
    return stored && position > 500 && std::abs(std::stod(*stored) + position - end) < 300;
  });
}

TEST(ReportTest, OfAnAdaptiveSourceAllThatHasComeIsStored) {
  for (const char* const source : {"dash/av.mpd", "hls/master.m3u8", "hls/muxed.m3u8", "dash/tracks.mpd"}) {
    TestPlayer player;
    player.start(SampleServer::instance().url(source));
    EXPECT_TRUE(isStoredUpTo(player, 20000)) << source;  // the whole film, which is shorter than what is fetched in advance
  }
}

TEST(ReportTest, WhatAnAdaptiveSourceStoresGrowsWhileItIsFetched) {
  TestPlayer player;
  player.load(SampleServer::instance().url("slow/100k/dash/av.mpd"));
  player.command("PAUSE");
  long before = -1;
  for (const long least : {1, 3000, 6000, 9000}) {
    EXPECT_TRUE(comesToBe(player, report::kBuffered, least, 20100)) << least;
    const long stored = std::stol(player.get(report::kBuffered).value_or("-1"));
    EXPECT_GE(stored, before);  // nothing of it is presented
    before = stored;
  }
}

TEST(ReportTest, WhatAnAdaptiveSourceStoresFallsAsItPlays) {
  TestPlayer player;
  player.start(SampleServer::instance().url("dash/av.mpd"));
  for (const long most : {19000, 18000, 17000}) EXPECT_TRUE(comesToBe(player, report::kBuffered, 10000, most)) << most;
}

TEST(ReportTest, ASeekBeginsTheStoreAnew) {
  TestPlayer player;
  player.start(SampleServer::instance().url("slow/400k/dash/av.mpd"));
  ASSERT_TRUE(comesToBe(player, report::kBuffered, 8000, 20100));
  player.command("SEEK", "15000");
  player.wordsUntil("PLAY_POSITION_CHANGED");
  EXPECT_TRUE(comesToBe(player, report::kBuffered, 0, 5100));  // less is left than was stored
  EXPECT_TRUE(isStoredUpTo(player, 20000));
}

TEST(ReportTest, PlayedBackwardsWhatLiesBeforeIsStored) {
  TestPlayer player;
  player.start(SampleServer::instance().url("dash/av.mpd"));
  player.command("SEEK", "10000");
  player.wordsUntil("PLAY_POSITION_CHANGED");
  player.forget();
  player.command("PLAY", "-1.00");
  player.wordsUntil("PLAY_SPEED_CHANGED");
  EXPECT_TRUE(TestPlayer::eventually([&] {
    const double position = player.number("POSITION");
    const std::optional<std::string> stored = player.get(report::kBuffered);
    return stored && position > 500 && std::abs(std::stod(*stored) - position) < 300;
  }));
}

TEST(ReportTest, OfALiveSourceNoMoreIsStoredThanThereIs) {
  TestPlayer player;
  player.start(SampleServer::instance().url("live/hls/live.m3u8"));
  for (int look = 0; look < 3; ++look) EXPECT_TRUE(comesToBe(player, report::kBuffered, 1, 8000));
}

TEST(ReportTest, WithoutASourceNothingIsTold) {
  TestPlayer player;
  EXPECT_EQ(player.get(report::kBuffered), std::nullopt);
  player.start(SampleServer::instance().url("tone.mp3"));
  EXPECT_EQ(player.get(report::kPictures), std::nullopt);  // there are none in sound
  player.command("STOP");
  player.wordsUntil("STOPPED");
  EXPECT_TRUE(TestPlayer::eventually([&] { return !player.get(report::kBuffered).has_value(); }));
  EXPECT_EQ(player.get("REPORT.NONSENSE"), std::nullopt);
}

TEST(ReportTest, TheWindowIsInForceWhenThePictureIsThere) {
  TestPlayer player;
  EXPECT_EQ(player.get(report::kWindow), std::nullopt);
  player.command("SET_WINDOW_PROPERTIES", "10|20|320|180|");
  EXPECT_EQ(player.get(report::kWindow), "10|20|320|180|");
  player.start(SampleServer::instance().url("two.mp4"));
  EXPECT_EQ(player.get(report::kWindow), "10|20|320|180|");
  player.command("SET_WINDOW_PROPERTIES", "300|20|320|180|");
  EXPECT_TRUE(TestPlayer::eventually([&] { return player.get(report::kWindow) == "300|20|320|180|"; }));
}

}  // namespace
