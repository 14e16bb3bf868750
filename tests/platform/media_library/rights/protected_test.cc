// SPDX-License-Identifier: Apache-2.0
// Protected sources through the ten functions: pictures, and that nothing is seen of what a wrong key makes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/mediamgmnt/media_plane.h"
#include "sample_server.h"
#include "test_player.h"

using ::testing::ElementsAre;

namespace {

using Pixels = std::vector<unsigned char>;

constexpr char kFirstId[] = "00112233445566778899aabbccddee01";
constexpr char kSecondId[] = "00112233-4455-6677-8899-AABBCCDDEE02";
constexpr char kFirstKey[] = "a0a1a2a3a4a5a6a7a8a9aaabacadae01";
constexpr char kSecondKey[] = "a0a1a2a3a4a5a6a7a8a9aaabacadae02";
constexpr char kWrongKey[] = "b0a1a2a3a4a5a6a7a8a9aaabacadae01";

std::string url(const std::string& path) { return SampleServer::instance().url(path); }

std::size_t hashOf(const Pixels& pixels) {
  return std::hash<std::string_view>()({reinterpret_cast<const char*>(pixels.data()), pixels.size()});
}

Pixels plane() {
  Pixels pixels(kMediaPlaneBytes);
  EXPECT_NE(mediaPlaneSnapshot(pixels.data(), kMediaPlaneBytes), 0);
  return pixels;
}

class ProtectedTest : public testing::Test {
 protected:
  ~ProtectedTest() override {
    for (const char* const id : {kFirstId, kSecondId}) mediaAddClearKey(id, nullptr);
  }

  void play(const std::string& path) {
    m_player.load(url(path));
    m_player.command("PLAY", "1.00");
  }

  /// The picture at a place, paused there; once it is there, it stays.
  Pixels pictureAt(const std::string& path, const char* place) {
    m_player.load(url(path));
    m_player.command("PAUSE");
    m_player.wordsUntil("PLAY_SPEED_CHANGED");
    EXPECT_TRUE(TestPlayer::eventually([this] { return m_player.get("DURATION").has_value(); }));
    const unsigned long before = mediaPlaneFrames();
    m_player.command("SEEK", place);
    EXPECT_TRUE(TestPlayer::eventually([before] { return mediaPlaneFrames() > before; }));
    Pixels last = plane();
    EXPECT_TRUE(TestPlayer::eventually([&] {
      const bool same = plane() == last;
      last = plane();
      return same;
    }));
    m_player.forget();
    return last;
  }

  /// Those that are shown from a place to the end, by their hashes. A busy machine leaves out some.
  std::set<std::size_t> picturesFrom(double place, const std::string& path) {
    std::set<std::size_t> pictures;
    unsigned long seen = 0;
    m_player.forget();
    play(path);
    const bool ended = TestPlayer::eventually([&] {
      const bool over = count(m_player.words(), "FINISHED") != 0 || count(m_player.words(), "ERROR") != 0;
      const unsigned long frames = mediaPlaneFrames();
      if (std::exchange(seen, frames) != frames && m_player.number("POSITION") >= place) pictures.insert(hashOf(plane()));
      return over;
    });
    EXPECT_TRUE(ended);
    EXPECT_EQ(count(m_player.words(), "FINISHED"), 1);
    EXPECT_EQ(count(m_player.words(), "ON_DRM_RIGHTS_ERROR"), 0);
    return pictures;
  }

