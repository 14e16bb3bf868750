// SPDX-License-Identifier: Apache-2.0
// What a status display is told of a presentation.
#include <gtest/gtest.h>

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

TEST(ReportTest, AdaptiveSourcesTellOfTheLine) {
  for (const char* const source : {"dash/av.mpd", "hls/master.m3u8"}) {
    TestPlayer player;
    player.start(SampleServer::instance().url(source));
    EXPECT_TRUE(comesToBe(player, report::kLineRate, 10'000, 4'000'000'000)) << source;
    EXPECT_TRUE(comesToBe(player, report::kPictures, 5, 500)) << source;
  }
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
