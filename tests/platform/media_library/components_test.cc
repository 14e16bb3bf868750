// SPDX-License-Identifier: Apache-2.0
// Components: what a source has, which tracks are presented, and switching between them. What is heard is told from the samples.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "host/mediamgmnt.h"
#include "listener.h"
#include "platform/mediamgmnt/media_plane.h"
#include "platform/mediamgmnt/media_sound.h"
#include "sample_server.h"
#include "test_player.h"

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::StartsWith;

constexpr char kAudioChanged[] = "SELECTED_AUDIO_COMPONENT_CHANGED";
constexpr char kVideoChanged[] = "SELECTED_VIDEO_COMPONENT_CHANGED";
constexpr char kSubtitleChanged[] = "SELECTED_SUBTITLE_COMPONENT_CHANGED";

using Records = std::vector<std::string>;

Records records(const TestPlayer& player, const std::string& kind) {
  Records found;
  const std::optional<std::string> length = player.get((kind + "_COMPONENT.LENGTH").c_str());
  EXPECT_TRUE(length.has_value()) << kind;
  for (int i = 0; length && i < std::stoi(*length); ++i) {
    found.push_back(player.get((kind + "_COMPONENT.ITEM." + std::to_string(i)).c_str()).value_or("refused"));
  }
  return found;
}

enum class Colour { Other, Black, Blue };

Colour middleOfPlane() {
  std::vector<unsigned char> pixels(kMediaPlaneBytes);
  EXPECT_NE(mediaPlaneSnapshot(pixels.data(), static_cast<unsigned>(pixels.size())), 0);
  const unsigned char* const pixel = &pixels[static_cast<std::size_t>(kMediaPlaneStride) * 360 + std::size_t{640} * 4];
  const bool dim = pixel[1] < 40 && pixel[2] < 40;
  if (dim && pixel[0] < 40) return Colour::Black;
  return dim && pixel[0] > 180 ? Colour::Blue : Colour::Other;
}

bool planeShows(Colour colour) {
  return TestPlayer::eventually([=] { return middleOfPlane() == colour; });
}

std::string url(const std::string& path) { return SampleServer::instance().url(path); }

struct Format {
  const char* name;
  const char* path;
  Records video;
  Records audio;
  Records subtitles;
  int described;  ///< the tone of the third sound
};

void PrintTo(const Format& format, std::ostream* out) { *out << format.name; }

const std::vector<Format> kFormats = {
    {"Mp4",
     "tracks.mp4",
     {"0|avc1.4d401e|0|1|0|||0||1.78|", "0|avc1.4d400c|0|2|0|||0||1.78|"},
     {"1|mp4a.40.2|0|3|0|||0|||eng|0|2|", "1|mp4a.40.2|0|4|0|||0|||deu|0|2|", "1|mp4a.40.2|0|5|0|||0|||eng|1|2|"},
     {"2|tx3g|0|6|0|||0|||eng||0|", "2|tx3g|0|7|0|||0|||deu||1|"},
     kDescribed},
    {"Ts",
     "tracks.ts",
     {"0|avc1.4d401e|0|0|256|||0||1.78|", "0|avc1.4d400c|0|0|257|||0||1.78|"},
     {"1|mp4a.40.2|0|0|258|||0|||eng|0|2|", "1|mp4a.40.2|0|0|259|||0|||deu|0|2|", "1|mp4a.40.2|0|0|260|||0|||eng|1|2|"},
     {},
     kDescribed},
    {"Dash",
     "dash/tracks.mpd",
     {"0|avc1.4d401e|0|0|0|||0||1.78|", "0|avc1.4d400c|0|4|0|||0||1.78|"},
     {"1|mp4a.40.2|0|1|0|||0|||eng|0|2|", "1|mp4a.40.2|0|2|0|||0|||deu|0|2|", "1|mp4a.40.2|0|3|0|||0|||eng|1|2|"},
     {"2|stpp|0|5|0|||0|||eng||0|", "2|stpp|0|6|0|||0|||deu||1|"},
     kDescribed},
    {"Hls",
     "hls/tracks.m3u8",
     {"0|avc1.4d401e|0|5|0|||0||1.78|"},
     {"1|mp4a.40.2|0|0|0|||0||English|eng|0|2|", "1|mp4a.40.2|0|1|0|||0||Deutsch|deu|0|2|",
      "1|mp4a.40.2|0|2|0|||0||English, described|eng|1|2|"},
     {"2|wvtt|0|3|0|||0||English|eng||0|", "2|wvtt|0|4|0|||0||Deutsch|deu||1|"},
     kDescribed},
};

