// SPDX-License-Identifier: Apache-2.0
// Component collections as script uses them, against a media library that lists components.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "components/audio_component.h"
#include "components/component_collection_holder.h"
#include "components/subtitle_component.h"
#include "components/video_component.h"
#include "plugin/av_control_plugin.h"
#include "tests/support/script_object.h"
#include "tests/unit/components/record_text.h"

using fixture::integer;
using fixture::itemOf;
using fixture::number;
using fixture::objectFrom;
using fixture::readShown;
using fixture::ScriptObject;
using fixture::TestPlugin;
using fixture::text;
using hbbtv_avc::HbbTVComponentCollectionClass;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class ComponentCollectionTest : public fixture::PluginTest {
 protected:
  /// @p kind as in the library's keys: "AUDIO", "ACTIVE_VIDEO", …; component i has the tag @p firstTag + i.
  void list(const std::string& kind, const std::vector<std::string>& records) {
    library().setProperty(kind + "_COMPONENT.LENGTH", std::to_string(records.size()));
    for (std::size_t i = 0; i < records.size(); ++i) {
      library().setProperty(kind + "_COMPONENT.ITEM." + std::to_string(i), records[i]);
    }
  }

  /// What the plugin reads from the library, in order.
  std::vector<std::string> reads() {
    std::vector<std::string> keys;
    for (const auto& call : library().calls()) {
      if (call.function == fakes::Function::kGetPlayerProperty) keys.push_back(call.name + " " + std::to_string(call.number));
    }
    return keys;
  }

  TestPlugin plugin = makePlugin();
};

struct CollectionCase {
  const char* method;
  int type;
  const char* libraryKind;
  int itemType;
};

class ComponentCollectionKindTest : public ComponentCollectionTest, public ::testing::WithParamInterface<CollectionCase> {
 protected:
  static std::string record(const std::string& tag) {
    const int type = GetParam().type;
    return type == 0 ? videoText(tag) : type == 1 ? audioText(tag) : subtitleText(tag);
  }
};

TEST_P(ComponentCollectionKindTest, ListsWhatTheLibraryLists) {
  list(GetParam().libraryKind, {record("10"), record("11")});
  const ScriptObject collection = objectFrom(plugin, GetParam().method, {integer(GetParam().type)});
  ASSERT_NE(collection, nullptr);

  EXPECT_EQ(readShown(collection, "length"), "int:2");
  const ScriptObject item = itemOf(collection, 1);

  ASSERT_NE(item, nullptr);
  EXPECT_EQ(item->type(), GetParam().itemType);
  EXPECT_EQ(readShown(item, "componentTag"), "int:11");
  EXPECT_EQ(itemOf(collection, 2), nullptr);
}

TEST_P(ComponentCollectionKindTest, AsksTheLibraryEachTime) {
  list(GetParam().libraryKind, {record("10")});
  const ScriptObject collection = objectFrom(plugin, GetParam().method, {integer(GetParam().type)});
  library().clearCalls();

  EXPECT_EQ(readShown(collection, "length"), "int:1");
  const std::string length = std::string(GetParam().libraryKind) + "_COMPONENT.LENGTH 128";
  EXPECT_THAT(reads(), ElementsAre(length));

  list(GetParam().libraryKind, {record("20"), record("21"), record("22")});
  EXPECT_EQ(readShown(collection, "length"), "int:3");
  EXPECT_EQ(readShown(itemOf(collection, 0), "componentTag"), "int:20");
}

/// The recount, the record; between them, for subtitles that may be followed by some from out of band, where those begin.
TEST_P(ComponentCollectionKindTest, ItemCountsThenReads) {
  list(GetParam().libraryKind, {record("10"), record("11")});
  const ScriptObject collection = objectFrom(plugin, GetParam().method, {integer(GetParam().type)});
  library().clearCalls();

  EXPECT_NE(itemOf(collection, 1), nullptr);

  const std::string key = std::string(GetParam().libraryKind) + "_COMPONENT.";
  std::vector<std::string> expected{key + "LENGTH 128", key + "ITEM.1 4096"};
  if (std::string(GetParam().libraryKind) == "SUBTITLE") expected.insert(expected.begin(), key + "LENGTH 128");
  EXPECT_EQ(reads(), expected);
}

