// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/hls_renditions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "platform/mediamgmnt/hls_playlist.h"

namespace {

using mediamgmnt::HlsMedia;
using mediamgmnt::readHlsPlaylist;
using mediamgmnt::tellRenditionsApart;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

std::string sound(std::string_view group, std::string_view name, std::string_view language, std::string_view uri = "a.m3u8") {
  std::string line = "#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID=\"" + std::string(group) + "\",NAME=\"" + std::string(name) + "\"";
  if (!language.empty()) line += ",LANGUAGE=\"" + std::string(language) + "\"";
  if (!uri.empty()) line += ",URI=\"" + std::string(uri) + "\"";
  return line + "\n";
}

std::string variant(std::string_view group, std::string_view uri) {
  return "#EXT-X-STREAM-INF:BANDWIDTH=1,AUDIO=\"" + std::string(group) + "\"\n" + std::string(uri) + "\n";
}

std::string playlist(const std::string& lines) { return "#EXTM3U\n" + lines; }

/// Group, name, language and address of each medium that the demuxer reads, in its order.
std::vector<std::string> mended(const std::string& lines) {
  std::vector<std::string> told;
  const auto read = readHlsPlaylist(tellRenditionsApart(playlist(lines))).value();
  for (const HlsMedia& each : read.media) told.push_back(each.groupId + " " + each.name + " " + each.language + " " + each.uri);
  return told;
}

TEST(HlsRenditionsTest, LeaveWhatIsToldApartAsItIs) {
  const std::string text = playlist(sound("a", "English", "en") + sound("a", "Deutsch", "de") + sound("b", "English", "en") +
                                    sound("b", "Deutsch", "de") + variant("a", "v.m3u8"));

  EXPECT_EQ(tellRenditionsApart(text), text);
}

TEST(HlsRenditionsTest, LeaveWhatIsNoPlaylistWithRenditionsAsItIs) {
  for (const char* const text : {"", "<MPD/>", "#EXTM3U\n#EXTINF:2,\na.ts\n", "#EXTM3U"})
    EXPECT_EQ(tellRenditionsApart(text), text);
}

TEST(HlsRenditionsTest, HaveALanguageOfTheirOwn) {
  EXPECT_THAT(mended(sound("a", "Deutsch", "de", "1") + sound("a", "Beschrieben", "de", "2") + sound("a", "Klar", "de", "3")),
              ElementsAre("a Deutsch de 1", "a Beschrieben de-x-2 2", "a Klar de-x-3 3"));
}

TEST(HlsRenditionsTest, AreTheSameInEveryGroupByTheirNames) {
  EXPECT_THAT(
      mended(sound("a", "Deutsch", "de") + sound("a", "Klar", "de") + sound("b", "Klar", "de") + sound("b", "Deutsch", "de")),
      ElementsAre("a Deutsch de a.m3u8", "a Klar de-x-2 a.m3u8", "b Klar de-x-2 a.m3u8", "b Deutsch de a.m3u8"));
}

TEST(HlsRenditionsTest, AreTheSameInAnotherGroupByTheirLanguageWhereNamesDiffer) {
  const std::string text =
      playlist(sound("a", "Deutsch", "de") + sound("b", "Deutsch 5.1", "de") + variant("a", "v.m3u8") + variant("b", "v.m3u8"));

  EXPECT_EQ(tellRenditionsApart(text), text);
}

TEST(HlsRenditionsTest, WithoutALanguageAreToldApartAsWell) {
  EXPECT_THAT(mended(sound("a", "1", "") + sound("a", "2", "") + sound("a", "3", "")),
              ElementsAre("a 1  a.m3u8", "a 2 und-x-2 a.m3u8", "a 3 und-x-3 a.m3u8"));
}

TEST(HlsRenditionsTest, TakeNoLanguageThatAnotherOneHas) {
  EXPECT_THAT(mended(sound("a", "1", "de") + sound("a", "2", "de-x-2") + sound("a", "3", "de")),
              ElementsAre("a 1 de a.m3u8", "a 2 de-x-2 a.m3u8", "a 3 de-x-3 a.m3u8"));
}

TEST(HlsRenditionsTest, AreInEveryGroup) {
  EXPECT_THAT(mended(sound("few", "English", "en", "1") + sound("all", "English", "en", "2") + sound("all", "Deutsch", "de", "3")),
              ElementsAre("few English en 1", "all English en 2", "all Deutsch de 3", "few Deutsch de 3"));
}

TEST(HlsRenditionsTest, AreInAGroupThatAVariantNamesAndNobodyDescribes) {
  EXPECT_THAT(mended(sound("a", "English", "en") + variant("b", "v.m3u8")),
              ElementsAre("a English en a.m3u8", "b English en a.m3u8"));
}

TEST(HlsRenditionsTest, GoWithVariantsThatNameNoGroupToo) {
  const std::string text =
      tellRenditionsApart(playlist("#EXT-X-STREAM-INF:BANDWIDTH=1\r\nsmall.m3u8\r\n" + sound("a", "English", "en") +
                                   sound("b", "English", "en") + variant("b", "v.m3u8")));

  const auto read = readHlsPlaylist(text).value();
  EXPECT_EQ(read.variants.at(0).audioGroup, "a");
  EXPECT_EQ(read.variants.at(0).subtitleGroup, "");
  EXPECT_EQ(read.variants.at(0).bandwidth, 1);
  EXPECT_EQ(read.variants.at(0).uri, "small.m3u8");
  EXPECT_EQ(read.variants.at(1).audioGroup, "b");
}

TEST(HlsRenditionsTest, StayWithTheirVariantWhenTheyAreInItsSegments) {
  EXPECT_THAT(mended(sound("a", "English", "en", "") + sound("b", "Deutsch", "de")),
              ElementsAre("a English en ", "b Deutsch de a.m3u8", "a Deutsch de a.m3u8"));
}

TEST(HlsRenditionsTest, OfAnotherTypeHaveLanguagesOfTheirOwn) {
  const std::string text = playlist(sound("a", "Deutsch", "de") +
                                    "#EXT-X-MEDIA:TYPE=SUBTITLES,GROUP-ID=\"t\",NAME=\"Deutsch\",LANGUAGE=\"de\",URI=\"t\"\n");

  EXPECT_EQ(tellRenditionsApart(text), text);
}

TEST(HlsRenditionsTest, KeepAllThatTheDemuxerReads) {
  const std::string first = sound("a", "Deutsch", "de");
  const std::string second =
      "#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID=\"a\",NAME=\"Klar, "
      "langsam\",DEFAULT=YES,AUTOSELECT=YES,FORCED=YES,LANGUAGE=\"de\",URI=\"k?a,b\"\r\n";
  const std::string captions = "#EXT-X-MEDIA:TYPE=CLOSED-CAPTIONS,GROUP-ID=\"c\",NAME=\"CC\",INSTREAM-ID=\"CC1\"\n";

  const std::string text = tellRenditionsApart("#EXTM3U\n# a remark\n" + captions + first + second + variant("a", "v.m3u8"));

  EXPECT_THAT(text, StartsWith("#EXTM3U\n# a remark\n" + captions + first));
  EXPECT_THAT(text, HasSubstr(variant("a", "v.m3u8")));
  const HlsMedia media = readHlsPlaylist(text).value().media.at(2);
  EXPECT_EQ(media.name, "Klar, langsam");
  EXPECT_EQ(media.uri, "k?a,b");
  EXPECT_EQ(media.language, "de-x-2");
  EXPECT_TRUE(media.isDefault && media.isAutoSelected && media.isForced);
}

TEST(HlsRenditionsTest, EndTheirLinesAlsoBehindALastOneWithoutAnEnd) {
  const std::string lines = sound("few", "English", "en") + sound("all", "English", "en") + sound("all", "Deutsch", "de");

  EXPECT_THAT(mended(lines.substr(0, lines.size() - 1)),
              ElementsAre("few English en a.m3u8", "all English en a.m3u8", "all Deutsch de a.m3u8", "few Deutsch de a.m3u8"));
}

TEST(HlsRenditionsTest, WithQuotesInsideStayAsTheyAre) {
  const std::string text =
      playlist(sound("a", "Deutsch", "de") + "#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID=a,NAME=Kl\"ar,LANGUAGE=de,URI=k\n");

  EXPECT_EQ(tellRenditionsApart(text), text);
}

TEST(HlsRenditionsTest, ForGroupsWithQuotesInsideStayAsTheyAre) {
  const std::string text =
      playlist(sound("a", "Deutsch", "de") + "#EXT-X-STREAM-INF:BANDWIDTH=1,AUDIO=b\"c\nv.m3u8\n" + variant("a", "w.m3u8"));

  EXPECT_EQ(tellRenditionsApart(text), text);
}

TEST(HlsRenditionsTest, InMassesStayAsTheyAre) {
  std::string text = playlist("");
  for (int i = 0; i < 10'000; ++i) text += sound(std::to_string(i), std::to_string(i), "de");

  EXPECT_EQ(tellRenditionsApart(text), text);
}

}  // namespace
