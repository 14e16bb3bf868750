// SPDX-License-Identifier: Apache-2.0
// The player's component operations: one call of the media library each, on the caller's thread.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "tests/unit/components/record_text.h"
#include "tests/unit/player/player_test_base.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class PlayerSelectionTest : public PlayerTestBase {};

TEST_F(PlayerSelectionTest, SelectsByIndex) {
  EXPECT_TRUE(player->selectActiveComponentByIndex(0, 3));
  EXPECT_TRUE(player->selectActiveComponentByIndex(1, 0));
  EXPECT_TRUE(player->selectActiveComponentByIndex(2, -7));
  EXPECT_TRUE(player->unselectActiveComponentByIndex(0, 2147483647));
  EXPECT_TRUE(player->unselectActiveComponentByIndex(1, 1));
  EXPECT_TRUE(player->unselectActiveComponentByIndex(2, 2));

  EXPECT_THAT(library().actions(),
              ElementsAre("SELECT_VIDEO_COMPONENT 3", "SELECT_AUDIO_COMPONENT 0", "SELECT_SUBTITLE_COMPONENT -7",
                          "UNSELECT_VIDEO_COMPONENT 2147483647", "UNSELECT_AUDIO_COMPONENT 1", "UNSELECT_SUBTITLE_COMPONENT 2"));
  for (const auto& call : library().calls()) EXPECT_EQ(call.thread, std::this_thread::get_id());
}

TEST_F(PlayerSelectionTest, RefusesUnknownTypes_WithoutSending) {
  for (const int type : {-1, 3, 100}) {
    EXPECT_FALSE(player->selectActiveComponentByIndex(type, 0));
    EXPECT_FALSE(player->unselectActiveComponentByIndex(type, 0));
  }
  for (const int type : {-1, 11}) {
    EXPECT_FALSE(player->selectDefaultComponent(type));
    EXPECT_FALSE(player->unselectDefaultComponent(type));
  }

  EXPECT_THAT(library().actions(), IsEmpty());
}

TEST_F(PlayerSelectionTest, SelectsDefaultsOfTypesUpToTen) {
  EXPECT_TRUE(player->selectDefaultComponent(0));
  EXPECT_TRUE(player->selectDefaultComponent(10));
  EXPECT_TRUE(player->unselectDefaultComponent(0));
  EXPECT_TRUE(player->unselectDefaultComponent(10));

  EXPECT_THAT(library().actions(), ElementsAre("SELECT_DEFAULT_COMPONENT 0", "SELECT_DEFAULT_COMPONENT 10",
                                               "UNSELECT_COMPONENT_BY_TYPE 0", "UNSELECT_COMPONENT_BY_TYPE 10"));
}

TEST_F(PlayerSelectionTest, SelectsByRecord) {
  EXPECT_TRUE(player->selectActiveComponent(readVideo(videoText()).get()));
  EXPECT_TRUE(player->selectActiveComponent(readAudio(audioText()).get()));
  EXPECT_TRUE(player->selectActiveComponent(readSubtitle(subtitleText()).get()));
  EXPECT_TRUE(player->unselectActiveComponent(readVideo(videoText()).get()));
  EXPECT_TRUE(player->unselectActiveComponent(readAudio(audioText()).get()));
  EXPECT_TRUE(player->unselectActiveComponent(readSubtitle(subtitleText()).get()));

  const std::string video = "0|codec|1|5|256|one|two|1|three|1.78|";
  const std::string audio = "1|codec|1|5|256|one|two|1|three|main|deu|1|6|";
  const std::string subtitle = "2|codec|1|5|256|one|two|1|three|first|eng|1|";
  EXPECT_THAT(library().actions(),
              ElementsAre("SELECT_COMPONENT " + video, "SELECT_COMPONENT " + audio, "SELECT_COMPONENT " + subtitle,
                          "UNSELECT_COMPONENT " + video, "UNSELECT_COMPONENT " + audio, "UNSELECT_COMPONENT " + subtitle));
}

TEST_F(PlayerSelectionTest, SendsNothingForANullRecord) {
  EXPECT_FALSE(player->selectActiveComponent(static_cast<AVVideoComponent*>(nullptr)));
  EXPECT_FALSE(player->unselectActiveComponent(static_cast<AVAudioComponent*>(nullptr)));

  EXPECT_THAT(library().actions(), IsEmpty());
}

TEST_F(PlayerSelectionTest, ReportsTheLibrarysRefusal) {
  for (const char* command : {"SELECT_AUDIO_COMPONENT", "UNSELECT_AUDIO_COMPONENT", "SELECT_DEFAULT_COMPONENT",
                              "UNSELECT_COMPONENT_BY_TYPE", "SELECT_COMPONENT", "UNSELECT_COMPONENT"}) {
    library().setCommandResult(command, 0);
  }

  EXPECT_FALSE(player->selectActiveComponentByIndex(1, 0));
  EXPECT_FALSE(player->unselectActiveComponentByIndex(1, 0));
  EXPECT_FALSE(player->selectDefaultComponent(1));
  EXPECT_FALSE(player->unselectDefaultComponent(1));
  EXPECT_FALSE(player->selectActiveComponent(readAudio(audioText()).get()));
  EXPECT_FALSE(player->unselectActiveComponent(readAudio(audioText()).get()));
}

class PlayerComponentQueryTest : public PlayerTestBase {};

