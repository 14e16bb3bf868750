// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/hls_playlist.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using mediamgmnt::HlsPlaylist;
using mediamgmnt::readHlsPlaylist;
using testing::ElementsAre;
using testing::SizeIs;

constexpr char kMaster[] =
    "#EXTM3U\r\n"
    "#EXT-X-VERSION:6\r\n"
    "#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID=\"snd\",NAME=\"English, main\",DEFAULT=YES,AUTOSELECT=YES,LANGUAGE=\"en\",CHANNELS=\"6/JOC\","
    "URI=\"eng.m3u8\"\r\n"
    "#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID=\"snd\",NAME=\"Described\",LANGUAGE=\"en\","
    "CHARACTERISTICS=\"public.accessibility.describes-video,public.easy-to-read\",URI=\"ad.m3u8\"\r\n"
    "#EXT-X-MEDIA:TYPE=SUBTITLES,GROUP-ID=\"sub\",NAME=\"Deutsch\",FORCED=YES,LANGUAGE=\"de\","
    "CHARACTERISTICS=\"public.accessibility.transcribes-spoken-dialog, "
    "public.accessibility.describes-music-and-sound\",URI=\"de.m3u8\"\r\n"
    "#EXT-X-STREAM-INF:BANDWIDTH=900000,RESOLUTION=640x360,CODECS=\"avc1.4d401e, mp4a.40.2\",AUDIO=\"snd\",SUBTITLES=\"sub\"\r\n"
    "# a remark\r\n"
    "video.m3u8\r\n"
    "#EXT-X-STREAM-INF:BANDWIDTH=300000\r\n"
    "small.m3u8";

TEST(HlsPlaylistTest, ReadsSounds) {
  const HlsPlaylist playlist = readHlsPlaylist(kMaster).value();

  ASSERT_THAT(playlist.media, SizeIs(3));
  EXPECT_EQ(playlist.media[0].type, "AUDIO");
  EXPECT_EQ(playlist.media[0].groupId, "snd");
  EXPECT_EQ(playlist.media[0].name, "English, main");  // the comma inside quotes separates nothing
  EXPECT_EQ(playlist.media[0].language, "en");
  EXPECT_EQ(playlist.media[0].uri, "eng.m3u8");
  EXPECT_EQ(playlist.media[0].channels, 6);
  EXPECT_TRUE(playlist.media[0].isDefault);
  EXPECT_TRUE(playlist.media[0].isAutoSelected);
  EXPECT_FALSE(playlist.media[0].isAudioDescription());
  EXPECT_TRUE(playlist.media[1].isAudioDescription());
  EXPECT_FALSE(playlist.media[1].isDefault);
}

TEST(HlsPlaylistTest, ReadsSubtitles) {
  const HlsPlaylist playlist = readHlsPlaylist(kMaster).value();

  EXPECT_EQ(playlist.media[2].type, "SUBTITLES");
  EXPECT_TRUE(playlist.media[2].isForced);
  EXPECT_TRUE(playlist.media[2].isForHearingImpaired());
}

TEST(HlsPlaylistTest, ReadsVariants) {
  const HlsPlaylist playlist = readHlsPlaylist(kMaster).value();

  ASSERT_THAT(playlist.variants, SizeIs(2));
  EXPECT_EQ(playlist.variants[0].width, 640);
  EXPECT_EQ(playlist.variants[0].height, 360);
  EXPECT_EQ(playlist.variants[0].bandwidth, 900000);
  EXPECT_THAT(playlist.variants[0].codecs, ElementsAre("avc1.4d401e", "mp4a.40.2"));
  EXPECT_EQ(playlist.variants[0].audioGroup, "snd");
  EXPECT_EQ(playlist.variants[0].subtitleGroup, "sub");
  EXPECT_EQ(playlist.variants[0].uri, "video.m3u8");
  EXPECT_EQ(playlist.variants[1].uri, "small.m3u8");
  EXPECT_EQ(playlist.variants[1].width, 0);
}

TEST(HlsPlaylistTest, SeesEncryption) {
  EXPECT_TRUE(readHlsPlaylist("#EXTM3U\n#EXT-X-KEY:METHOD=AES-128,URI=\"k\"\n")->isEncrypted);
  EXPECT_TRUE(readHlsPlaylist("#EXTM3U\n#EXT-X-SESSION-KEY:METHOD=SAMPLE-AES,URI=\"k\"\n")->isEncrypted);
  EXPECT_TRUE(readHlsPlaylist("#EXTM3U\n#EXT-X-KEY:METHOD=AES-128\n#EXT-X-KEY:METHOD=NONE\n")->isEncrypted);
  EXPECT_FALSE(readHlsPlaylist("#EXTM3U\n#EXT-X-KEY:METHOD=NONE\n")->isEncrypted);
}

TEST(HlsPlaylistTest, PassesOverWhatMakesNoSense) {
  const auto playlist =
      readHlsPlaylist("\xEF\xBB\xBF#EXTM3U\n#EXT-X-MEDIA:\n#EXT-X-MEDIA:=,,=\"\n#EXT-X-STREAM-INF:BANDWIDTH\nx\n");

  ASSERT_TRUE(playlist);
  EXPECT_THAT(playlist->media, SizeIs(2));
  EXPECT_EQ(playlist->variants.at(0).uri, "x");
}

TEST(HlsPlaylistTest, RefusesWhatIsNoPlaylist) {
  EXPECT_FALSE(readHlsPlaylist(""));
  EXPECT_FALSE(readHlsPlaylist("<html>"));
  EXPECT_FALSE(readHlsPlaylist("#EXTM3U8\n"));
}

}  // namespace
