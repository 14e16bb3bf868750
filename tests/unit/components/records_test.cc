// SPDX-License-Identifier: Apache-2.0
// Record texts into records: every field, the leniency that is part of the format, and texts that are cut short.
#include <gtest/gtest.h>

#include <clocale>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>
#include <string>
#include <type_traits>

#include "tests/unit/components/record_text.h"

namespace {

void expectCommon(const AVComponent* common, int type) {
  ASSERT_NE(common, nullptr);
  EXPECT_EQ(common->type, type);
  EXPECT_STREQ(common->encoding, "codec");
  EXPECT_EQ(common->encrypted, 1);
  EXPECT_EQ(common->componentTag, 5);
  EXPECT_EQ(common->pid, 256);
  EXPECT_STREQ(common->opaqueText1, "one");
  EXPECT_STREQ(common->opaqueText2, "two");
  EXPECT_TRUE(common->opaqueFlag);
  EXPECT_STREQ(common->opaqueText3, "three");
}

/// The fields lie in the order of the record text.
TEST(ComponentRecordTest, KeepsTheOrderOfItsFields) {
  static_assert(std::is_standard_layout_v<AVComponent> && sizeof(bool) == 1 && sizeof(float) == 4);
  EXPECT_EQ(offsetof(AVComponent, type), 0U);
  EXPECT_LT(offsetof(AVComponent, type), offsetof(AVComponent, encoding));
  EXPECT_LT(offsetof(AVComponent, encoding), offsetof(AVComponent, encrypted));
  EXPECT_LT(offsetof(AVComponent, encrypted), offsetof(AVComponent, componentTag));
  EXPECT_LT(offsetof(AVComponent, componentTag), offsetof(AVComponent, pid));
  EXPECT_LT(offsetof(AVComponent, pid), offsetof(AVComponent, opaqueText1));
  EXPECT_LT(offsetof(AVComponent, opaqueText1), offsetof(AVComponent, opaqueText2));
  EXPECT_LT(offsetof(AVComponent, opaqueText2), offsetof(AVComponent, opaqueFlag));
  EXPECT_LT(offsetof(AVComponent, opaqueFlag), offsetof(AVComponent, opaqueText3));
  EXPECT_EQ(offsetof(AVVideoComponent, base), 0U);
  EXPECT_EQ(offsetof(AVAudioComponent, base), 0U);
  EXPECT_LT(offsetof(AVAudioComponent, audioText), offsetof(AVAudioComponent, language));
  EXPECT_LT(offsetof(AVAudioComponent, language), offsetof(AVAudioComponent, audioDescription));
  EXPECT_LT(offsetof(AVAudioComponent, audioDescription), offsetof(AVAudioComponent, audioChannels));
  EXPECT_EQ(offsetof(AVSubtitleComponent, base), 0U);
  EXPECT_LT(offsetof(AVSubtitleComponent, subtitleText1), offsetof(AVSubtitleComponent, language));
  EXPECT_LT(offsetof(AVSubtitleComponent, language), offsetof(AVSubtitleComponent, subtitleText2));
  EXPECT_LT(offsetof(AVSubtitleComponent, subtitleText2), offsetof(AVSubtitleComponent, hearingImpaired));
}

/// More digits than a float holds: an infinity, and a text that can still be printed and read.
TEST(ComponentRecordTest, ReadsAnAbsurdRatio) {
  EXPECT_EQ(readVideo(commonText(0) + "1e300|")->aspectRatio, std::numeric_limits<float>::infinity());
  EXPECT_EQ(readVideo(commonText(0) + "1e999|")->aspectRatio, std::numeric_limits<float>::infinity());
  EXPECT_EQ(readVideo(commonText(0) + "-1e300|")->aspectRatio, -std::numeric_limits<float>::infinity());
  EXPECT_EQ(readVideo(commonText(0) + "1e-300|")->aspectRatio, 0.0F);
}

TEST(ComponentRecordTest, ReadsAllFieldsOfAVideo) {
  const OwnedVideo video = readVideo(videoText());

  ASSERT_TRUE(video);
  expectCommon(video->base, 0);
  EXPECT_FLOAT_EQ(video->aspectRatio, 1.78F);
}

TEST(ComponentRecordTest, ReadsAllFieldsOfAnAudio) {
  const OwnedAudio audio = readAudio(audioText());

  ASSERT_TRUE(audio);
  expectCommon(audio->base, 1);
  EXPECT_STREQ(audio->audioText, "main");
  EXPECT_STREQ(audio->language, "deu");
  EXPECT_EQ(audio->audioDescription, 1);
  EXPECT_EQ(audio->audioChannels, 6);
}

TEST(ComponentRecordTest, ReadsAllFieldsOfASubtitle) {
  const OwnedSubtitle subtitle = readSubtitle(subtitleText());

  ASSERT_TRUE(subtitle);
  expectCommon(subtitle->base, 2);
  EXPECT_STREQ(subtitle->subtitleText1, "first");
  EXPECT_STREQ(subtitle->language, "eng");
  EXPECT_STREQ(subtitle->subtitleText2, "second");
  EXPECT_EQ(subtitle->hearingImpaired, 1);
}

TEST(ComponentRecordTest, ReadsEmptyFieldsAsZeroAndEmptyText) {
  const OwnedAudio audio = readAudio("|||||||||||||");

  ASSERT_TRUE(audio);
  EXPECT_EQ(audio->base->type, 0);
  EXPECT_STREQ(audio->base->encoding, "");
  EXPECT_EQ(audio->base->pid, 0);
  EXPECT_FALSE(audio->base->opaqueFlag);
  EXPECT_STREQ(audio->base->opaqueText3, "");
  EXPECT_STREQ(audio->language, "");
  EXPECT_EQ(audio->audioChannels, 0);
}

TEST(ComponentRecordTest, ReadsAVideoWithEmptyTexts) {
  const OwnedVideo video = readVideo("0|avc|0|5|256||||x|1.78|");

  ASSERT_TRUE(video);
  EXPECT_EQ(video->base->type, 0);
  EXPECT_STREQ(video->base->encoding, "avc");
  EXPECT_EQ(video->base->encrypted, 0);
  EXPECT_EQ(video->base->componentTag, 5);
  EXPECT_EQ(video->base->pid, 256);
  EXPECT_STREQ(video->base->opaqueText1, "");
  EXPECT_STREQ(video->base->opaqueText2, "");
  EXPECT_FALSE(video->base->opaqueFlag);
  EXPECT_STREQ(video->base->opaqueText3, "x");
  EXPECT_FLOAT_EQ(video->aspectRatio, 1.78F);
}

/// A printf of a null text leaves "(null)": it stands for no text, but only on its own.
TEST(ComponentRecordTest, ReadsThePrintedNullTextAsEmpty) {
  const OwnedAudio audio = readAudio("1|(null)|0|0|0|(null)x|x(null)|0|(NULL)|(null)|deu|0|2|");

  ASSERT_TRUE(audio);
  EXPECT_STREQ(audio->base->encoding, "");
  EXPECT_STREQ(audio->base->opaqueText1, "(null)x");
  EXPECT_STREQ(audio->base->opaqueText2, "x(null)");
  EXPECT_STREQ(audio->base->opaqueText3, "(NULL)");
  EXPECT_STREQ(audio->audioText, "");
}

struct NumberCase {
  const char* field;
  int expected;
};

class ComponentNumberTest : public ::testing::TestWithParam<NumberCase> {};

TEST_P(ComponentNumberTest, ReadsDigitsAsFarAsTheyGo) {
  const OwnedVideo video = readVideo(std::string("0|avc|0|0|") + GetParam().field + "|||0||1|");

  ASSERT_TRUE(video);
  EXPECT_EQ(video->base->pid, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Fields, ComponentNumberTest,
                         ::testing::Values(NumberCase{"12abc", 12}, NumberCase{"", 0}, NumberCase{"abc", 0}, NumberCase{"  7", 7},
                                           NumberCase{"-3", -3}, NumberCase{"+4", 4}, NumberCase{"1.9", 1}, NumberCase{"   ", 0},
                                           NumberCase{"\n", 0}, NumberCase{"99999999999999999999", std::numeric_limits<int>::max()},
                                           NumberCase{"-99999999999999999999", std::numeric_limits<int>::min()}));

/// A field without digits must not take those of the next one.
TEST(ComponentRecordTest, KeepsANumberInsideItsField) {
  const OwnedVideo video = readVideo("|avc||  |256||||x||");

  ASSERT_TRUE(video);
  EXPECT_EQ(video->base->type, 0);
  EXPECT_EQ(video->base->encrypted, 0);
  EXPECT_EQ(video->base->componentTag, 0);
  EXPECT_EQ(video->base->pid, 256);
  EXPECT_EQ(video->aspectRatio, 0.0F);
}

TEST(ComponentRecordTest, ReadsAnyNumberButZeroAsTrue) {
  EXPECT_FALSE(readVideo("0||0|0|0|||0||1|")->base->opaqueFlag);
  EXPECT_FALSE(readVideo("0||0|0|0|||yes||1|")->base->opaqueFlag);
  EXPECT_TRUE(readVideo("0||0|0|0|||-1||1|")->base->opaqueFlag);
  EXPECT_TRUE(readVideo("0||0|0|0|||256||1|")->base->opaqueFlag);  // no cut to the low byte
}

TEST(ComponentRecordTest, ReadsANumberLongerThanAnyScratchBuffer) {
  const OwnedVideo video = readVideo("0||0|0|" + std::string(5000, '0') + "42|||0||1|");

  ASSERT_TRUE(video);
  EXPECT_EQ(video->base->pid, 42);
}

TEST(ComponentRecordTest, ReadsTextsOfAnyLength) {
  const std::string longText(100000, 'a');

  const OwnedVideo video = readVideo("0|" + longText + "|0|0|0|||0||1|");

  ASSERT_TRUE(video);
  EXPECT_EQ(video->base->encoding, longText);
}

TEST(ComponentRecordTest, IgnoresWhatFollowsTheLastField) {
  const OwnedVideo video = readVideo(videoText() + "more|and more");

  ASSERT_TRUE(video);
  EXPECT_FLOAT_EQ(video->aspectRatio, 1.78F);
}

TEST(ComponentRecordTest, ReadsNoRecord_WhereverTheTextSaysNotAvailable) {
  EXPECT_FALSE(readVideo("NOT_AVAILABLE"));
  EXPECT_FALSE(readVideo("0|avc|0|5|256|NOT_AVAILABLE|||x|1.78|"));
  EXPECT_FALSE(readVideo(videoText() + "xNOT_AVAILABLEx"));
  EXPECT_FALSE(readAudio("NOT_AVAILABLE|" + audioText()));
  EXPECT_FALSE(readSubtitle(subtitleText() + "NOT_AVAILABLE"));
  EXPECT_TRUE(readVideo(videoText() + "not_available"));
}

TEST(ComponentRecordTest, ReadsNoRecord_FromANullText) {
  EXPECT_EQ(hlpCreateAVVideoComponent(nullptr), nullptr);
  EXPECT_EQ(hlpCreateAVAudioComponent(nullptr), nullptr);
  EXPECT_EQ(hlpCreateAVSubtitleComponent(nullptr), nullptr);
}

/// Each record text, cut at every byte before its last "|": nothing is read past the end, nothing of it stays behind.
template <typename Read>
void expectEveryCutRefused(const std::string& text, Read read) {
  for (std::size_t length = 0; length < text.size(); ++length) {
    EXPECT_FALSE(read(text.substr(0, length))) << "cut to " << length;
  }
  EXPECT_TRUE(read(text));
}

TEST(ComponentRecordTest, ReadsNoRecord_FromATextThatIsCutShort) {
  expectEveryCutRefused(videoText(), readVideo);
  expectEveryCutRefused(audioText(), readAudio);
  expectEveryCutRefused(subtitleText(), readSubtitle);
}

TEST(ComponentRecordTest, OnlyReadsTheText) {
  std::string text = audioText();

  const OwnedAudio audio(hlpCreateAVAudioComponent(text.data()));

  EXPECT_EQ(text, audioText());
  text.assign(text.size(), '#');
  EXPECT_STREQ(audio->language, "deu") << "the record has copies of its own";
}

TEST(ComponentRecordTest, FreesARecordWithoutCommonRecordAndTexts) {
  hlpDestroyAVVideoComponent(static_cast<AVVideoComponent*>(std::calloc(1, sizeof(AVVideoComponent))));
  hlpDestroyAVAudioComponent(static_cast<AVAudioComponent*>(std::calloc(1, sizeof(AVAudioComponent))));
  hlpDestroyAVSubtitleComponent(static_cast<AVSubtitleComponent*>(std::calloc(1, sizeof(AVSubtitleComponent))));
  const OwnedVideo video = readVideo(videoText());
  std::free(video->base->encoding);
  video->base->encoding = nullptr;  // a text that is missing is skipped; the leak checker watches the rest
  EXPECT_STREQ(video->base->opaqueText1, "one");
}

TEST(ComponentRecordTest, ReadsThePoint_UnderACommaLocale) {
  ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr) << "scripts/setup installs this locale";

  const OwnedVideo video = readVideo(videoText());
  std::setlocale(LC_ALL, "C");

  EXPECT_FLOAT_EQ(video->aspectRatio, 1.78F);
}

}  // namespace
