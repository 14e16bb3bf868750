// SPDX-License-Identifier: Apache-2.0
// The ratings of the current content, as script uses them, against a media library that lists ratings.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "parental/parental_rating_collection.h"
#include "parental/parental_rating_object.h"
#include "platform/pluginhost/object_state.h"
#include "plugin/av_control_plugin.h"
#include "tests/support/blocked_worker.h"
#include "tests/support/script_object.h"

using fixture::integer;
using fixture::itemOf;
using fixture::readShown;
using fixture::ScriptObject;
using fixture::TestPlugin;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class ParentalRatingCollectionTest : public fixture::PluginTest {
 protected:
  ParentalRatingCollectionTest() {
    library().setProperty("PARENTAL_RATING.LENGTH", "2");
    library().setProperty("PARENTAL_RATING.ITEM.0", "16|dvb-si|13|3|DE|");
    library().setProperty("PARENTAL_RATING.ITEM.1", "18|oipf|18|0|AT|");
  }

  /// As a page gets it: the ratings argument of an event.
  ScriptObject ratingsOf(const TestPlugin& of) {
    EXPECT_TRUE(library().fireAndWait(of.handle, "ON_PARENTAL_RATING_CHANGE"));
    const auto event = log().waitFor(
        [&](const fixture::Entry& entry) { return entry.objectId == of.id && entry.name == "onParentalRatingChange"; });
    return event ? event->args[1].object.object : nullptr;
  }

  std::vector<std::string> reads() {
    std::vector<std::string> keys;
    for (const auto& call : library().calls()) {
      if (call.function == fakes::Function::kGetPlayerProperty) keys.push_back(call.name + " " + std::to_string(call.number));
    }
    return keys;
  }

  static std::vector<std::string> values(const ScriptObject& rating) {
    std::vector<std::string> lines;
    for (const char* name : {"name", "scheme", "value", "labels", "region"}) lines.push_back(readShown(rating, name));
    return lines;
  }

  TestPlugin plugin = makePlugin();
  ScriptObject ratings = ratingsOf(plugin);
};

TEST_F(ParentalRatingCollectionTest, Table) {
  EXPECT_THAT(
      fixture::shownRows(HbbTVParentalRatingCollectionAVClass::sm_properties, HbbTVParentalRatingCollectionAVClass::sm_prop_length),
      ElementsAre("length 3 0 int:0 getter", "m_ParentalRating 7 0 object:(null)"));
  EXPECT_EQ(HbbTVParentalRatingCollectionAVClass::sm_met_length, 1U);
  ASSERT_NE(ratings, nullptr);
  EXPECT_THAT(pluginhost::methodRows(*ratings), ElementsAre("item"));
  EXPECT_EQ(ratings->type(), 31);
}

TEST_F(ParentalRatingCollectionTest, LengthAsksTheLibrary) {
  library().clearCalls();

  EXPECT_EQ(readShown(ratings, "length"), "int:2");

  EXPECT_THAT(reads(), ElementsAre("PARENTAL_RATING.LENGTH 128"));
  library().setProperty("PARENTAL_RATING.LENGTH", "many");
  EXPECT_EQ(readShown(ratings, "length"), "int:0");
  library().setProperty("PARENTAL_RATING.LENGTH", std::nullopt);
  EXPECT_EQ(readShown(ratings, "length"), "int:-1");
}

TEST_F(ParentalRatingCollectionTest, ItemShowsARating) {
  library().clearCalls();

  const ScriptObject rating = itemOf(ratings, 1);

  ASSERT_NE(rating, nullptr);
  EXPECT_EQ(rating->type(), 30);
  EXPECT_THAT(values(rating), ElementsAre("string:18", "string:oipf", "int:18", "int:0", "string:AT"));
  EXPECT_THAT(reads(), ElementsAre("PARENTAL_RATING.ITEM.1 4096"));
}

/// Deliberate: there is one rating object, and each "item" refills it.
TEST_F(ParentalRatingCollectionTest, ItemGivesTheSameObjectEachTime) {
  const ScriptObject first = itemOf(ratings, 0);
  EXPECT_THAT(values(first), ElementsAre("string:16", "string:dvb-si", "int:13", "int:3", "string:DE"));

  const ScriptObject second = itemOf(ratings, 1);

  EXPECT_EQ(first, second);
  EXPECT_THAT(values(first), ElementsAre("string:18", "string:oipf", "int:18", "int:0", "string:AT"));
}

TEST_F(ParentalRatingCollectionTest, ItemFailsForANegativeIndex_WithoutAskingTheLibrary) {
  library().setProperty("PARENTAL_RATING.ITEM.-1", "16|dvb-si|13|3|DE|");
  library().clearCalls();

  EXPECT_EQ(itemOf(ratings, -1), nullptr);

  EXPECT_THAT(reads(), IsEmpty());
}