TEST_P(ComponentCollectionKindTest, IsEmpty_WhenTheLibraryDoesNotAnswer) {
  const ScriptObject collection = objectFrom(plugin, GetParam().method, {integer(GetParam().type)});

  EXPECT_EQ(readShown(collection, "length"), "int:0");
  EXPECT_EQ(itemOf(collection, 0), nullptr);
}

TEST_P(ComponentCollectionKindTest, HasNoItem_WhereTheLibraryHasNone) {
  list(GetParam().libraryKind, {"NOT_AVAILABLE", "1|cut short", record("12")});
  const ScriptObject collection = objectFrom(plugin, GetParam().method, {integer(GetParam().type)});

  EXPECT_EQ(readShown(collection, "length"), "int:3");
  EXPECT_EQ(itemOf(collection, 0), nullptr);
  EXPECT_EQ(itemOf(collection, 1), nullptr);
  EXPECT_NE(itemOf(collection, 2), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Kinds, ComponentCollectionKindTest,
                         ::testing::Values(CollectionCase{"getComponents", 0, "VIDEO", 6},
                                           CollectionCase{"getComponents", 1, "AUDIO", 5},
                                           CollectionCase{"getComponents", 2, "SUBTITLE", 7},
                                           CollectionCase{"getCurrentActiveComponents", 0, "ACTIVE_VIDEO", 6},
                                           CollectionCase{"getCurrentActiveComponents", 1, "ACTIVE_AUDIO", 5},
                                           CollectionCase{"getCurrentActiveComponents", 2, "ACTIVE_SUBTITLE", 7}),
                         [](const auto& info) { return std::string(info.param.libraryKind); });

// --- The methods that give collections

TEST_F(ComponentCollectionTest, GivesTheCollectionOfAll_WithoutAnArgument) {
  const ScriptObject all = objectFrom(plugin, "getComponents");

  ASSERT_NE(all, nullptr);
  EXPECT_EQ(all->type(), 9);
  EXPECT_EQ(objectFrom(plugin, "getComponents", {fixture::undefined()}), all);
  list("VIDEO", {videoText()});
  list("AUDIO", {audioText()});
  EXPECT_EQ(readShown(all, "length"), "int:2");
}

TEST_F(ComponentCollectionTest, GivesTheSameObjectsEachTime) {
  std::vector<ScriptObject> objects;
  for (int type = 0; type < 3; ++type) {
    objects.push_back(objectFrom(plugin, "getComponents", {integer(type)}));
    objects.push_back(objectFrom(plugin, "getCurrentActiveComponents", {integer(type)}));
    EXPECT_EQ(objectFrom(plugin, "getComponents", {integer(type)}), objects[objects.size() - 2]);
  }
  objects.push_back(objectFrom(plugin, "getComponents"));

  std::sort(objects.begin(), objects.end());
  EXPECT_EQ(std::unique(objects.begin(), objects.end()) - objects.begin(), 7) << "seven collections, all told apart";
}

TEST_F(ComponentCollectionTest, AreMadeInOrder) {
  const std::vector<ScriptObject> inOrder{
      objectFrom(plugin, "getComponents", {integer(1)}),
      objectFrom(plugin, "getComponents", {integer(0)}),
      objectFrom(plugin, "getComponents", {integer(2)}),
      objectFrom(plugin, "getComponents"),
      objectFrom(plugin, "getCurrentActiveComponents", {integer(1)}),
      objectFrom(plugin, "getCurrentActiveComponents", {integer(0)}),
      objectFrom(plugin, "getCurrentActiveComponents", {integer(2)}),
  };

  const auto madeBefore = [](const ScriptObject& left, const ScriptObject& right) {
    return pluginhost::objectId(*left) < pluginhost::objectId(*right);
  };
  EXPECT_TRUE(std::is_sorted(inOrder.begin(), inOrder.end(), madeBefore));
}

/// A browser may initialise twice: the page then gets new collections, and the first ones go.
TEST_F(ComponentCollectionTest, AreReplaced_OnASecondInitialisation) {
  const std::weak_ptr<CorvelNativePropertyBase> first = objectFrom(plugin, "getComponents", {integer(1)});
  const ScriptObject kept = objectFrom(plugin, "getComponents");
  ASSERT_FALSE(first.expired());

  ASSERT_TRUE(plugin.base->initPlugin());
  list("AUDIO", {audioText("20")});

  EXPECT_TRUE(first.expired());
  EXPECT_NE(objectFrom(plugin, "getComponents"), kept);
  EXPECT_EQ(readShown(objectFrom(plugin, "getComponents", {integer(1)}), "length"), "int:1");
  EXPECT_EQ(readShown(kept, "length"), "int:1") << "one that script holds still answers";
}

TEST_F(ComponentCollectionTest, GoWithTheElement_AndTheirItemsWithThem) {
  list("AUDIO", {audioText("20")});
  const std::weak_ptr<CorvelNativePropertyBase> collection = objectFrom(plugin, "getComponents", {integer(1)});
  const std::weak_ptr<CorvelNativePropertyBase> item = itemOf(collection.lock(), 0);
  ASSERT_FALSE(item.expired()) << "the collection keeps it";

  plugin.base->willBeDestroyed();

  EXPECT_TRUE(collection.expired());
  EXPECT_TRUE(item.expired());
}

TEST_F(ComponentCollectionTest, GivesNull_ForAnUnknownType) {
  EXPECT_EQ(plugin.callShown("getComponents", {integer(3)}), "object:(null)");
  EXPECT_EQ(plugin.callShown("getComponents", {integer(-1)}), "object:(null)");
  EXPECT_EQ(plugin.callShown("getCurrentActiveComponents", {integer(3)}), "object:(null)");
}

TEST_F(ComponentCollectionTest, GetComponentsFails_ForAnArgumentOfAnotherType) {
  EXPECT_EQ(plugin.callShown("getComponents", {text("0")}), "failed");
  EXPECT_EQ(plugin.callShown("getComponents", {number(0.5)}), "failed");
  EXPECT_EQ(plugin.callShown("getComponents", {fixture::boolean(true)}), "failed");
  EXPECT_EQ(plugin.callShown("getComponents", {fixture::noValue()}), "failed");
  EXPECT_EQ(plugin.callShown("getComponents", {fixture::objectArgument(objectFrom(plugin, "getComponents"))}), "failed");
}

/// Deliberate: its argument is not checked; an empty slot and what holds no integer read as 0.
TEST_F(ComponentCollectionTest, GetCurrentActiveComponentsTakesAnyArgument) {
  const ScriptObject activeVideo = objectFrom(plugin, "getCurrentActiveComponents", {integer(0)});

  EXPECT_EQ(objectFrom(plugin, "getCurrentActiveComponents"), activeVideo);
  EXPECT_EQ(objectFrom(plugin, "getCurrentActiveComponents", {fixture::noValue()}), activeVideo);
  EXPECT_EQ(objectFrom(plugin, "getCurrentActiveComponents", {fixture::boolean(true)}),
            objectFrom(plugin, "getCurrentActiveComponents", {integer(1)}));
  EXPECT_EQ(objectFrom(plugin, "getCurrentActiveComponents", {text("1")}), activeVideo);
  EXPECT_EQ(objectFrom(plugin, "getCurrentActiveComponents", {number(1.5)}), activeVideo);
}

TEST_F(ComponentCollectionTest, MethodsFail_OnADeinitialisedObject) {
  plugin.base->willBeDestroyed();

  for (const char* method : {"getComponents", "getCurrentActiveComponents", "selectComponent", "unselectComponent"}) {
    EXPECT_EQ(plugin.callShown(method, {integer(0)}), "failed") << method;
  }
}

// --- Tables and casts

TEST_F(ComponentCollectionTest, Table) {
  EXPECT_THAT(fixture::shownRows(HbbTVComponentCollectionClass::sm_properties, HbbTVComponentCollectionClass::sm_prop_length),
              ElementsAre("length 3 0 int:0 getter"));
  EXPECT_THAT(pluginhost::methodRows(*objectFrom(plugin, "getComponents")), ElementsAre("item"));
}

TEST_F(ComponentCollectionTest, CastsToItsOwnClassOnly) {
  const ScriptObject all = objectFrom(plugin, "getComponents");

  EXPECT_EQ(HbbTVComponentCollectionClass::cast(all.get()), all.get());
  EXPECT_EQ(HbbTVComponentCollectionClass::cast(plugin.base.get()), nullptr);
  EXPECT_EQ(HbbTVComponentCollectionClass::cast(nullptr), nullptr);
}

TEST_F(ComponentCollectionTest, RowsFail_OnAnotherObject) {
  _CorvelNativeVariant result;
  const _CorvelNativeVariant argument = integer(0);

  EXPECT_FALSE(HbbTVComponentCollectionClass::sm_properties[0].getter(plugin.base.get(), &result));
  EXPECT_FALSE(HbbTVComponentCollectionClass::sm_methods[0].function(plugin.base.get(), &argument, 1, &result));
  EXPECT_EQ(result.details.type, CORVEL_UNDEFINED);
}

// --- Items

TEST_F(ComponentCollectionTest, ItemFailsForANegativeIndex_WithoutAskingTheLibrary) {
  list("AUDIO", {audioText()});
  const ScriptObject audio = objectFrom(plugin, "getComponents", {integer(1)});
  library().clearCalls();

  EXPECT_EQ(itemOf(audio, -1), nullptr);

  EXPECT_THAT(reads(), IsEmpty());
}

/// The index is not held against the length: the library decides.
TEST_F(ComponentCollectionTest, ItemAsksForAnyIndex) {
  library().setProperty("AUDIO_COMPONENT.ITEM.2147483647", audioText("99"));
  const ScriptObject audio = objectFrom(plugin, "getComponents", {integer(1)});

  EXPECT_EQ(readShown(itemOf(audio, 2147483647), "componentTag"), "int:99");
}

TEST_F(ComponentCollectionTest, ItemWithoutAnArgumentIsTheFirst) {
  list("AUDIO", {audioText("7")});
  const ScriptObject audio = objectFrom(plugin, "getComponents", {integer(1)});
  _CorvelNativeVariant result;

  ASSERT_TRUE(fixture::callMethod(audio, "item", {}, result));

  EXPECT_EQ(readShown(result.object.object, "componentTag"), "int:7");
}

/// Deliberate: no argument fails for its type.
TEST_F(ComponentCollectionTest, ItemTakesAnyArgument) {
  list("AUDIO", {audioText("7"), audioText("8")});
  const ScriptObject audio = objectFrom(plugin, "getComponents", {integer(1)});

  EXPECT_EQ(readShown(itemOf(audio, fixture::boolean(true)), "componentTag"), "int:8");
  for (const _CorvelNativeVariant& none : {text("1"), number(1.5), number(-1.5), fixture::noValue(), fixture::undefined()}) {
    EXPECT_EQ(readShown(itemOf(audio, none), "componentTag"), "int:7") << fixture::shown(none);
  }
}

TEST_F(ComponentCollectionTest, KeepsTheLastObjectOfAnIndexAlive) {
  list("AUDIO", {audioText("7")});
  const ScriptObject audio = objectFrom(plugin, "getComponents", {integer(1)});
  const std::weak_ptr<CorvelNativePropertyBase> first = itemOf(audio, 0);
  EXPECT_FALSE(first.expired());

  const std::weak_ptr<CorvelNativePropertyBase> second = itemOf(audio, 0);

  EXPECT_TRUE(first.expired()) << "replaced by the next one for that index";
  EXPECT_FALSE(second.expired());
}

TEST_F(ComponentCollectionTest, KeepsTheLastObject_WhereTheLibraryHasNoneAnyMore) {
  list("AUDIO", {audioText("7")});
  const ScriptObject audio = objectFrom(plugin, "getComponents", {integer(1)});
  const std::weak_ptr<CorvelNativePropertyBase> first = itemOf(audio, 0);
  list("AUDIO", {"NOT_AVAILABLE"});

  EXPECT_EQ(itemOf(audio, 0), nullptr);

  EXPECT_FALSE(first.expired());
}

TEST_F(ComponentCollectionTest, ScriptKeepsAnItemPastItsReplacement) {
  list("AUDIO", {audioText("7")});
  const ScriptObject audio = objectFrom(plugin, "getComponents", {integer(1)});
  const ScriptObject first = itemOf(audio, 0);
  list("AUDIO", {audioText("8")});

  const ScriptObject second = itemOf(audio, 0);

  EXPECT_NE(first, second);
  EXPECT_EQ(readShown(first, "componentTag"), "int:7");
  EXPECT_EQ(readShown(first, "language"), "string:deu");
  EXPECT_EQ(readShown(second, "componentTag"), "int:8");
}

// --- The collection of all

/// Videos, then audios; the subtitle index is deliberately not rebased.
TEST_F(ComponentCollectionTest, AllListsVideosThenAudios) {
  list("VIDEO", {videoText("10")});
  list("AUDIO", {audioText("20"), audioText("21")});
  list("SUBTITLE", {subtitleText("30")});
  const ScriptObject all = objectFrom(plugin, "getComponents");
  library().clearCalls();

  EXPECT_EQ(readShown(all, "length"), "int:4");
  EXPECT_THAT(reads(), ElementsAre("VIDEO_COMPONENT.LENGTH 128", "AUDIO_COMPONENT.LENGTH 128", "SUBTITLE_COMPONENT.LENGTH 128"));

  EXPECT_EQ(readShown(itemOf(all, 0), "componentTag"), "int:10");
  EXPECT_EQ(readShown(itemOf(all, 1), "componentTag"), "int:20");
  EXPECT_EQ(readShown(itemOf(all, 2), "componentTag"), "int:21");
  EXPECT_EQ(itemOf(all, 3), nullptr);
}

TEST_F(ComponentCollectionTest, AllAsksForTheUnchangedSubtitleIndex) {
  list("VIDEO", {videoText("10")});
  list("SUBTITLE", {subtitleText("30"), subtitleText("31")});
  const ScriptObject all = objectFrom(plugin, "getComponents");

  EXPECT_EQ(readShown(all, "length"), "int:3");
  EXPECT_EQ(readShown(itemOf(all, 1), "componentTag"), "int:31");
  EXPECT_EQ(itemOf(all, 2), nullptr);
}

/// The recount, where the library's own subtitles end, and the record only when it is one of those.
TEST_F(ComponentCollectionTest, AllCountsThenReads_ForASubtitle) {
  list("VIDEO", {videoText("10")});
  list("SUBTITLE", {subtitleText("30"), subtitleText("31")});
  const ScriptObject all = objectFrom(plugin, "getComponents");
  library().clearCalls();

  EXPECT_NE(itemOf(all, 1), nullptr);
  EXPECT_THAT(reads(), ElementsAre("VIDEO_COMPONENT.LENGTH 128", "AUDIO_COMPONENT.LENGTH 128", "SUBTITLE_COMPONENT.LENGTH 128",
                                   "SUBTITLE_COMPONENT.LENGTH 128", "SUBTITLE_COMPONENT.ITEM.1 4096"));
  library().clearCalls();

  EXPECT_EQ(itemOf(all, 2), nullptr);
  EXPECT_THAT(reads(), ElementsAre("VIDEO_COMPONENT.LENGTH 128", "AUDIO_COMPONENT.LENGTH 128", "SUBTITLE_COMPONENT.LENGTH 128",
                                   "SUBTITLE_COMPONENT.LENGTH 128"));
}

TEST_F(ComponentCollectionTest, AllNeverSeesSubtitlesFromOutOfBand) {
  EXPECT_TRUE(plugin.write("numOfSubtitles", integer(1)));
  EXPECT_TRUE(plugin.write("subParamAttr", text(subtitleText("40"))));
  const ScriptObject all = objectFrom(plugin, "getComponents");

  EXPECT_EQ(readShown(all, "length"), "int:0");
  EXPECT_EQ(itemOf(all, 0), nullptr);
}

// --- Lengths as the library may give them

TEST_F(ComponentCollectionTest, ReadsLengthsLikeAnyNumber) {
  const ScriptObject audio = objectFrom(plugin, "getComponents", {integer(1)});

  library().setProperty("AUDIO_COMPONENT.LENGTH", "3 tracks");
  EXPECT_EQ(readShown(audio, "length"), "int:3");
  library().setProperty("AUDIO_COMPONENT.LENGTH", "none");
  EXPECT_EQ(readShown(audio, "length"), "int:0");
  library().setProperty("AUDIO_COMPONENT.LENGTH", "-2");
  EXPECT_EQ(readShown(audio, "length"), "int:-2");
}

TEST_F(ComponentCollectionTest, SumsOfAbsurdLengthsSaturate) {
  const ScriptObject all = objectFrom(plugin, "getComponents");
  for (const char* key : {"VIDEO_COMPONENT.LENGTH", "AUDIO_COMPONENT.LENGTH", "SUBTITLE_COMPONENT.LENGTH"}) {
    library().setProperty(key, "2147483647");
  }
  EXPECT_EQ(readShown(all, "length"), "int:2147483647");

  for (const char* key : {"VIDEO_COMPONENT.LENGTH", "AUDIO_COMPONENT.LENGTH", "SUBTITLE_COMPONENT.LENGTH"}) {
    library().setProperty(key, "-2147483648");
  }
  EXPECT_EQ(readShown(all, "length"), "int:-2147483648");
  EXPECT_EQ(itemOf(all, 2147483647), nullptr);
}

// --- Subtitles from out of band

class OutOfBandSubtitleTest : public ComponentCollectionTest {
 protected:
  void announce(int count, const std::vector<std::string>& texts) {
    EXPECT_TRUE(plugin.write("numOfSubtitles", integer(count)));
    for (const std::string& record : texts) EXPECT_TRUE(plugin.write("subParamAttr", text(record)));
  }

  ScriptObject subtitles = objectFrom(plugin, "getComponents", {integer(2)});
};

TEST_F(OutOfBandSubtitleTest, AreListed_WhenTheLibraryHasNone) {
  announce(2, {subtitleText("40"), subtitleText("41")});

  EXPECT_EQ(readShown(subtitles, "length"), "int:2");
  EXPECT_EQ(readShown(itemOf(subtitles, 0), "componentTag"), "int:40");
  EXPECT_EQ(readShown(itemOf(subtitles, 1), "componentTag"), "int:41");
  EXPECT_EQ(itemOf(subtitles, 2), nullptr);
}

TEST_F(OutOfBandSubtitleTest, AreListed_WhenTheLibrarySaysZero) {
  list("SUBTITLE", {});
  announce(1, {subtitleText("40")});

  EXPECT_EQ(readShown(subtitles, "length"), "int:1");
  EXPECT_EQ(readShown(itemOf(subtitles, 0), "componentTag"), "int:40");
}

TEST_F(OutOfBandSubtitleTest, FollowTheLibrarysOwn) {
  list("SUBTITLE", {subtitleText("30"), subtitleText("31")});
  announce(1, {subtitleText("40"), subtitleText("41")});

  EXPECT_EQ(readShown(subtitles, "length"), "int:3");
  EXPECT_EQ(readShown(itemOf(subtitles, 1), "componentTag"), "int:31");
  EXPECT_EQ(readShown(itemOf(subtitles, 2), "componentTag"), "int:40");
}

/// Behind the library's own the announced number is no upper bound; without any of the library's it is. Deliberate.
TEST_F(OutOfBandSubtitleTest, AreBoundedByTheirNumber_OnlyWithoutTheLibrarysOwn) {
  announce(1, {subtitleText("40"), subtitleText("41")});
  EXPECT_EQ(itemOf(subtitles, 1), nullptr);

  list("SUBTITLE", {subtitleText("30")});
  EXPECT_EQ(readShown(itemOf(subtitles, 2), "componentTag"), "int:41");
}

TEST_F(OutOfBandSubtitleTest, AreNotReached_WhenNoneIsAnnounced) {
  list("SUBTITLE", {subtitleText("30")});
  announce(0, {subtitleText("40")});

  EXPECT_EQ(readShown(subtitles, "length"), "int:1");
  EXPECT_EQ(itemOf(subtitles, 1), nullptr);
}

TEST_F(OutOfBandSubtitleTest, NumberIsStoredAsItComes) {
  announce(-3, {});
  EXPECT_EQ(readShown(subtitles, "length"), "int:-3");
  EXPECT_EQ(itemOf(subtitles, 0), nullptr);

  announce(5, {});
  EXPECT_EQ(readShown(subtitles, "length"), "int:5");
  EXPECT_EQ(itemOf(subtitles, 0), nullptr) << "an empty slot holds no record";

  announce(0, {});
  EXPECT_EQ(readShown(subtitles, "length"), "int:0");
}

TEST_F(OutOfBandSubtitleTest, TenAreStoredAndNeverTakenBack) {
  for (int i = 0; i < 11; ++i) EXPECT_TRUE(plugin.write("subParamAttr", text(subtitleText(std::to_string(40 + i)))));
  announce(1000, {subtitleText("99")});

  EXPECT_EQ(readShown(itemOf(subtitles, 0), "componentTag"), "int:40") << "a new number does not start the list again";
  EXPECT_EQ(readShown(itemOf(subtitles, 9), "componentTag"), "int:49");
  EXPECT_EQ(itemOf(subtitles, 10), nullptr) << "the eleventh was dropped";
  EXPECT_EQ(itemOf(subtitles, 999), nullptr);
}

TEST_F(OutOfBandSubtitleTest, SlotsOutsideTheTableHoldNothing) {
  library().setProperty("SUBTITLE_COMPONENT.LENGTH", "-2147483648");
  announce(1, {subtitleText("40")});

  EXPECT_EQ(itemOf(subtitles, 0), nullptr);
  EXPECT_EQ(itemOf(subtitles, 2147483647), nullptr);
}

TEST_F(OutOfBandSubtitleTest, TextIsCutTo1023Bytes) {
  const std::string head = commonText(2) + "first|";
  const std::string tail = "|second|1|";
  const std::string fits = head + std::string(1023 - head.size() - tail.size(), 'l') + tail;
  const std::string tooLong = head + std::string(1024 - head.size() - tail.size(), 'l') + tail;
  announce(2, {fits, tooLong});

  EXPECT_NE(itemOf(subtitles, 0), nullptr);
  EXPECT_EQ(itemOf(subtitles, 1), nullptr) << "its last \"|\" is gone";
}

TEST_F(OutOfBandSubtitleTest, TextIsTakenByItsLength) {
  auto* const collection = HbbTVComponentCollectionClass::cast(subtitles.get());
  const std::string record = subtitleText("40");
  collection->setNumOfSubtitles(1);

  collection->collectionAttrOfParam(nullptr, 5);
  collection->collectionAttrOfParam(record.c_str(), -1);
  collection->collectionAttrOfParam((record + "junk").c_str(), static_cast<int>(record.size()));

  EXPECT_EQ(readShown(itemOf(subtitles, 0), "componentTag"), "int:40") << "texts that are none take no slot";
}

TEST_F(OutOfBandSubtitleTest, MalformedTextIsNoComponent) {
  announce(2, {"2|cut|short", "NOT_AVAILABLE"});

  EXPECT_EQ(readShown(subtitles, "length"), "int:2");
  EXPECT_EQ(itemOf(subtitles, 0), nullptr);
  EXPECT_EQ(itemOf(subtitles, 1), nullptr);
}

TEST_F(OutOfBandSubtitleTest, AreNotAmongTheActive) {
  announce(1, {subtitleText("40")});
  const ScriptObject active = objectFrom(plugin, "getCurrentActiveComponents", {integer(2)});

  EXPECT_EQ(readShown(active, "length"), "int:0");
  EXPECT_EQ(itemOf(active, 0), nullptr);
}

// --- Records of a collection by kind

TEST_F(ComponentCollectionTest, GivesRecordsOfItsOwnKindOnly) {
  list("VIDEO", {videoText("10")});
  list("AUDIO", {audioText("20")});
  list("SUBTITLE", {subtitleText("30")});
  list("ACTIVE_AUDIO", {audioText("50")});
  auto* const audio = HbbTVComponentCollectionClass::cast(objectFrom(plugin, "getComponents", {integer(1)}).get());
  auto* const activeAudio =
      HbbTVComponentCollectionClass::cast(objectFrom(plugin, "getCurrentActiveComponents", {integer(1)}).get());
  auto* const all = HbbTVComponentCollectionClass::cast(objectFrom(plugin, "getComponents").get());

  EXPECT_EQ(audio->getVideoComponent(0), nullptr);
  EXPECT_EQ(audio->getSubtitleComponent(0), nullptr);
  EXPECT_EQ(OwnedAudio(activeAudio->getAudioComponent(0))->base->componentTag, 50);
  EXPECT_EQ(OwnedAudio(all->getAudioComponent(0))->base->componentTag, 20);
  EXPECT_EQ(OwnedVideo(all->getVideoComponent(0))->base->componentTag, 10);
  EXPECT_EQ(OwnedSubtitle(all->getSubtitleComponent(0))->base->componentTag, 30);
}

// --- Kept by script longer than the element lives

TEST_F(OutOfBandSubtitleTest, AreGone_OnceTheElementIsDeinitialised) {
  announce(1, {subtitleText("40")});

  plugin.base->willBeDestroyed();

  EXPECT_EQ(readShown(subtitles, "length"), "int:0");
  EXPECT_EQ(itemOf(subtitles, 0), nullptr);
}

TEST_F(ComponentCollectionTest, KeptCollectionsAreEmpty_OnceTheElementIsGone) {
  list("VIDEO", {videoText("10")});
  list("AUDIO", {audioText("20")});
  list("ACTIVE_AUDIO", {audioText("20")});
  std::vector<ScriptObject> kept{objectFrom(plugin, "getComponents")};
  for (int type = 0; type < 3; ++type) {
    kept.push_back(objectFrom(plugin, "getComponents", {integer(type)}));
    kept.push_back(objectFrom(plugin, "getCurrentActiveComponents", {integer(type)}));
  }
  const ScriptObject item = itemOf(kept[0], 0);
  ASSERT_NE(item, nullptr);

  for (const bool gone : {false, true}) {
    gone ? drop(plugin) : plugin.base->willBeDestroyed();
    for (const ScriptObject& collection : kept) {
      EXPECT_EQ(readShown(collection, "length"), "int:0");
      EXPECT_EQ(itemOf(collection, 0), nullptr);
    }
  }

  kept.clear();
  EXPECT_EQ(readShown(item, "encoding"), "string:codec") << "a component outlives collection and element";
  EXPECT_EQ(readShown(item, "componentTag"), "int:10");
}

TEST_F(ComponentCollectionTest, CollectionsAreEmpty_WithoutAPlayer) {
  list("AUDIO", {audioText("20")});
  library().failOpens(1);
  const TestPlugin other = makePlugin();
  ASSERT_EQ(other.handle, 0UL);
  const ScriptObject audio = objectFrom(other, "getComponents", {integer(1)});

  EXPECT_EQ(readShown(audio, "length"), "int:0");
  EXPECT_EQ(itemOf(audio, 0), nullptr);
}

TEST_F(ComponentCollectionTest, CollectionsOfDifferentElementsAskTheirOwnPlayer) {
  const TestPlugin other = makePlugin();
  library().setProperty(other.handle, "AUDIO_COMPONENT.LENGTH", "4");
  library().setProperty(plugin.handle, "AUDIO_COMPONENT.LENGTH", "1");

  EXPECT_EQ(readShown(objectFrom(plugin, "getComponents", {integer(1)}), "length"), "int:1");
  EXPECT_EQ(readShown(objectFrom(other, "getComponents", {integer(1)}), "length"), "int:4");
}

}  // namespace