class TracksTest : public testing::TestWithParam<Format> {
 protected:
  void start() { m_player.start(url(GetParam().path)); }
  /// Playing, and its first language is heard.
  void startAndHear() {
    start();
    ASSERT_TRUE(m_listener.hears(kEnglish));
    m_player.forget();
  }
  Records active(const std::string& kind) { return records(m_player, "ACTIVE_" + kind); }

  Listener m_listener;
  TestPlayer m_player;
};

INSTANTIATE_TEST_SUITE_P(Every, TracksTest, testing::ValuesIn(kFormats),
                         [](const auto& each) { return std::string(each.param.name); });

TEST_P(TracksTest, ListsItsTracksBeforeItPlays) {
  Records video;
  Records audio;
  Records subtitles;
  m_player.onWord([&](const std::string& word) {
    if (word != "BUFFER_READY") return;
    video = records(m_player, "VIDEO");
    audio = records(m_player, "AUDIO");
    subtitles = records(m_player, "SUBTITLE");
  });

  start();

  EXPECT_EQ(video, GetParam().video);
  EXPECT_EQ(audio, GetParam().audio);
  EXPECT_EQ(subtitles, GetParam().subtitles);
  EXPECT_THAT(active("VIDEO"), ElementsAre(GetParam().video[0]));
  EXPECT_THAT(active("AUDIO"), ElementsAre(GetParam().audio[0]));
  EXPECT_THAT(active("SUBTITLE"), IsEmpty());
  m_player.onWord(nullptr);
}

TEST_P(TracksTest, SwitchesTheLanguageWhilePlaying) {
  startAndHear();

  EXPECT_NE(m_player.command("SELECT_AUDIO_COMPONENT", "1"), 0);

  EXPECT_TRUE(m_listener.hears(kGerman));
  Words words = m_player.wordsUntil(kAudioChanged);
  for (const char* const stall : {"BUFFERING", "BUFFER_READY", "PLAYING"}) words = without(words, stall);  // on a busy machine
  EXPECT_THAT(words, ElementsAre(kAudioChanged));
  EXPECT_THAT(active("AUDIO"), ElementsAre(GetParam().audio[1]));
  EXPECT_THAT(m_listener.heard(), ElementsAre(kEnglish, kGerman));
}

TEST_P(TracksTest, TellsTheDescribedSoundFromThePlainOne) {
  startAndHear();

  EXPECT_NE(m_player.command("SELECT_AUDIO_COMPONENT", "2"), 0);

  EXPECT_TRUE(m_listener.hears(GetParam().described));
  m_player.wordsUntil(kAudioChanged);
  EXPECT_THAT(active("AUDIO"), ElementsAre(GetParam().audio[2]));
}

TEST_P(TracksTest, SwitchesWhilePaused) {
  startAndHear();
  EXPECT_NE(m_player.command("PAUSE"), 0);
  m_player.wordsUntil("PLAY_SPEED_CHANGED");
  m_listener.forget();

  EXPECT_NE(m_player.command("SELECT_AUDIO_COMPONENT", "1"), 0);

  m_player.wordsUntil(kAudioChanged);
  EXPECT_THAT(m_listener.heard(), IsEmpty());
  EXPECT_NE(m_player.command("PLAY", "1.00"), 0);
  EXPECT_TRUE(m_listener.hears(kGerman));
  EXPECT_THAT(m_listener.heard(), ElementsAre(kGerman));
}

TEST_P(TracksTest, TakesAChoiceBeforeTheFirstPlay) {
  m_player.load(url(GetParam().path));
  EXPECT_NE(m_player.command("SELECT_AUDIO_COMPONENT", "1"), 0);

  EXPECT_NE(m_player.command("PLAY", "1.00"), 0);

  m_player.wordsUntil("PLAY_SPEED_CHANGED");
  EXPECT_TRUE(m_listener.hears(kGerman));
  EXPECT_THAT(m_listener.heard(), ElementsAre(kGerman));
  EXPECT_THAT(active("AUDIO"), ElementsAre(GetParam().audio[1]));
}