TEST_F(ParentalRatingCollectionTest, ItemFails_AndKeepsTheValues_WhenThereIsNone) {
  const ScriptObject rating = itemOf(ratings, 0);
  library().setProperty("PARENTAL_RATING.ITEM.2", "NOT_AVAILABLE");
  library().setProperty("PARENTAL_RATING.ITEM.3", "");
  library().setProperty("PARENTAL_RATING.ITEM.4", "18|oipf|18");

  for (const int index : {2, 3, 4, 5, 2147483647}) EXPECT_EQ(itemOf(ratings, index), nullptr) << index;

  EXPECT_THAT(values(rating), ElementsAre("string:16", "string:dvb-si", "int:13", "int:3", "string:DE"));
}

/// Through the row itself: what script is given does not tell a failed call from null.
TEST_F(ParentalRatingCollectionTest, ItemSucceeds_OnlyWithARating) {
  const CorvelNativeFunction item = HbbTVParentalRatingCollectionAVClass::sm_methods[0].function;
  library().setProperty("PARENTAL_RATING.ITEM.2", "NOT_AVAILABLE");
  _CorvelNativeVariant result;
  for (const int index : {0, 1}) {
    const _CorvelNativeVariant argument = integer(index);
    EXPECT_TRUE(item(ratings.get(), &argument, 1, &result)) << index;
    EXPECT_EQ(fixture::shown(result), "object") << index;
  }

  for (const int none : {2, 3}) {
    const _CorvelNativeVariant argument = integer(none);
    result = integer(77);
    EXPECT_FALSE(item(ratings.get(), &argument, 1, &result)) << none;
    EXPECT_EQ(fixture::shown(result), "object:(null)") << none;
  }

  const _CorvelNativeVariant negative = integer(-1);
  result = integer(77);
  EXPECT_FALSE(item(ratings.get(), &negative, 1, &result));
  EXPECT_EQ(fixture::shown(result), "int:77") << "left alone";
}

TEST_F(ParentalRatingCollectionTest, ItemWithoutAnArgumentIsTheFirst) {
  _CorvelNativeVariant result;

  ASSERT_TRUE(fixture::callMethod(ratings, "item", {}, result));

  EXPECT_EQ(readShown(result.object.object, "name"), "string:16");
}

/// Deliberate: no argument fails for its type; what holds no integer reads as 0.
TEST_F(ParentalRatingCollectionTest, ItemTakesAnyArgument) {
  EXPECT_EQ(readShown(itemOf(ratings, fixture::boolean(true)), "name"), "string:18");
  for (const _CorvelNativeVariant& none :
       {fixture::text("1"), fixture::number(1.5), fixture::number(-1.5), fixture::noValue(), fixture::undefined()}) {
    EXPECT_EQ(readShown(itemOf(ratings, none), "name"), "string:16") << fixture::shown(none);
  }
}

TEST_F(ParentalRatingCollectionTest, RowsFail_OnAnotherObject) {
  _CorvelNativeVariant result;
  const _CorvelNativeVariant argument = integer(0);

  EXPECT_FALSE(HbbTVParentalRatingCollectionAVClass::sm_properties[0].getter(plugin.base.get(), &result));
  EXPECT_FALSE(HbbTVParentalRatingCollectionAVClass::sm_methods[0].function(plugin.base.get(), &argument, 1, &result));
  EXPECT_EQ(HbbTVParentalRatingCollectionAVClass::cast(plugin.base.get()), nullptr);
  EXPECT_EQ(HbbTVParentalRatingCollectionAVClass::cast(nullptr), nullptr);
  EXPECT_EQ(HbbTVParentalRatingAVClass::cast(ratings.get()), nullptr);
  EXPECT_EQ(HbbTVParentalRatingCollectionAVClass::cast(ratings.get()), ratings.get());
}

/// Not by way of the player's queue: script waits for the answer.
TEST_F(ParentalRatingCollectionTest, AsksOnTheCallersThread_WhateverTheWorkerDoes) {
  const auto player = AVControlPlugin::cast(plugin.base.get())->player();
  const fixture::BlockedWorker blocked(library(), [&] { EXPECT_TRUE(player->stopBroadcast()); });
  ASSERT_TRUE(player->setLoopParam("queued"));
  library().clearCalls();

  EXPECT_EQ(readShown(ratings, "length"), "int:2");
  EXPECT_EQ(readShown(itemOf(ratings, 0), "name"), "string:16");

  EXPECT_THAT(library().actions(), IsEmpty()) << "nothing waited for the worker";
  EXPECT_THAT(reads(), ElementsAre("PARENTAL_RATING.LENGTH 128", "PARENTAL_RATING.ITEM.0 4096"));
  for (const auto& call : library().calls()) EXPECT_EQ(call.thread, std::this_thread::get_id()) << call.name;
}

