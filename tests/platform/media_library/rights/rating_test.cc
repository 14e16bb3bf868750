// SPDX-License-Identifier: Apache-2.0
// Rated sources: what is said of them, and that nothing is seen of what is blocked.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "listener.h"
#include "platform/mediamgmnt/media_plane.h"
#include "sample_server.h"
#include "test_player.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

std::vector<unsigned char> plane() {
  std::vector<unsigned char> pixels(kMediaPlaneBytes);
  EXPECT_NE(mediaPlaneSnapshot(pixels.data(), kMediaPlaneBytes), 0);
  return pixels;
}

/// Of every pixel, whatever its unused byte.
bool isBlack(const std::vector<unsigned char>& pixels) {
  for (std::size_t i = 0; i < pixels.size(); ++i) {
    if (i % 4 != 3 && pixels[i] != 0) return false;
  }
  return true;
}

class RatingTest : public testing::Test {
 protected:
  ~RatingTest() override { mediaSetParentalLimit(-1, nullptr); }

  void play(const std::string& path) {
    m_player.load(SampleServer::instance().url(path));
    m_player.command("PLAY", "1.00");
  }

  TestPlayer m_player;
};

TEST_F(RatingTest, SaysTheRatingsBeforeItPlays) {
  play("rights/rated-16.ts");

  EXPECT_THAT(without(m_player.wordsUntil("PLAY_SPEED_CHANGED"), "CONNECTED"),
              ElementsAre("READY_TO_PLAY", "ON_PARENTAL_RATING_CHANGE", "BUFFER_READY", "PLAYING", "PLAY_SPEED_CHANGED"));
  EXPECT_EQ(m_player.get("PARENTAL_RATING.LENGTH"), "1");
  EXPECT_EQ(m_player.get("PARENTAL_RATING.ITEM.0"), "16|dvb-si|13|0|DE|");
  EXPECT_EQ(m_player.get("PARENTAL_BLOCKED"), "0");
  EXPECT_EQ(m_player.get("PARENTAL_DRM_CONTENT_ID"), "");
}

TEST_F(RatingTest, ShowsNothingOfWhatIsBlocked) {
  ASSERT_NE(mediaSetParentalLimit(12, ""), 0);
  const unsigned long frames = mediaPlaneFrames();

  play("rights/rated-16.ts");
  m_player.wordsUntil("PLAY_SPEED_CHANGED");

  EXPECT_THAT(without(m_player.words(), "CONNECTED"),
              ElementsAre("READY_TO_PLAY", "ON_PARENTAL_RATING_CHANGE", "PAUSED", "PLAY_SPEED_CHANGED"));
  EXPECT_EQ(m_player.get("PARENTAL_BLOCKED"), "1");
  EXPECT_EQ(m_player.get("PLAY_SPEED"), "0.00");
  EXPECT_TRUE(TestPlayer::eventually([this] { return m_player.get("DURATION").has_value(); })) << "it is open all the same";
  m_player.command("SET_WINDOW_PROPERTIES", "0|0|1280|720|");
  m_player.command("SEEK", "1000.00");
  m_player.wordsUntil("PLAY_POSITION_CHANGED");
  EXPECT_EQ(mediaPlaneFrames(), frames);
  EXPECT_TRUE(isBlack(plane()));

  m_player.forget();
  ASSERT_NE(mediaSetParentalLimit(16, ""), 0);
  EXPECT_THAT(m_player.wordsUntil("ON_PARENTAL_RATING_CHANGE"), ElementsAre("ON_PARENTAL_RATING_CHANGE"));
  EXPECT_EQ(m_player.get("PARENTAL_BLOCKED"), "0");
  m_player.command("PLAY", "1.00");
  m_player.wordsUntil("PLAYING");
  EXPECT_TRUE(TestPlayer::eventually([] { return !isBlack(plane()); }));
}

TEST_F(RatingTest, IsSilent_WhileBlocked) {
  const Listener listener;
  ASSERT_NE(mediaSetParentalLimit(12, ""), 0);
  play("rights/rated-16.ts");
  m_player.wordsUntil("PLAY_SPEED_CHANGED");
  m_player.forget();
  m_player.command("SEEK", "500.00");
  m_player.command("PLAY", "1.00");
  m_player.wordsUntil("PLAY_SPEED_CHANGED");
  m_player.wordsUntil("PLAY_POSITION_CHANGED");
  EXPECT_THAT(listener.heard(), IsEmpty());

  ASSERT_NE(mediaSetParentalLimit(16, ""), 0);
  m_player.command("PLAY", "1.00");
  EXPECT_TRUE(listener.hears(kEnglish));
  m_player.forget();
  ASSERT_NE(mediaSetParentalLimit(12, ""), 0);
  m_player.wordsUntil("PAUSED");

  EXPECT_THAT(listener.heard(), ElementsAre(kEnglish));
}

