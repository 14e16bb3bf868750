// SPDX-License-Identifier: Apache-2.0
// Every text form of a record there and back with random contents: what the library says, what script sees, what goes back to the
// library. Each text is read once more in a plain way, and both readings must agree.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "components/component_texts.h"
#include "plugin/av_control_plugin.h"
#include "tests/support/script_object.h"
#include "tests/unit/components/random_record.h"
#include "tests/unit/components/record_text.h"
#include "tests/unit/player/player_test_base.h"

using fixture::integer;
using fixture::itemOf;
using fixture::objectArgument;
using fixture::objectFrom;
using fixture::readShown;
using fixture::ScriptObject;
using records::Generator;
using records::plainReading;
using records::Values;
using ::testing::ElementsAre;

namespace {

/// What the tests need to know of a kind of component.
struct Video {
  using Owned = OwnedVideo;
  static constexpr int kType = 0;
  static constexpr std::string_view kFields = records::kVideoFields;
  static constexpr const char* kKey = "VIDEO_COMPONENT.";
  static constexpr auto kCreate = hlpCreateAVVideoComponent;
};

struct Audio {
  using Owned = OwnedAudio;
  static constexpr int kType = 1;
  static constexpr std::string_view kFields = records::kAudioFields;
  static constexpr const char* kKey = "AUDIO_COMPONENT.";
  static constexpr auto kCreate = hlpCreateAVAudioComponent;
};

struct Subtitle {
  using Owned = OwnedSubtitle;
  static constexpr int kType = 2;
  static constexpr std::string_view kFields = records::kSubtitleFields;
  static constexpr const char* kKey = "SUBTITLE_COMPONENT.";
  static constexpr auto kCreate = hlpCreateAVSubtitleComponent;
};

/// Reads from a block of exactly the text's size: a read past its end is one past the block's.
template <typename Kind>
typename Kind::Owned read(const std::string& text) {
  const auto exact = std::make_unique<char[]>(text.size() + 1);
  std::memcpy(exact.get(), text.c_str(), text.size() + 1);
  return typename Kind::Owned(Kind::kCreate(exact.get()));
}

template <typename Kind>
std::optional<Values> valuesRead(const std::string& text) {
  const auto record = read<Kind>(text);
  return record != nullptr ? std::optional(records::valuesOf(*record)) : std::nullopt;
}

template <typename Kind>
class RecordRoundTripTest : public ::testing::Test {};

using Kinds = ::testing::Types<Video, Audio, Subtitle>;
TYPED_TEST_SUITE(RecordRoundTripTest, Kinds);

TYPED_TEST(RecordRoundTripTest, ReadsWhatThePlainReadingReads) {
  Generator random(1);
  for (int round = 0; round < 3000; ++round) {
    const std::string text = random.record(TypeParam::kFields);

    ASSERT_EQ(valuesRead<TypeParam>(text), plainReading(text, TypeParam::kFields)) << text;
  }
}

TYPED_TEST(RecordRoundTripTest, ReadsBlemishedTextsAlike) {
  Generator random(2);
  int refused = 0;
  for (int round = 0; round < 5000; ++round) {
    const std::string text = random.blemished(TypeParam::kFields);
    const auto expected = plainReading(text, TypeParam::kFields);
    refused += expected ? 0 : 1;

    ASSERT_EQ(valuesRead<TypeParam>(text), expected) << text;
  }
  EXPECT_GT(refused, 1000);
  EXPECT_LT(refused, 4000) << "both ways must have been taken often";
}

/// Cut anywhere: no byte behind the cut is looked at.
TYPED_TEST(RecordRoundTripTest, ReadsCutTextsAlike) {
  Generator random(3);
  for (int round = 0; round < 3000; ++round) {
    std::string text = random.record(TypeParam::kFields);
    text.resize(random.below(text.size() + 1));

    ASSERT_EQ(valuesRead<TypeParam>(text), plainReading(text, TypeParam::kFields)) << text;
  }
}

/// All values but the ratio of a video, of which a text keeps six or two decimals.
template <typename Record>
Values comparable(const Record& record) {
  return records::valuesOf(record);
}
Values comparable(const AVVideoComponent& video) {
  Values values = records::valuesOf(video);
  values.pop_back();
  return values;
}

TYPED_TEST(RecordRoundTripTest, KeyGivesTheSameRecordAndTheSameKey) {
  Generator random(4);
  for (int round = 0; round < 3000; ++round) {
    const std::string text = random.record(TypeParam::kFields);
    const auto record = read<TypeParam>(text);
    if (record == nullptr) continue;  // two texts together spelled the word that says that there is none
    const std::string key = indexKey(*record);
    SCOPED_TRACE(key);

    const auto again = read<TypeParam>(key);

    ASSERT_NE(again, nullptr);
    ASSERT_EQ(comparable(*again), comparable(*record));
    ASSERT_EQ(indexKey(*again), key);
  }
}

/// The payload as a record text again: that of a subtitle lacks its second text, which goes in before its last value.
std::string payloadAsRecord(const AVVideoComponent& video) { return selectionPayload(video); }
std::string payloadAsRecord(const AVAudioComponent& audio) { return selectionPayload(audio); }
std::string payloadAsRecord(const AVSubtitleComponent& subtitle) {
  std::string text = selectionPayload(subtitle);
  EXPECT_EQ(std::count(text.begin(), text.end(), '|'), 12);
  const std::size_t last = text.rfind('|', text.size() - 2);
  return text.insert(last + 1, std::string(subtitle.subtitleText2) + '|');
}

TYPED_TEST(RecordRoundTripTest, PayloadGivesTheSameRecord) {
  Generator random(5);
  for (int round = 0; round < 3000; ++round) {
    const auto record = read<TypeParam>(random.record(TypeParam::kFields));
    if (record == nullptr) continue;
    const std::string payload = payloadAsRecord(*record);
    SCOPED_TRACE(payload);

    const auto again = read<TypeParam>(payload);

    ASSERT_NE(again, nullptr);
    ASSERT_EQ(comparable(*again), comparable(*record));
  }
}

// --- The library's text, through collection and script object, back to the library

class ComponentRoundTripTest : public fixture::PluginTest {
 protected:
  /// What script reads from the rows that show a field of the text.
  static Values shownBy(const ScriptObject& object, const std::vector<const char*>& rows) {
    Values values;
    for (const char* row : rows) values.push_back(readShown(object, row));
    return values;
  }