  TestPlayer m_player;
};

class SchemeTest : public ProtectedTest, public testing::WithParamInterface<const char*> {
 protected:
  static std::string path(const std::string& name) { return "rights/" + std::string(GetParam()) + "/" + name; }
};

TEST_P(SchemeTest, ShowsThePicturesOfTheClearSource) {
  ASSERT_NE(mediaAddClearKey(kFirstId, kFirstKey), 0);
  for (const char* const place : {"1000.00", "2520.00"}) {
    const Pixels clear = pictureAt("short/dash/one-size.mpd", place);
    EXPECT_EQ(pictureAt(path("one-size.mpd"), place) == clear, true) << place;
  }
}

TEST_P(SchemeTest, PlaysToTheEnd) {
  ASSERT_NE(mediaAddClearKey(kFirstId, kFirstKey), 0);
  play(path("av.mpd"));

  const Words words = m_player.wordsUntil("FINISHED");

  EXPECT_EQ(count(words, "ON_DRM_RIGHTS_ERROR"), 0);
  EXPECT_EQ(count(words, "PLAYING"), 1);
  EXPECT_EQ(m_player.get("DRM_ERROR_STATE"), std::nullopt);
}

TEST_P(SchemeTest, ShowsNothing_WithAWrongKey) {
  ASSERT_NE(mediaAddClearKey(kFirstId, kWrongKey), 0);
  for (const char* const name : {"av.mpd", "film.mp4"}) {
    const unsigned long frames = mediaPlaneFrames();
    m_player.forget();
    play(path(name));
    m_player.wordsUntil("ERROR", 10);
    EXPECT_EQ(m_player.get("DRM_ERROR_STATE"), "1") << name;
    EXPECT_EQ(mediaPlaneFrames(), frames) << name;
  }
}

TEST_P(SchemeTest, PlaysWithTheKey_AfterItFailedWithout) {
  play(path("av.mpd"));
  EXPECT_THAT(without(m_player.wordsUntil("ERROR"), "CONNECTED"), ElementsAre("READY_TO_PLAY", "ON_DRM_RIGHTS_ERROR", "ERROR"));
  EXPECT_EQ(m_player.get("DRM_ERROR_STATE"), "0");
  EXPECT_EQ(m_player.get("LAST_ERR_CODE"), "2");
  m_player.forget();

  ASSERT_NE(mediaAddClearKey(kFirstId, kFirstKey), 0);
  m_player.command("PLAY", "1.00");

  EXPECT_EQ(count(m_player.wordsUntil("PLAY_SPEED_CHANGED"), "PLAYING"), 1);
}

INSTANTIATE_TEST_SUITE_P(Schemes, SchemeTest, testing::Values("cenc", "cbcs"),
                         [](const auto& info) { return std::string(info.param); });

TEST_F(ProtectedTest, ChangesKeysBetweenPeriods) {
  ASSERT_NE(mediaAddClearKey(kFirstId, kFirstKey), 0);
  ASSERT_NE(mediaAddClearKey(kSecondId, kSecondKey), 0);

  constexpr double kInTheSecond = 2200;
  const std::set<std::size_t> clear = picturesFrom(kInTheSecond, "short/dash/one-size.mpd");
  const std::set<std::size_t> shown = picturesFrom(kInTheSecond, "rights/rotation/one-size.mpd");

  std::vector<std::size_t> same;
  std::set_intersection(clear.begin(), clear.end(), shown.begin(), shown.end(), std::back_inserter(same));
  EXPECT_GE(same.size(), 3U) << "of " << clear.size() << " and " << shown.size();
}

TEST_F(ProtectedTest, TellsWhichKeyIsMissing_WhenPeriodsDiffer) {
  ASSERT_NE(mediaAddClearKey(kFirstId, kFirstKey), 0);
  play("rights/rotation/av.mpd");

  m_player.wordsUntil("ERROR");

  EXPECT_EQ(m_player.get("DRM_ERROR_STATE"), "0");
  EXPECT_EQ(m_player.get("DRM_CONTENT_ID"), "00112233-4455-6677-8899-aabbccddee02");
}

TEST_F(ProtectedTest, StopsWhileALicenceIsWaitedFor) {
  play("rights/cenc/licence-silent.mpd");
  m_player.wordsUntil("CONNECTED");
  m_player.command("STOP");

  EXPECT_EQ(count(m_player.wordsUntil("PLAY_POSITION_CHANGED", 5), "STOPPED"), 1);
  m_player.forget();
  m_player.start(url("short/two.mp4"));
  EXPECT_EQ(count(m_player.words(), "ERROR"), 0);
}

TEST_F(ProtectedTest, ClosesWhileALicenceIsWaitedFor) {
  play("rights/cenc/licence-silent.mpd");
  m_player.wordsUntil("CONNECTED");

  m_player.close();

  EXPECT_NE(mediaLibraryWaitIdle(5000), 0) << "a thread still waits";
}

TEST_F(ProtectedTest, TakesNoTextsThatAreNoKeys) {
  EXPECT_EQ(mediaAddClearKey("12", kFirstKey), 0);
  EXPECT_EQ(mediaAddClearKey(kFirstId, "12"), 0);
  EXPECT_EQ(mediaAddClearKey(nullptr, kFirstKey), 0);
  EXPECT_NE(mediaAddClearKey(kFirstId, ""), 0);
}

}  // namespace