TEST_P(TracksTest, SwitchesDuringASeek) {
  startAndHear();

  EXPECT_NE(m_player.command("SEEK", "8000.00"), 0);
  EXPECT_NE(m_player.command("SELECT_AUDIO_COMPONENT", "1"), 0);

  m_player.wordsUntil(kAudioChanged);
  EXPECT_TRUE(m_listener.hears(kGerman));
  const auto answers = [this] { return count(m_player.words(), "PLAY_POSITION_CHANGED"); };
  EXPECT_TRUE(TestPlayer::eventually([&] { return answers() == 1; }));
  EXPECT_GE(m_player.number("POSITION"), 8000);
  EXPECT_EQ(answers(), 1);
}

TEST_P(TracksTest, ASeekDuringASwitchIsAnsweredAtItsPlace) {
  startAndHear();

  EXPECT_NE(m_player.command("SELECT_AUDIO_COMPONENT", "1"), 0);
  EXPECT_NE(m_player.command("SEEK", "8000.00"), 0);

  m_player.wordsUntil("PLAY_POSITION_CHANGED");
  EXPECT_GE(m_player.number("POSITION"), 8000);
  EXPECT_TRUE(m_listener.hears(kGerman));
  EXPECT_GE(m_player.number("POSITION"), 8000);
  EXPECT_EQ(count(m_player.words(), "PLAY_POSITION_CHANGED"), 1);
}

TEST_P(TracksTest, ASpeedAskedDuringASwitchAndASeekHoldsAtTheSeeksPlace) {
  for (int delayMs = 0; delayMs < 100; delayMs += 11) {
    TestPlayer player;
    player.start(url(GetParam().path));
    EXPECT_NE(player.command("SELECT_AUDIO_COMPONENT", "1"), 0);
    EXPECT_NE(player.command("SEEK", "8000.00"), 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(delayMs));  // the moment is what is tried

    EXPECT_NE(player.command("PLAY", "2.00"), 0);

    EXPECT_TRUE(TestPlayer::eventually([&] { return count(player.words(), "PLAY_SPEED_CHANGED") == 2; })) << delayMs;
    EXPECT_TRUE(TestPlayer::eventually([&] { return player.number("POSITION") > 8700; })) << delayMs;
    EXPECT_LT(player.number("POSITION"), 10000) << delayMs;
    EXPECT_EQ(player.get("PLAY_SPEED"), "2.00") << delayMs;
  }
}

TEST_P(TracksTest, TheLastOfThreeQuickChoicesHolds) {
  startAndHear();

  for (const char* const index : {"1", "0", "2"}) EXPECT_NE(m_player.command("SELECT_AUDIO_COMPONENT", index), 0);

  EXPECT_TRUE(m_listener.hears(GetParam().described));
  EXPECT_TRUE(TestPlayer::eventually([&] { return active("AUDIO") == Records{GetParam().audio[2]}; }));
  const double place = m_player.number("POSITION");
  EXPECT_TRUE(TestPlayer::eventually([&] { return m_player.number("POSITION") > place + 600; }));
  EXPECT_EQ(m_listener.heard().back(), GetParam().described);
}

TEST_P(TracksTest, UnselectedSoundIsSilentUntilItIsSelectedAgain) {
  startAndHear();

  EXPECT_NE(m_player.command("UNSELECT_COMPONENT_BY_TYPE", "1"), 0);
  EXPECT_TRUE(m_listener.hears(kSilence));
  m_player.wordsUntil(kAudioChanged);
  EXPECT_THAT(active("AUDIO"), IsEmpty());

  m_player.forget();
  EXPECT_NE(m_player.command("SELECT_DEFAULT_COMPONENT", "1"), 0);
  EXPECT_TRUE(m_listener.hears(kEnglish));
  m_player.wordsUntil(kAudioChanged);
  EXPECT_THAT(active("AUDIO"), ElementsAre(GetParam().audio[0]));
}