  static Values commonRows(const Values& record) {
    return {"string:" + record[1], record[2] != "0" ? "bool:true" : "bool:false", "int:" + record[3], "int:" + record[4]};
  }

  static Values expectedRows(const Values& record, Video) {
    const float ratio = std::strtof(record[9].c_str(), nullptr);
    return records::with(commonRows(record), {fixture::shown(fixture::number(static_cast<double>(ratio)))});
  }
  static Values expectedRows(const Values& record, Audio) {
    return records::with(commonRows(record),
                         {"string:" + record[10], record[11] != "0" ? "bool:true" : "bool:false", "int:" + record[12]});
  }
  static Values expectedRows(const Values& record, Subtitle) {
    return records::with(commonRows(record), {"string:" + record[10], record[12] != "0" ? "bool:true" : "bool:false"});
  }

  static std::vector<const char*> rowsOf(Video) { return {"encoding", "encrypted", "componentTag", "pid", "aspectRatio"}; }
  static std::vector<const char*> rowsOf(Audio) {
    return {"encoding", "encrypted", "componentTag", "pid", "language", "audioDescription", "audioChannels"};
  }
  static std::vector<const char*> rowsOf(Subtitle) {
    return {"encoding", "encrypted", "componentTag", "pid", "language", "hearingImpaired"};
  }

  /// What selecting an object sends, by the type that its record says and the index of its first fetch.
  static Values expectedCommands(const Values& record, int index) {
    static constexpr const char* kCommands[] = {"SELECT_VIDEO_COMPONENT ", "SELECT_AUDIO_COMPONENT ", "SELECT_SUBTITLE_COMPONENT "};
    const int type = std::atoi(record[0].c_str());
    if (type < 0 || type > 2) return {};
    return {kCommands[type] + std::to_string(index)};
  }