TEST_F(RatingTest, CoversWhatPlays_WhenTheProgrammeChanges) {
  ASSERT_NE(mediaSetParentalLimit(12, ""), 0);
  play("rights/rated-later.ts");
  m_player.wordsUntil("PLAYING");
  EXPECT_TRUE(TestPlayer::eventually([] { return !isBlack(plane()); }));

  m_player.wordsUntil("PAUSED");

  EXPECT_EQ(count(m_player.words(), "ON_PARENTAL_RATING_CHANGE"), 2);
  EXPECT_EQ(m_player.get("PARENTAL_RATING.ITEM.0"), "18|dvb-si|15|0|DE|");
  EXPECT_TRUE(isBlack(plane()));
}

TEST_F(RatingTest, CoversThePictureAtOnce_WhenAnotherPeriodBegins) {
  ASSERT_NE(mediaSetParentalLimit(12, ""), 0);
  play("rights/rated-later.mpd");
  m_player.wordsUntil("PLAYING");
  EXPECT_EQ(m_player.get("PARENTAL_RATING.ITEM.0"), "6|dvb-si|3|0||");

  m_player.wordsUntil("PAUSED");

  EXPECT_EQ(count(m_player.words(), "ON_PARENTAL_RATING_CHANGE"), 2);
  EXPECT_EQ(m_player.get("PARENTAL_RATING.ITEM.0"), "18|dvb-si|15|0||");
  EXPECT_GE(m_player.number("POSITION"), 1900) << "not when it was fetched, long before";
  EXPECT_LE(m_player.number("POSITION"), 2600);
  EXPECT_TRUE(isBlack(plane()));
}

TEST_F(RatingTest, CoversWhatPlays_WhenTheLimitIsLowered) {
  m_player.start(SampleServer::instance().url("rights/rated-16.ts"));
  m_player.forget();

  ASSERT_NE(mediaSetParentalLimit(6, "DE"), 0);

  EXPECT_THAT(m_player.wordsUntil("PLAY_SPEED_CHANGED"), ElementsAre("ON_PARENTAL_RATING_CHANGE", "PAUSED", "PLAY_SPEED_CHANGED"));
  EXPECT_TRUE(isBlack(plane()));
}

TEST_F(RatingTest, AnswersEveryPlayWithPaused_WhileBlocked) {
  ASSERT_NE(mediaSetParentalLimit(12, ""), 0);
  play("rights/rated-16.ts");
  m_player.wordsUntil("CONNECTED");
  m_player.wordsUntil("PLAY_SPEED_CHANGED");

  for (int i = 0; i < 3; ++i) {
    m_player.forget();
    m_player.command("PLAY", "2.00");
    EXPECT_THAT(m_player.wordsUntil("PLAY_SPEED_CHANGED"), ElementsAre("PAUSED", "PLAY_SPEED_CHANGED"));
  }
}

TEST_F(RatingTest, ForgetsTheBlockWithTheSource) {
  ASSERT_NE(mediaSetParentalLimit(12, ""), 0);
  play("rights/rated-16.ts");
  m_player.wordsUntil("PLAY_SPEED_CHANGED");
  m_player.forget();

  m_player.start(SampleServer::instance().url("short/two.mp4"));

  EXPECT_EQ(m_player.get("PARENTAL_RATING.LENGTH"), "0");
  EXPECT_TRUE(TestPlayer::eventually([] { return !isBlack(plane()); }));
}

TEST_F(RatingTest, KeepsTheBlockThroughAStop) {
  ASSERT_NE(mediaSetParentalLimit(12, ""), 0);
  play("rights/rated-16.ts");
  m_player.wordsUntil("PLAY_SPEED_CHANGED");
  m_player.command("STOP");
  m_player.wordsUntil("PLAY_POSITION_CHANGED");
  m_player.forget();

  m_player.command("PLAY", "1.00");

  EXPECT_EQ(count(without(m_player.wordsUntil("PLAY_SPEED_CHANGED"), "CONNECTED"), "PAUSED"), 1);
  EXPECT_EQ(count(m_player.words(), "PLAYING"), 0);
}

TEST_F(RatingTest, TakesNoCountryThatIsNone) {
  EXPECT_EQ(mediaSetParentalLimit(12, "Germany"), 0);
  EXPECT_EQ(mediaSetParentalLimit(12, "d"), 0);
  EXPECT_NE(mediaSetParentalLimit(12, "DEU"), 0);
  EXPECT_NE(mediaSetParentalLimit(12, nullptr), 0);
}

}  // namespace