TEST_P(TracksTest, UnselectedPictureLeavesThePlaneBlackUntilItIsSelectedAgain) {
  startAndHear();

  EXPECT_NE(m_player.command("UNSELECT_VIDEO_COMPONENT", "0"), 0);
  EXPECT_TRUE(planeShows(Colour::Black));
  m_player.wordsUntil(kVideoChanged);
  EXPECT_THAT(active("VIDEO"), IsEmpty());

  EXPECT_NE(m_player.command("SELECT_VIDEO_COMPONENT", "0"), 0);
  EXPECT_TRUE(planeShows(Colour::Other));
  EXPECT_THAT(active("VIDEO"), ElementsAre(GetParam().video[0]));
}

TEST_P(TracksTest, ShowsAPictureAgainWhilePaused) {
  startAndHear();
  EXPECT_NE(m_player.command("PAUSE"), 0);
  m_player.wordsUntil("PLAY_SPEED_CHANGED");
  EXPECT_NE(m_player.command("UNSELECT_COMPONENT_BY_TYPE", "0"), 0);
  ASSERT_TRUE(planeShows(Colour::Black));

  EXPECT_NE(m_player.command("SELECT_DEFAULT_COMPONENT", "0"), 0);

  EXPECT_TRUE(planeShows(Colour::Other));
}

TEST_P(TracksTest, ShowsTheOtherPicture) {
  startAndHear();
  const bool hasOther = GetParam().video.size() > 1;  // the variants of an HLS presentation are one component

  EXPECT_EQ(m_player.command("SELECT_VIDEO_COMPONENT", "1") != 0, hasOther);

  EXPECT_TRUE(planeShows(hasOther ? Colour::Blue : Colour::Other));
  if (hasOther) m_player.wordsUntil(kVideoChanged);
  EXPECT_THAT(active("VIDEO"), ElementsAre(GetParam().video.back()));
}

TEST_P(TracksTest, SubtitlesBecomeActiveWhenTheyAreSelected) {
  startAndHear();
  const bool hasThem = !GetParam().subtitles.empty();

  EXPECT_EQ(m_player.command("SELECT_SUBTITLE_COMPONENT", "1") != 0, hasThem);
  if (!hasThem) return;

  m_player.wordsUntil(kSubtitleChanged);
  EXPECT_THAT(active("SUBTITLE"), ElementsAre(GetParam().subtitles[1]));
  m_player.forget();
  EXPECT_NE(m_player.command("UNSELECT_SUBTITLE_COMPONENT", "1"), 0);
  m_player.wordsUntil(kSubtitleChanged);
  EXPECT_THAT(active("SUBTITLE"), IsEmpty());
}

TEST_P(TracksTest, RefusesWhatIsNotThere) {
  startAndHear();

  for (const char* const index : {"3", "-1", "1x", ""}) EXPECT_EQ(m_player.command("SELECT_AUDIO_COMPONENT", index), 0) << index;
  EXPECT_EQ(m_player.command("UNSELECT_AUDIO_COMPONENT", "1"), 0);  // another one is selected
  for (const char* const type : {"3", "-1", "x", ""}) EXPECT_EQ(m_player.command("SELECT_DEFAULT_COMPONENT", type), 0) << type;
  EXPECT_EQ(m_player.command("SELECT_COMPONENT", "1|mp4a.40.2|0|99|0|||0|||eng|0|2|"), 0);
  EXPECT_EQ(m_player.get("AUDIO_COMPONENT.ITEM.3"), std::nullopt);
  EXPECT_EQ(m_player.get("AUDIO_COMPONENT.ITEM.-1"), std::nullopt);
  EXPECT_EQ(m_player.get("ACTIVE_AUDIO_COMPONENT.ITEM.1"), std::nullopt);
  EXPECT_THAT(m_player.words(), IsEmpty());
}

TEST_P(TracksTest, SelectsAndUnselectsByRecord) {
  startAndHear();

  EXPECT_NE(m_player.command("SELECT_COMPONENT", GetParam().audio[1]), 0);
  EXPECT_TRUE(m_listener.hears(kGerman));

  EXPECT_NE(m_player.command("UNSELECT_COMPONENT", GetParam().audio[1]), 0);
  EXPECT_TRUE(m_listener.hears(kSilence));
}