  fixture::TestPlugin plugin = makePlugin();
};

/// Texts that the library's buffer of 4096 bytes holds, and some that it cuts.
template <typename Kind>
std::string libraryText(Generator& random) {
  std::string text = random.below(2) == 0 ? random.record(Kind::kFields) : random.blemished(Kind::kFields);
  if (random.below(8) == 0) text.insert(text.find('|') + 1, std::string(4000 + random.below(200), 'x'));
  return text;
}

template <typename Kind>
class ComponentKindRoundTripTest : public ComponentRoundTripTest {};
TYPED_TEST_SUITE(ComponentKindRoundTripTest, Kinds);

TYPED_TEST(ComponentKindRoundTripTest, ShowsWhatTheLibrarySaid_AndSelectsIt) {
  Generator random(6);
  const ScriptObject collection = objectFrom(this->plugin, "getComponents", {integer(TypeParam::kType)});
  const std::string key = TypeParam::kKey;
  std::map<std::string, int> firstFetch;
  int shownCount = 0;
  for (int index = 0; index < 400; ++index) {
    const std::string text = libraryText<TypeParam>(random);
    SCOPED_TRACE(text);
    this->library().setProperty(key + "LENGTH", std::to_string(index + 1));
    this->library().setProperty(key + "ITEM." + std::to_string(index), text);
    const auto expected = plainReading(text.substr(0, 4095), TypeParam::kFields);

    const ScriptObject item = itemOf(collection, index);

    ASSERT_EQ(item != nullptr, expected.has_value());
    if (item == nullptr) continue;
    ++shownCount;
    ASSERT_EQ(this->shownBy(item, this->rowsOf(TypeParam())), this->expectedRows(*expected, TypeParam()));
    const int first = firstFetch.emplace(indexKey(*read<TypeParam>(text.substr(0, 4095))), index).first->second;
    this->library().clearCalls();
    this->plugin.call("selectComponent", {objectArgument(item)});
    ASSERT_EQ(this->library().actions(), this->expectedCommands(*expected, first));
  }
  EXPECT_GT(shownCount, 100);
}

/// A page's own subtitle texts: cut to 1023 bytes, then read like the library's; selecting one gives its ninth field to the page.
TEST_F(ComponentRoundTripTest, ShowsWhatThePageDescribed_AndHandsItBack) {
  Generator random(7);
  for (int round = 0; round < 40; ++round) {
    fixture::TestPlugin described = makePlugin();
    ASSERT_TRUE(described.write("numOfSubtitles", integer(10)));
    for (int slot = 0; slot < 10; ++slot) {
      std::string text = random.below(2) == 0 ? random.record(Subtitle::kFields) : random.blemished(Subtitle::kFields);
      if (random.below(4) == 0) text.insert(text.find('|') + 1, std::string(900 + random.below(200), 'x'));
      if (text.empty()) text = "|";  // an empty one is refused by the row
      SCOPED_TRACE(text);
      ASSERT_TRUE(described.write("subParamAttr", fixture::text(text)));
      const auto expected = plainReading(text.substr(0, 1023), Subtitle::kFields);

      const ScriptObject item = itemOf(objectFrom(described, "getComponents", {integer(2)}), slot);

      ASSERT_EQ(item != nullptr, expected.has_value());
      if (item == nullptr) continue;
      ASSERT_EQ(shownBy(item, rowsOf(Subtitle())), expectedRows(*expected, Subtitle()));
      log().clear();
      described.call("selectComponent", {objectArgument(item)});
      ASSERT_THAT(events(described), ElementsAre("onSelectedComponentChanged(int:2, string:" + (*expected)[8] + ")"));
    }
    destroy(described);
  }
}

// --- Selection by record

class PayloadRoundTripTest : public PlayerTestBase {
 protected:
  /// The record's payload as the library gets it.
  template <typename Owned>
  std::string sentFor(const Owned& record) {
    library().clearCalls();
    EXPECT_TRUE(player->selectActiveComponent(record.get()));
    const auto sent = library().calls(fakes::isCommand("SELECT_COMPONENT"));
    return sent.size() == 1 ? sent[0].argument.value_or("(null)") : "not sent once";
  }
};

TEST_F(PayloadRoundTripTest, TheLibraryGetsARecordBackAsItSentIt) {
  Generator random(8);
  for (int round = 0; round < 500; ++round) {
    const auto audio = read<Audio>(random.record(Audio::kFields));
    const auto video = read<Video>(random.record(Video::kFields));
    const auto subtitle = read<Subtitle>(random.record(Subtitle::kFields));
    if (!audio || !video || !subtitle) continue;

    const auto again = read<Audio>(sentFor(audio));

    ASSERT_NE(again, nullptr);
    ASSERT_EQ(records::valuesOf(*again), records::valuesOf(*audio));
    ASSERT_EQ(sentFor(video), selectionPayload(*video));
    ASSERT_EQ(sentFor(subtitle), selectionPayload(*subtitle));
  }
}

}  // namespace
