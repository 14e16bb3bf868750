// SPDX-License-Identifier: Apache-2.0
// Records back into texts: the index key and the selection payload.
#include <gtest/gtest.h>

#include <clocale>
#include <string>

#include "components/component_texts.h"
#include "tests/unit/components/record_text.h"

namespace {

TEST(ComponentTextTest, PrintsTheVideoKeyWithSixDecimals) {
  EXPECT_EQ(indexKey(*readVideo("0|avc|0|5|256||||x|1.78|")), "0|avc|0|5|256|||0|x|1.780000|");
  EXPECT_EQ(indexKey(*readVideo(videoText())), "0|codec|1|5|256|one|two|1|three|1.780000|");
}

TEST(ComponentTextTest, PrintsTheVideoPayloadWithTwoDecimals) {
  EXPECT_EQ(selectionPayload(*readVideo("0|avc|0|5|256||||x|1.78|")), "0|avc|0|5|256|||0|x|1.78|");
  EXPECT_EQ(selectionPayload(*readVideo(commonText(0) + "1.7777778|")), commonText(0) + "1.78|");
}

TEST(ComponentTextTest, PrintsAllThirteenFieldsOfAnAudio) {
  const OwnedAudio audio = readAudio(audioText());

  EXPECT_EQ(indexKey(*audio), "1|codec|1|5|256|one|two|1|three|main|deu|1|6|");
  EXPECT_EQ(selectionPayload(*audio), "1|codec|1|5|256|one|two|1|three|main|deu|1|6|");
}

/// The second text of a subtitle is part of its key and, deliberately, not of its payload.
TEST(ComponentTextTest, LeavesTheSecondSubtitleTextOutOfThePayload) {
  const OwnedSubtitle subtitle = readSubtitle(subtitleText());

  EXPECT_EQ(indexKey(*subtitle), "2|codec|1|5|256|one|two|1|three|first|eng|second|1|");
  EXPECT_EQ(selectionPayload(*subtitle), "2|codec|1|5|256|one|two|1|three|first|eng|1|");
}

TEST(ComponentTextTest, PrintsNumbersAnew) {
  EXPECT_EQ(indexKey(*readVideo("0x|avc|007| -5|+256|a|b|17|c|1.7|")), "0|avc|7|-5|256|a|b|1|c|1.700000|");
}

TEST(ComponentTextTest, PrintsNullTextsAsEmpty) {
  const AVComponent common{};
  AVComponent* const base = const_cast<AVComponent*>(&common);

  EXPECT_EQ(indexKey(AVVideoComponent{base, 0.0F}), "0||0|0|0|||0||0.000000|");
  EXPECT_EQ(selectionPayload(AVVideoComponent{base, 0.0F}), "0||0|0|0|||0||0.00|");
  EXPECT_EQ(indexKey(AVAudioComponent{base, nullptr, nullptr, 0, 0}), "0||0|0|0|||0||||0|0|");
  EXPECT_EQ(indexKey(AVSubtitleComponent{base, nullptr, nullptr, nullptr, 0}), "0||0|0|0|||0|||||0|");
  EXPECT_EQ(selectionPayload(AVSubtitleComponent{base, nullptr, nullptr, nullptr, 0}), "0||0|0|0|||0||||0|");
}

TEST(ComponentTextTest, PrintsARecordWithoutCommonRecordAsEmptyFields) {
  EXPECT_EQ(indexKey(AVVideoComponent{nullptr, 1.5F}), "0||0|0|0|||0||1.500000|");
}

/// Keys longer than any fixed buffer, and equal up to their last field, still tell records apart.
TEST(ComponentTextTest, MakesKeysOfAnyLength) {
  const std::string longName(4000, 'n');
  const OwnedAudio left = readAudio("1|" + longName + "|0|0|0|||0||a|deu|0|2|");
  const OwnedAudio right = readAudio("1|" + longName + "|0|0|0|||0||a|deu|0|6|");

  EXPECT_EQ(indexKey(*left), "1|" + longName + "|0|0|0|||0||a|deu|0|2|");
  EXPECT_NE(indexKey(*left), indexKey(*right));
}

TEST(ComponentTextTest, PrintsTheLargestRatioInFull) {
  const std::string key = indexKey(AVVideoComponent{nullptr, 3.4028234e38F});

  EXPECT_EQ(key, "0||0|0|0|||0||340282346638528859811704183484516925440.000000|");
}

/// A key read as a record gives the same key again: it is the record text with numbers printed anew.
TEST(ComponentTextTest, KeysAreRecordTexts) {
  const std::string video = indexKey(*readVideo(videoText()));
  const std::string audio = indexKey(*readAudio(audioText()));
  const std::string subtitle = indexKey(*readSubtitle(subtitleText()));

  EXPECT_EQ(indexKey(*readVideo(video)), video);
  EXPECT_EQ(indexKey(*readAudio(audio)), audio);
  EXPECT_EQ(indexKey(*readSubtitle(subtitle)), subtitle);
}

TEST(ComponentTextTest, PrintsThePoint_UnderACommaLocale) {
  const OwnedVideo video = readVideo(videoText());
  ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr) << "scripts/setup installs this locale";

  const std::string key = indexKey(*video);
  const std::string payload = selectionPayload(*video);
  std::setlocale(LC_ALL, "C");

  EXPECT_EQ(key, commonText(0) + "1.780000|");
  EXPECT_EQ(payload, commonText(0) + "1.78|");
}

}  // namespace