TEST_P(TracksTest, BeginsWithThePreferredLanguage) {
  ASSERT_NE(mediaPreferLanguages(1, "it, ger;"), 0);
  ASSERT_NE(mediaPreferLanguages(1, "it,ger"), 0);

  start();

  EXPECT_TRUE(m_listener.hears(kGerman));
  EXPECT_THAT(m_listener.heard(), ElementsAre(kGerman));
  EXPECT_EQ(records(m_player, "AUDIO")[0], GetParam().audio[1]);  // what is presented first begins the list
  EXPECT_THAT(active("AUDIO"), ElementsAre(GetParam().audio[1]));
  mediaPreferLanguages(1, "");
}

class WishTest : public testing::Test {
 protected:
  void playGerman(const std::string& path) {
    m_player.start(url(path));
    EXPECT_NE(m_player.command("SELECT_AUDIO_COMPONENT", "1"), 0);
    ASSERT_TRUE(m_listener.hears(kGerman));
  }

  Listener m_listener;
  TestPlayer m_player;
};

TEST_F(WishTest, HoldsInTheSecondPeriodWhoseTracksAreOthers) {
  playGerman("short/dash/periods.mpd");
  const Records before = records(m_player, "AUDIO");

  m_player.wordsUntil("FINISHED");

  EXPECT_EQ(count(m_player.words(), kAudioChanged), 1);  // German goes on: nothing changes for the viewer
  EXPECT_EQ(m_listener.heard().back(), kGerman);
  const Records after = records(m_player, "AUDIO");
  EXPECT_THAT(before, ElementsAre("1|mp4a.40.2|0|1|0|||0|||eng|0|2|", "1|mp4a.40.2|0|2|0|||0|||deu|0|2|"));
  EXPECT_THAT(after, ElementsAre("1|mp4a.40.2|0|2|0|2||0|||deu|0|2|", "1|mp4a.40.2|0|3|0|2||0|||fra|0|2|"));
}

TEST_F(WishTest, SaysThatAnotherPeriodSpeaksAnotherLanguage) {
  m_player.start(url("short/dash/periods.mpd"));

  m_player.wordsUntil("FINISHED");

  EXPECT_THAT(m_listener.heard(), ElementsAre(kEnglish, kGerman));
  EXPECT_EQ(count(m_player.words(), kAudioChanged), 1);
}

TEST_F(WishTest, CanBeChangedInTheSecondPeriod) {
  m_player.start(url("short/dash/periods.mpd"));
  ASSERT_TRUE(m_listener.hears(kGerman));

  EXPECT_NE(m_player.command("SELECT_AUDIO_COMPONENT", "1"), 0);

  EXPECT_TRUE(m_listener.hears(kDescribed));
}

/// A switch just before another period begins opens the source once more.
TEST_F(WishTest, ChangesALivePresentationInItsPlaceWhateverPeriodComesNext) {
  m_player.start(url("live/dash/periods.mpd"));
  for (int i = 1; i <= 6; ++i) {
    const double before = m_player.number("POSITION");
    const auto begin = std::chrono::steady_clock::now();
    m_player.command("SELECT_AUDIO_COMPONENT", i % 2 == 1 ? "1" : "0");
    ASSERT_TRUE(m_listener.hears(i % 2 == 1 ? kGerman : kEnglish)) << i;
    const double passed = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
    EXPECT_NEAR(m_player.number("POSITION") - before, passed, 3000) << i;
    std::this_thread::sleep_for(std::chrono::milliseconds(700));  // to elsewhere in a period
  }
  EXPECT_EQ(count(m_player.words(), "ERROR"), 0);
}

TEST_F(WishTest, HoldsWhenTheSourceIsPresentedOnceMore) {
  EXPECT_NE(m_player.set("LOOP", "2"), 0);
  playGerman("short/tracks.mp4");

  m_listener.forget();
  m_player.wordsUntil("FINISHED");

  EXPECT_THAT(m_listener.heard(), ElementsAre(kGerman));
}

TEST_F(WishTest, HoldsForAReplayAfterTheEnd) {
  playGerman("short/two.mp4");
  m_player.wordsUntil("FINISHED");
  m_player.forget();
  m_listener.forget();

  EXPECT_NE(m_player.command("PLAY", "1.00"), 0);

  m_player.wordsUntil("PLAY_SPEED_CHANGED");
  EXPECT_TRUE(m_listener.hears(kGerman));
  EXPECT_THAT(m_listener.heard(), ElementsAre(kGerman));
  EXPECT_THAT(records(m_player, "AUDIO"), ElementsAre("1|mp4a.40.2|0|2|0|||0|||eng|0|2|", "1|mp4a.40.2|0|3|0|||0|||deu|0|2|"));
}

