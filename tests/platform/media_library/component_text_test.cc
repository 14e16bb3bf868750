// SPDX-License-Identifier: Apache-2.0
// Records, languages, and the words of commands and keys.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "platform/mediamgmnt/codec_name.h"
#include "platform/mediamgmnt/component.h"
#include "platform/mediamgmnt/component_words.h"
#include "platform/mediamgmnt/language_code.h"

namespace {

using mediamgmnt::Component;
using mediamgmnt::ComponentKind;
using mediamgmnt::languageCode;
using mediamgmnt::parseComponentQuery;
using mediamgmnt::parseSelection;
using mediamgmnt::recordOf;
using mediamgmnt::selectionTextOf;

Component audio() {
  Component component;
  component.kind = ComponentKind::Audio;
  component.encoding = "mp4a.40.2";
  component.tag = 2;
  component.pid = 257;
  component.language = "eng";
  component.channels = 2;
  return component;
}

long separators(const std::string& record) { return std::count(record.begin(), record.end(), '|'); }

TEST(ComponentRecordTest, WritesTheFieldsOfEachKind) {
  Component video;
  video.encoding = "avc1.4d401e";
  video.encrypted = true;
  video.aspectRatio = 16.0 / 9;
  Component subtitle = audio();
  subtitle.kind = ComponentKind::Subtitle;
  subtitle.hearingImpaired = true;
  Component described = audio();
  described.audioDescription = true;
  described.label = "Described";
  described.generation = "2";

  EXPECT_EQ(recordOf(video), "0|avc1.4d401e|1|0|0|||0||1.78|");
  EXPECT_EQ(recordOf(audio()), "1|mp4a.40.2|0|2|257|||0|||eng|0|2|");
  EXPECT_EQ(recordOf(described), "1|mp4a.40.2|0|2|257|2||0||Described|eng|1|2|");
  EXPECT_EQ(recordOf(subtitle), "2|mp4a.40.2|0|2|257|||0|||eng||1|");
}

TEST(ComponentRecordTest, TheSelectionTextOfASubtitleHasOneTextLess) {
  Component subtitle = audio();
  subtitle.kind = ComponentKind::Subtitle;

  EXPECT_EQ(selectionTextOf(subtitle), "2|mp4a.40.2|0|2|257|||0|||eng|0|");
  EXPECT_EQ(selectionTextOf(audio()), recordOf(audio()));
}

TEST(ComponentRecordTest, NoTextBreaksARecord) {
  for (const std::string label : {"a|b||c|", "NOT_AVAILABLE", "NOT_NOT_AVAILABLEAVAILABLE", "two\nlines\t", "|"}) {
    Component component = audio();
    component.label = component.encoding = component.language = label;

    EXPECT_EQ(separators(recordOf(component)), 13) << label;
    EXPECT_THAT(recordOf(component), testing::Not(testing::HasSubstr("NOT_AVAILABLE")));
    EXPECT_THAT(recordOf(component), testing::Not(testing::HasSubstr("\n")));
  }
}

TEST(ComponentRecordTest, ALongTextIsCutBetweenCharacters) {
  Component component = audio();
  component.encoding.clear();
  component.label = "x";
  for (int i = 0; i < 3000; ++i) component.label += "\xC3\xA4";
  component.language = component.label;

  const std::string record = recordOf(component);

  EXPECT_LT(record.size(), 4096U);
  EXPECT_EQ(record[record.find("x\xC3") + 511], '|');  // an odd number of bytes fits: the last character would have been halved
}

TEST(ComponentRecordTest, LooksAlikeAsFarAsIsKnown) {
  Component unknown = audio();
  unknown.channels = 0;
  unknown.generation = "3";
  Component german = audio();
  german.language = "deu";

  EXPECT_TRUE(looksAlike(audio(), unknown));
  EXPECT_TRUE(looksAlike(unknown, audio()));
  EXPECT_FALSE(looksAlike(audio(), german));
}

TEST(LanguageCodeTest, KnowsAllFormsOfACode) {
  for (const char* const form : {"de", "deu", "ger", "DE", "de-AT", "de_CH", "Ger"}) EXPECT_EQ(languageCode(form), "deu") << form;
  EXPECT_EQ(languageCode("en"), "eng");
  EXPECT_EQ(languageCode("fre"), "fra");
  EXPECT_EQ(languageCode("qaa"), "qaa");
  for (const char* const none : {"", "und", "english", "x", "d1", "d|e", "zz"}) EXPECT_EQ(languageCode(none), "und") << none;
}

std::string nameOf(const char* text) {
  GstCaps* const caps = gst_caps_from_string(text);
  const std::string name = mediamgmnt::codecName(caps);
  gst_caps_unref(caps);
  return name;
}

TEST(CodecNameTest, NamesEncodingsAsManifestsDo) {
  gst_init(nullptr, nullptr);

  EXPECT_EQ(nameOf("video/x-h264, stream-format=(string)avc, codec_data=(buffer)014d401effe10018674d401eeca05017fcb08000"),
            "avc1.4d401e");
  EXPECT_EQ(nameOf("video/x-h264"), "avc1");
  EXPECT_EQ(nameOf("video/mpeg, mpegversion=(int)2, systemstream=(boolean)false"), "mp4v.61");
  EXPECT_EQ(nameOf("audio/mpeg, mpegversion=(int)4, codec_data=(buffer)1190"), "mp4a.40.2");
  EXPECT_EQ(nameOf("audio/mpeg, mpegversion=(int)4, stream-format=(string)adts"), "mp4a.40.2");
  EXPECT_EQ(nameOf("audio/mpeg, mpegversion=(int)1, layer=(int)3"), "mp3");
  EXPECT_EQ(nameOf("audio/mpeg, mpegversion=(int)1, layer=(int)2"), "mp2");
  EXPECT_EQ(nameOf("audio/x-ac3"), "ac-3");
  EXPECT_EQ(nameOf("audio/x-eac3"), "ec-3");
  EXPECT_EQ(nameOf("application/ttml+xml"), "stpp");
  EXPECT_EQ(nameOf("application/x-cenc, original-media-type=(string)audio/x-eac3"), "ec-3");
  EXPECT_EQ(nameOf("video/x-nothing"), "");
  EXPECT_EQ(mediamgmnt::codecName(nullptr), "");
}

TEST(ComponentWordsTest, TakesQueriesApart) {
  const auto length = parseComponentQuery("ACTIVE_AUDIO_COMPONENT.LENGTH");
  const auto item = parseComponentQuery("SUBTITLE_COMPONENT.ITEM.12");

  ASSERT_TRUE(length);
  EXPECT_EQ(length->kind, ComponentKind::Audio);
  EXPECT_TRUE(length->active);
  EXPECT_FALSE(length->index);
  ASSERT_TRUE(item);
  EXPECT_EQ(item->kind, ComponentKind::Subtitle);
  EXPECT_FALSE(item->active);
  EXPECT_EQ(item->index, 12U);
  for (const char* const other : {"POSITION", "VIDEO_COMPONENT.ITEM.", "VIDEO_COMPONENT.ITEM.-1", "VIDEO_COMPONENT.ITEM.1x", ""}) {
    EXPECT_FALSE(parseComponentQuery(other)) << other;
  }
}

TEST(ComponentWordsTest, TakesCommandsApart) {
  const auto byIndex = parseSelection("UNSELECT_VIDEO_COMPONENT", "3");
  const auto byType = parseSelection("SELECT_DEFAULT_COMPONENT", "2");
  const auto byRecord = parseSelection("SELECT_COMPONENT", "1|x|");

  ASSERT_TRUE(byIndex && byType && byRecord);
  EXPECT_FALSE(byIndex->select);
  EXPECT_EQ(byIndex->kind, ComponentKind::Video);
  EXPECT_EQ(byIndex->index, 3U);
  EXPECT_EQ(byType->kind, ComponentKind::Subtitle);
  EXPECT_FALSE(byType->index);
  EXPECT_FALSE(byRecord->kind);
  EXPECT_EQ(byRecord->record, "1|x|");
  EXPECT_FALSE(parseSelection("SELECT_DEFAULT_COMPONENT", "3"));
  EXPECT_FALSE(parseSelection("SELECT_AUDIO_COMPONENT", ""));
  EXPECT_FALSE(parseSelection("SELECT_COMPONENT", ""));
  EXPECT_FALSE(parseSelection("PLAY", "1"));
}

}  // namespace