/// The host keeps it for a debugger's eyes.
TEST_F(ParentalRatingCollectionTest, HasThePluginForAParent_AndItsRatingHasTheCollection) {
  EXPECT_EQ(ratings->state()->parent, plugin.base.get());
  EXPECT_EQ(itemOf(ratings, 0)->state()->parent, ratings.get());
}

/// The host may substitute the class: the method goes through the virtual table.
TEST_F(ParentalRatingCollectionTest, ItemIsVirtual) {
  class Empty : public HbbTVParentalRatingCollectionAVClass {
   public:
    using HbbTVParentalRatingCollectionAVClass::HbbTVParentalRatingCollectionAVClass;
    ScriptObject JS_getItem(int index) override {
      asked = index;
      return nullptr;
    }
    int asked = -1;
  };
  const auto empty = std::make_shared<Empty>(nullptr);
  empty->install();

  EXPECT_EQ(itemOf(empty, 4), nullptr);

  EXPECT_EQ(empty->asked, 4);
  EXPECT_EQ(readShown(empty, "length"), "int:-1") << "it has no plugin";
}

// --- While the element lives

/// A browser may initialise twice: the next event has a new collection, and the first one goes.
TEST_F(ParentalRatingCollectionTest, IsReplaced_OnASecondInitialisation) {
  ASSERT_NE(ratings, nullptr);
  const ScriptObject rating = itemOf(ratings, 0);

  ASSERT_TRUE(plugin.base->initPlugin());
  log().clear();
  const ScriptObject next = ratingsOf(plugin);

  ASSERT_NE(next, nullptr);
  EXPECT_NE(next, ratings);
  EXPECT_NE(itemOf(next, 0), rating);
  EXPECT_EQ(readShown(next, "length"), "int:2");
  EXPECT_EQ(readShown(ratings, "length"), "int:2") << "one that script holds still answers";
  const std::weak_ptr<CorvelNativePropertyBase> first = std::exchange(ratings, nullptr);
  drainEvents();  // they hold their arguments
  EXPECT_TRUE(first.expired());
}

TEST_F(ParentalRatingCollectionTest, StaysTheSame_AndAsksTheNewPlayer_AfterARenewal) {
  const ScriptObject rating = itemOf(ratings, 0);
  ASSERT_NE(rating, nullptr);

  ASSERT_TRUE(AVControlPlugin::cast(plugin.base.get())->resetPlayer());
  TestPlugin renewed = plugin;
  renewed.handle = library().lastHandle();
  ASSERT_NE(renewed.handle, plugin.handle);
  library().setProperty(renewed.handle, "PARENTAL_RATING.LENGTH", "1");
  library().setProperty(renewed.handle, "PARENTAL_RATING.ITEM.0", "12|fsk|12|0|CH|");
  log().clear();

  EXPECT_EQ(ratingsOf(renewed), ratings);
  EXPECT_EQ(readShown(ratings, "length"), "int:1");
  EXPECT_EQ(itemOf(ratings, 0), rating);
  EXPECT_THAT(values(rating), ElementsAre("string:12", "string:fsk", "int:12", "int:0", "string:CH"));
}

// --- Kept by script longer than the element lives

TEST_F(ParentalRatingCollectionTest, IsEmpty_OnceTheElementIsGone) {
  const ScriptObject rating = itemOf(ratings, 0);

  for (const bool gone : {false, true}) {
    gone ? drop(plugin) : plugin.base->willBeDestroyed();
    EXPECT_EQ(readShown(ratings, "length"), "int:-1");
    EXPECT_EQ(itemOf(ratings, 0), nullptr);
  }

  log().clear();  // it holds the event's arguments
  ratings.reset();
  EXPECT_THAT(values(rating), ElementsAre("string:16", "string:dvb-si", "int:13", "int:3", "string:DE"))
      << "a rating outlives collection and element";
}

TEST_F(ParentalRatingCollectionTest, EachElementHasItsOwn) {
  const TestPlugin other = makePlugin();
  library().setProperty(other.handle, "PARENTAL_RATING.LENGTH", "7");
  const ScriptObject others = ratingsOf(other);

  EXPECT_NE(others, ratings);
  EXPECT_EQ(readShown(others, "length"), "int:7");
  EXPECT_EQ(readShown(ratings, "length"), "int:2");
  EXPECT_NE(itemOf(others, 0), itemOf(ratings, 0));
}

TEST_F(ParentalRatingCollectionTest, ThePluginSaysMinusOne_WithoutAPlayer) {
  library().failOpens(1);
  const TestPlugin other = makePlugin();
  auto& avControl = *AVControlPlugin::cast(other.base.get());
  AVParentalRating* rating = nullptr;

  EXPECT_EQ(avControl.getParentalRatingCollectionLenght(), -1);
  EXPECT_FALSE(avControl.getParentalRatingItem(0, rating));
  EXPECT_EQ(rating, nullptr);
}

}  // namespace