TEST_F(WishTest, EndsWithTheProcessWideDefaultAtTheNextStart) {
  playGerman("short/two.mp4");
  EXPECT_NE(m_player.command("STOP"), 0);
  m_player.wordsUntil("STOPPED");
  EXPECT_NE(hbbSelectDefaultAVComponent(AV_COMPONENT_TYPE_VIDEO), 0);
  EXPECT_NE(hbbSelectDefaultAVComponent(AV_COMPONENT_TYPE_AUDIO), 0);
  m_listener.forget();

  EXPECT_NE(m_player.command("PLAY", "1.00"), 0);

  EXPECT_TRUE(m_listener.hears(kEnglish));
  EXPECT_THAT(m_listener.heard(), ElementsAre(kEnglish));
}

TEST_F(WishTest, EndsWithTheSource) {
  playGerman("short/two.mp4");
  m_player.forget();
  m_listener.forget();

  m_player.start(url("short/two.ts"));

  EXPECT_TRUE(m_listener.hears(kEnglish));
}

TEST_F(WishTest, OutlivesAStopWithoutTheDefault) {
  playGerman("short/two.mp4");
  EXPECT_NE(m_player.command("STOP"), 0);
  m_player.wordsUntil("STOPPED");
  EXPECT_EQ(m_player.get("AUDIO_COMPONENT.LENGTH"), "2");  // it can be chosen from before the next play
  EXPECT_EQ(m_player.get("ACTIVE_AUDIO_COMPONENT.LENGTH"), "0");
  m_listener.forget();

  EXPECT_NE(m_player.command("PLAY", "1.00"), 0);

  EXPECT_TRUE(m_listener.hears(kGerman));
  EXPECT_THAT(m_listener.heard(), ElementsAre(kGerman));
}

TEST(HlsGroupsTest, TellTwoOfOneLanguageApart) {
  TestPlayer player;
  player.start(url("short/hls/groups.m3u8"));

  EXPECT_THAT(records(player, "AUDIO"),
              ElementsAre("1|mp4a.40.2|0|0|0|||0||English|eng|0|2|", "1|mp4a.40.2|0|1|0|||0||Deutsch|deu|0|2|",
                          "1|mp4a.40.2|0|2|0|||0||Deutsch, beschrieben|deu|0|2|"));
  EXPECT_THAT(records(player, "SUBTITLE"),
              ElementsAre("2|wvtt|0|3|0|||0||Deutsch|deu||0|", "2|wvtt|0|4|0|||0||Deutsch, leicht|deu||0|"));
}

TEST(HlsGroupsTest, WhatThePlayingVariantsGroupLacksCanBeSelected) {
  Listener listener;
  TestPlayer player;
  player.start(url("hls/groups.m3u8"));
  ASSERT_TRUE(listener.hears(kEnglish));

  EXPECT_NE(player.command("SELECT_AUDIO_COMPONENT", "1"), 0);
  EXPECT_TRUE(listener.hears(kGerman));
  EXPECT_NE(player.command("SELECT_AUDIO_COMPONENT", "2"), 0);
  EXPECT_TRUE(listener.hears(kDescribed));
  player.forget();
  EXPECT_NE(player.command("SELECT_SUBTITLE_COMPONENT", "1"), 0);
  player.wordsUntil(kSubtitleChanged);
  EXPECT_THAT(listener.heard(), ElementsAre(kEnglish, kGerman, kDescribed));
}

/// HEVC with English as E-AC-3 and German as AC-3.
class SurroundTest : public testing::TestWithParam<const char*> {};

TEST_P(SurroundTest, NamesItsEncodingsAndIsHeardInBoth) {
  Listener listener;
  TestPlayer player;
  player.start(url(GetParam()));

  EXPECT_THAT(records(player, "VIDEO"), ElementsAre(StartsWith("0|hvc1")));
  EXPECT_THAT(records(player, "AUDIO"), ElementsAre(AllOf(StartsWith("1|ec-3|0|"), EndsWith("|eng|0|6|")),
                                                    AllOf(StartsWith("1|ac-3|0|"), EndsWith("|deu|0|2|"))));
  EXPECT_TRUE(listener.hears(kEnglish));
  EXPECT_NE(player.command("SELECT_AUDIO_COMPONENT", "1"), 0);
  EXPECT_TRUE(listener.hears(kGerman));
}

