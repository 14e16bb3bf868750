// SPDX-License-Identifier: Apache-2.0
// Script objects of single components: their tables, what they show, and who owns the record.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "components/audio_component.h"
#include "components/subtitle_component.h"
#include "components/video_component.h"
#include "tests/support/script_object.h"
#include "tests/unit/components/record_text.h"

using fixture::readShown;
using fixture::ScriptObject;
using fixture::shownRows;
using hbbtv_avc::HbbTVAudioComponentClass;
using hbbtv_avc::HbbTVSubtitleComponentClass;
using hbbtv_avc::HbbTVVideoComponentClass;
using ::testing::ElementsAre;

namespace {

std::vector<std::string> readAll(const ScriptObject& object) {
  std::vector<std::string> lines;
  for (const auto& row : pluginhost::propertyRows(*object)) {
    lines.push_back(std::string(row.name) + "=" + readShown(object, row.name));
  }
  return lines;
}

TEST(ComponentObjectTest, VideoTable) {
  EXPECT_THAT(shownRows(HbbTVVideoComponentClass::sm_properties, HbbTVVideoComponentClass::sm_prop_length),
              ElementsAre("type 3 0 int:0", "encoding 6 0 string:", "encrypted 2 0 bool:false", "componentTag 3 0 int:0",
                          "pid 3 0 int:0", "aspectRatio 5 0 double:0"));
}

TEST(ComponentObjectTest, AudioTable) {
  EXPECT_THAT(shownRows(HbbTVAudioComponentClass::sm_properties, HbbTVAudioComponentClass::sm_prop_length),
              ElementsAre("type 3 0 int:1", "encoding 6 0 string:", "encrypted 2 0 bool:false", "componentTag 3 0 int:0",
                          "pid 3 0 int:0", "language 6 0 string:", "audioDescription 2 0 bool:false", "audioChannels 3 0 int:0"));
}

TEST(ComponentObjectTest, SubtitleTable) {
  EXPECT_THAT(shownRows(HbbTVSubtitleComponentClass::sm_properties, HbbTVSubtitleComponentClass::sm_prop_length),
              ElementsAre("type 3 0 int:2", "encoding 6 0 string:", "encrypted 2 0 bool:false", "componentTag 3 0 int:0",
                          "pid 3 0 int:0", "language 6 0 string:", "hearingImpaired 2 0 bool:false"));
}

TEST(ComponentObjectTest, HaveTheirTypeNumbersAndNoMethods) {
  const ScriptObject video = HbbTVVideoComponentClass::create(nullptr, nullptr);
  const ScriptObject audio = HbbTVAudioComponentClass::create(nullptr, nullptr);
  const ScriptObject subtitle = HbbTVSubtitleComponentClass::create(nullptr, nullptr);

  EXPECT_EQ(video->type(), 6);
  EXPECT_EQ(audio->type(), 5);
  EXPECT_EQ(subtitle->type(), 7);
  for (const auto& object : {video, audio, subtitle}) EXPECT_TRUE(pluginhost::methodRows(*object).empty());
}

TEST(ComponentObjectTest, VideoShowsItsRecord) {
  const ScriptObject video = HbbTVVideoComponentClass::create(nullptr, readVideo(commonText(0) + "1.5|").release());

  EXPECT_THAT(readAll(video), ElementsAre("type=int:0", "encoding=string:codec", "encrypted=bool:true", "componentTag=int:5",
                                          "pid=int:256", "aspectRatio=double:1.5"));
}

TEST(ComponentObjectTest, AudioShowsItsRecord) {
  const ScriptObject audio = HbbTVAudioComponentClass::create(nullptr, readAudio(audioText()).release());

  EXPECT_THAT(readAll(audio),
              ElementsAre("type=int:1", "encoding=string:codec", "encrypted=bool:true", "componentTag=int:5", "pid=int:256",
                          "language=string:deu", "audioDescription=bool:true", "audioChannels=int:6"));
}

TEST(ComponentObjectTest, SubtitleShowsItsRecord) {
  const ScriptObject subtitle = HbbTVSubtitleComponentClass::create(nullptr, readSubtitle(subtitleText()).release());

  EXPECT_THAT(readAll(subtitle), ElementsAre("type=int:2", "encoding=string:codec", "encrypted=bool:true", "componentTag=int:5",
                                             "pid=int:256", "language=string:eng", "hearingImpaired=bool:true"));
}

/// "type" says what the object is, whatever the record's own field says.
TEST(ComponentObjectTest, ShowsItsOwnType_WhateverTheRecordSays) {
  const ScriptObject video = HbbTVVideoComponentClass::create(nullptr, readVideo(commonText(7) + "1|").release());
  const ScriptObject audio = HbbTVAudioComponentClass::create(nullptr, readAudio(commonText(7) + "||||").release());
  const ScriptObject subtitle = HbbTVSubtitleComponentClass::create(nullptr, readSubtitle(commonText(7) + "||||").release());

  EXPECT_EQ(readShown(video, "type"), "int:0");
  EXPECT_EQ(readShown(audio, "type"), "int:1");
  EXPECT_EQ(readShown(subtitle, "type"), "int:2");
}

TEST(ComponentObjectTest, ShowsTheRatioWidenedFromSinglePrecision) {
  const ScriptObject video = HbbTVVideoComponentClass::create(nullptr, readVideo(videoText()).release());

  _CorvelNativeVariant value;
  ASSERT_TRUE(pluginhost::readProperty(*video, "aspectRatio", value));
  EXPECT_EQ(value.number, static_cast<double>(1.78F));
}

TEST(ComponentObjectTest, ShowsANullTextAsEmpty) {
  OwnedAudio record = readAudio(audioText());
  std::free(record->language);
  record->language = nullptr;
  std::free(record->base->encoding);
  record->base->encoding = nullptr;

  const ScriptObject audio = HbbTVAudioComponentClass::create(nullptr, record.release());

  EXPECT_EQ(readShown(audio, "language"), "string:");
  EXPECT_EQ(readShown(audio, "encoding"), "string:");
}

TEST(ComponentObjectTest, WritesItsRowsInOrder) {
  fixture::HostLog log;
  pluginhost::setObserver(&log);
  const auto written = [&](const ScriptObject& object) {
    std::vector<std::string> names;
    for (const auto& entry : log.entries()) {
      if (entry.objectId == pluginhost::objectId(*object)) names.push_back(entry.name);
    }
    return names;
  };

  const ScriptObject video = HbbTVVideoComponentClass::create(nullptr, readVideo(videoText()).release());
  const ScriptObject audio = HbbTVAudioComponentClass::create(nullptr, readAudio(audioText()).release());
  const ScriptObject subtitle = HbbTVSubtitleComponentClass::create(nullptr, readSubtitle(subtitleText()).release());
  pluginhost::setObserver(nullptr);

  EXPECT_THAT(written(video), ElementsAre("encoding", "encrypted", "componentTag", "pid", "aspectRatio"));
  EXPECT_THAT(written(audio),
              ElementsAre("encoding", "encrypted", "componentTag", "pid", "language", "audioDescription", "audioChannels"));
  EXPECT_THAT(written(subtitle), ElementsAre("encoding", "encrypted", "componentTag", "pid", "language", "hearingImpaired"));
}

TEST(ComponentObjectTest, KeepsInitialValues_WithoutARecord) {
  const ScriptObject audio = HbbTVAudioComponentClass::create(nullptr, nullptr);

  EXPECT_EQ(HbbTVAudioComponentClass::cast(audio)->getAudioComponent(), nullptr);
  EXPECT_THAT(readAll(audio), ElementsAre("type=int:1", "encoding=string:", "encrypted=bool:false", "componentTag=int:0",
                                          "pid=int:0", "language=string:", "audioDescription=bool:false", "audioChannels=int:0"));
}

/// A record without its common record is refused and stays the caller's (who would leak or free it twice otherwise).
TEST(ComponentObjectTest, RefusesARecordWithoutCommonRecord) {
  const OwnedVideo video(static_cast<AVVideoComponent*>(std::calloc(1, sizeof(AVVideoComponent))));
  const OwnedAudio audio(static_cast<AVAudioComponent*>(std::calloc(1, sizeof(AVAudioComponent))));
  const OwnedSubtitle subtitle(static_cast<AVSubtitleComponent*>(std::calloc(1, sizeof(AVSubtitleComponent))));

  const ScriptObject videoObject = HbbTVVideoComponentClass::create(nullptr, video.get());
  const ScriptObject audioObject = HbbTVAudioComponentClass::create(nullptr, audio.get());
  const ScriptObject subtitleObject = HbbTVSubtitleComponentClass::create(nullptr, subtitle.get());

  EXPECT_EQ(HbbTVVideoComponentClass::cast(videoObject)->getVideoComponent(), nullptr);
  EXPECT_EQ(HbbTVAudioComponentClass::cast(audioObject)->getAudioComponent(), nullptr);
  EXPECT_EQ(HbbTVSubtitleComponentClass::cast(subtitleObject)->getSubtitleComponent(), nullptr);
  EXPECT_FALSE(HbbTVVideoComponentClass::cast(videoObject)->setProperties(video.get()));
  EXPECT_EQ(readShown(videoObject, "encoding"), "string:");
}

TEST(ComponentObjectTest, TakesTheSameRecordTwice) {
  AVSubtitleComponent* const record = readSubtitle(subtitleText()).release();
  const ScriptObject subtitle = HbbTVSubtitleComponentClass::create(nullptr, record);

  EXPECT_TRUE(HbbTVSubtitleComponentClass::cast(subtitle)->setProperties(record));

  EXPECT_EQ(HbbTVSubtitleComponentClass::cast(subtitle)->getSubtitleComponent(), record);
  EXPECT_EQ(readShown(subtitle, "language"), "string:eng");
}

TEST(ComponentObjectTest, ReplacesItsRecord) {
  const ScriptObject video = HbbTVVideoComponentClass::create(nullptr, readVideo(videoText()).release());
  const ScriptObject audio = HbbTVAudioComponentClass::create(nullptr, readAudio(audioText()).release());
  const ScriptObject subtitle = HbbTVSubtitleComponentClass::create(nullptr, readSubtitle(subtitleText()).release());

  EXPECT_TRUE(HbbTVVideoComponentClass::cast(video)->setProperties(readVideo("0|hevc|0|9|1|||0||2.5|").release()));
  EXPECT_TRUE(HbbTVAudioComponentClass::cast(audio)->setProperties(readAudio("1|mp2|0|9|1|||0|||fra|0|2|").release()));
  EXPECT_TRUE(HbbTVSubtitleComponentClass::cast(subtitle)->setProperties(readSubtitle("2|ttml|0|9|1|||0|||ita||0|").release()));

  EXPECT_THAT(readAll(video), ElementsAre("type=int:0", "encoding=string:hevc", "encrypted=bool:false", "componentTag=int:9",
                                          "pid=int:1", "aspectRatio=double:2.5"));
  EXPECT_THAT(readAll(audio),
              ElementsAre("type=int:1", "encoding=string:mp2", "encrypted=bool:false", "componentTag=int:9", "pid=int:1",
                          "language=string:fra", "audioDescription=bool:false", "audioChannels=int:2"));
  EXPECT_THAT(readAll(subtitle), ElementsAre("type=int:2", "encoding=string:ttml", "encrypted=bool:false", "componentTag=int:9",
                                             "pid=int:1", "language=string:ita", "hearingImpaired=bool:false"));
}

TEST(ComponentObjectTest, CastsToItsOwnClassOnly) {
  const ScriptObject video = HbbTVVideoComponentClass::create(nullptr, nullptr);
  const ScriptObject audio = HbbTVAudioComponentClass::create(nullptr, nullptr);
  const ScriptObject subtitle = HbbTVSubtitleComponentClass::create(nullptr, nullptr);

  EXPECT_EQ(HbbTVVideoComponentClass::cast(video.get()), video.get());
  EXPECT_EQ(HbbTVAudioComponentClass::cast(audio), audio.get());
  EXPECT_EQ(HbbTVSubtitleComponentClass::cast(subtitle), subtitle.get());
  EXPECT_EQ(HbbTVAudioComponentClass::cast(video), nullptr);
  EXPECT_EQ(HbbTVVideoComponentClass::cast(subtitle), nullptr);
  EXPECT_EQ(HbbTVSubtitleComponentClass::cast(audio.get()), nullptr);
  EXPECT_EQ(HbbTVAudioComponentClass::cast(static_cast<CorvelNativePropertyBase*>(nullptr)), nullptr);
}

}  // namespace