TEST_F(PlayerComponentQueryTest, ReadsLengths) {
  library().setProperty("AUDIO_COMPONENT.LENGTH", "1");
  library().setProperty("ACTIVE_AUDIO_COMPONENT.LENGTH", "2");
  library().setProperty("VIDEO_COMPONENT.LENGTH", "3");
  library().setProperty("ACTIVE_VIDEO_COMPONENT.LENGTH", "4");
  library().setProperty("SUBTITLE_COMPONENT.LENGTH", "5");
  library().setProperty("ACTIVE_SUBTITLE_COMPONENT.LENGTH", "6");
  int length = 0;

  EXPECT_TRUE(player->getAudioComponentLength(false, length));
  EXPECT_EQ(length, 1);
  EXPECT_TRUE(player->getAudioComponentLength(true, length));
  EXPECT_EQ(length, 2);
  EXPECT_TRUE(player->getVideoComponentLength(false, length));
  EXPECT_EQ(length, 3);
  EXPECT_TRUE(player->getVideoComponentLength(true, length));
  EXPECT_EQ(length, 4);
  EXPECT_TRUE(player->getSubtitleComponentLength(false, length));
  EXPECT_EQ(length, 5);
  EXPECT_TRUE(player->getSubtitleComponentLength(true, length));
  EXPECT_EQ(length, 6);
}

TEST_F(PlayerComponentQueryTest, LeavesTheOutputAlone_WhenTheLibraryDoesNotAnswer) {
  int length = 77;
  AVAudioComponent* audio = reinterpret_cast<AVAudioComponent*>(&length);
  AVAudioComponent* const before = audio;

  EXPECT_FALSE(player->getAudioComponentLength(false, length));
  EXPECT_FALSE(player->getVideoComponentLength(true, length));
  EXPECT_FALSE(player->getSubtitleComponentLength(false, length));
  EXPECT_FALSE(player->getAudioComponentItem(true, 0, audio));

  EXPECT_EQ(length, 77);
  EXPECT_EQ(audio, before);
}

TEST_F(PlayerComponentQueryTest, ReadsItems) {
  library().setProperty("AUDIO_COMPONENT.ITEM.0", audioText("20"));
  library().setProperty("ACTIVE_AUDIO_COMPONENT.ITEM.1", audioText("21"));
  library().setProperty("VIDEO_COMPONENT.ITEM.2", videoText("22"));
  library().setProperty("ACTIVE_VIDEO_COMPONENT.ITEM.3", videoText("23"));
  library().setProperty("SUBTITLE_COMPONENT.ITEM.-4", subtitleText("24"));
  library().setProperty("ACTIVE_SUBTITLE_COMPONENT.ITEM.-2147483648", subtitleText("25"));
  AVAudioComponent* audio = nullptr;
  AVVideoComponent* video = nullptr;
  AVSubtitleComponent* subtitle = nullptr;

  ASSERT_TRUE(player->getAudioComponentItem(false, 0, audio));
  EXPECT_EQ(OwnedAudio(audio)->base->componentTag, 20);
  ASSERT_TRUE(player->getAudioComponentItem(true, 1, audio));
  EXPECT_EQ(OwnedAudio(audio)->base->componentTag, 21);
  ASSERT_TRUE(player->getVideoComponentItem(false, 2, video));
  EXPECT_EQ(OwnedVideo(video)->base->componentTag, 22);
  ASSERT_TRUE(player->getVideoComponentItem(true, 3, video));
  EXPECT_EQ(OwnedVideo(video)->base->componentTag, 23);
  ASSERT_TRUE(player->getSubtitleComponentItem(false, -4, subtitle));
  EXPECT_EQ(OwnedSubtitle(subtitle)->base->componentTag, 24);
  ASSERT_TRUE(player->getSubtitleComponentItem(true, -2147483647 - 1, subtitle));
  EXPECT_EQ(OwnedSubtitle(subtitle)->base->componentTag, 25);
}

TEST_F(PlayerComponentQueryTest, SucceedsWithNull_WhenTheLibraryHasNone) {
  library().setProperty("AUDIO_COMPONENT.ITEM.0", "NOT_AVAILABLE");
  library().setProperty("VIDEO_COMPONENT.ITEM.0", "");
  AVAudioComponent* audio = reinterpret_cast<AVAudioComponent*>(this);
  AVVideoComponent* video = reinterpret_cast<AVVideoComponent*>(this);

  EXPECT_TRUE(player->getAudioComponentItem(false, 0, audio));
  EXPECT_EQ(audio, nullptr);
  EXPECT_TRUE(player->getVideoComponentItem(false, 0, video));
  EXPECT_EQ(video, nullptr);
}

/// A record that does not fit the buffer is cut by the library, and then refused for want of its last "|".
TEST_F(PlayerComponentQueryTest, RefusesARecordThatTheBufferCuts) {
  const std::string tail = "|1||0|1||||0||1|";
  library().setProperty("VIDEO_COMPONENT.ITEM.0", "0|" + std::string(4095 - 2 - tail.size(), 'n') + tail);
  library().setProperty("VIDEO_COMPONENT.ITEM.1", "0|" + std::string(4096, 'n') + tail);
  AVVideoComponent* video = nullptr;

  ASSERT_TRUE(player->getVideoComponentItem(false, 0, video));
  EXPECT_NE(video, nullptr) << "4095 bytes fit";
  OwnedVideo owner(video);
  ASSERT_TRUE(player->getVideoComponentItem(false, 1, video));
  EXPECT_EQ(video, nullptr);
}

}  // namespace