INSTANTIATE_TEST_SUITE_P(Samples, SurroundTest, testing::Values("hevc.mp4", "hevc.ts", "dash/hevc.mpd", "hls/hevc.m3u8"));

TEST(HlsGroupsTest, AnEncodingThatIsNotSaidIsKnownOnceItIsHeard) {
  Listener listener;
  TestPlayer player;
  player.start(url("hls/hevc-mixed.m3u8"));
  ASSERT_TRUE(listener.hears(kEnglish));
  EXPECT_THAT(records(player, "AUDIO"), ElementsAre(StartsWith("1|ec-3|"), StartsWith("1||")));

  EXPECT_NE(player.command("SELECT_AUDIO_COMPONENT", "1"), 0);

  EXPECT_TRUE(listener.hears(kGerman));
  EXPECT_TRUE(TestPlayer::eventually([&] { return records(player, "AUDIO").at(1).substr(0, 7) == "1|ac-3|"; }));
}

TEST(ComponentsTest, APresentationWithoutSoundHasNone) {
  TestPlayer player;
  player.start(url("short/silent.mp4"));

  EXPECT_THAT(records(player, "AUDIO"), IsEmpty());
  EXPECT_THAT(records(player, "ACTIVE_AUDIO"), IsEmpty());
  EXPECT_THAT(records(player, "ACTIVE_VIDEO"), ElementsAre("0|avc1.4d401e|0|1|0|||0||1.78|"));
  EXPECT_EQ(player.command("SELECT_AUDIO_COMPONENT", "0"), 0);
  player.wordsUntil("FINISHED");
}

TEST(ComponentsTest, ASoundWithoutPictureHasNoVideo) {
  TestPlayer player;
  player.start(url("short/tone.mp3"));

  EXPECT_THAT(records(player, "VIDEO"), IsEmpty());
  EXPECT_THAT(records(player, "AUDIO"), testing::SizeIs(1));
  EXPECT_THAT(records(player, "AUDIO")[0], testing::StartsWith("1|mp3|0|"));
}

TEST(ComponentsTest, TimedTextOfAFileIsNamedByItsFormat) {
  for (const char* const path : {"text.mp4", "text-frag.mp4"}) {
    TestPlayer player;
    player.start(url(path));

    EXPECT_THAT(records(player, "SUBTITLE"), ElementsAre(testing::StartsWith("2|stpp|"), testing::StartsWith("2|stpp|"))) << path;
  }
}

TEST(ComponentsTest, NothingIsListedBeforeTheFirstPlay) {
  TestPlayer player;
  player.load(url("short/two.mp4"));

  for (const char* const kind : {"VIDEO", "AUDIO", "SUBTITLE", "ACTIVE_VIDEO", "ACTIVE_AUDIO", "ACTIVE_SUBTITLE"}) {
    EXPECT_THAT(records(player, kind), IsEmpty()) << kind;
  }
}

TEST(ComponentsTest, AnswersWhileTheSourceIsSilent) {
  TestPlayer player;
  player.load(url("fault/hang/two.mp4"));
  EXPECT_NE(player.command("PLAY", "1.00"), 0);

  EXPECT_EQ(player.get("AUDIO_COMPONENT.LENGTH"), "0");
  EXPECT_EQ(player.get("AUDIO_COMPONENT.ITEM.0"), std::nullopt);
  EXPECT_NE(player.command("SELECT_DEFAULT_COMPONENT", "1"), 0);
}

TEST(ComponentsTest, PreferredLanguagesAreOfSoundAndSubtitlesOnly) {
  EXPECT_EQ(mediaPreferLanguages(0, "deu"), 0);
  EXPECT_EQ(mediaPreferLanguages(3, "deu"), 0);
  EXPECT_EQ(mediaPreferLanguages(1, nullptr), 0);
  EXPECT_NE(mediaPreferLanguages(2, ""), 0);
}

}  // namespace
