// SPDX-License-Identifier: Apache-2.0
// The script events that rights and rating words of the media library end in, from word to event.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <thread>
#include <vector>

#include "plugin/av_control_plugin.h"
#include "tests/support/script_object.h"

using fixture::Entry;
using fixture::TestPlugin;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class RightsEventTest : public fixture::PluginTest {
 protected:
  RightsEventTest() { log().clear(); }

  /// Delivers the word and waits until the worker is done with it.
  void deliver(const char* word) {
    EXPECT_TRUE(library().fireAndWait(plugin.handle, word));
    drainWorker(plugin);
  }

  TestPlugin plugin = makePlugin();
};

TEST_F(RightsEventTest, RaisesRightsErrors) {
  library().setProperty("DRM_ERROR_STATE", "1");
  library().setProperty("DRM_CONTENT_ID", "content");
  library().setProperty("DRM_SYSTEM_ID", "system");
  library().setProperty("DRM_RIGHTS_ISSUER_URL", "http://issuer.example/");

  deliver("ON_DRM_RIGHTS_ERROR");

  EXPECT_THAT(events(plugin), ElementsAre("onDRMRightsError(int:1, string:content, string:system, string:http://issuer.example/)"));
}

TEST_F(RightsEventTest, RaisesRightsErrors_WhenTheLibraryAnswersNothing) {
  deliver("ON_DRM_RIGHTS_ERROR");

  EXPECT_THAT(events(plugin), ElementsAre("onDRMRightsError(int:0, string:(null), string:(null), string:(null))"));
}

TEST_F(RightsEventTest, RaisesEachRightsErrorWithItsOwnData) {
  library().setProperty("DRM_CONTENT_ID", "first");
  deliver("ON_DRM_RIGHTS_ERROR");
  library().setProperty("DRM_CONTENT_ID", "second");
  deliver("ON_DRM_RIGHTS_ERROR");

  const std::vector<std::string> expected{"onDRMRightsError(int:0, string:first, string:(null), string:(null))",
                                          "onDRMRightsError(int:0, string:second, string:(null), string:(null))"};
  EXPECT_EQ(drainEvents(), expected) << "the host has copies of its own: the first record is freed by now";
}

TEST_F(RightsEventTest, RaisesRatingChanges) {
  library().setProperty("PARENTAL_DRM_CONTENT_ID", "content");
  library().setProperty("PARENTAL_DRM_SYSTEM_ID", "system");
  library().setProperty("PARENTAL_BLOCKED", "1");

  deliver("ON_PARENTAL_RATING_CHANGE");

  EXPECT_THAT(events(plugin), ElementsAre("onParentalRatingChange(string:content, object, string:system, bool:true)"));
}

TEST_F(RightsEventTest, RaisesRatingChanges_WithNullForEmptyTexts) {
  library().setProperty("PARENTAL_DRM_CONTENT_ID", "");
  library().setProperty("PARENTAL_DRM_SYSTEM_ID", "");

  deliver("ON_PARENTAL_RATING_CHANGE");

  EXPECT_THAT(events(plugin), ElementsAre("onParentalRatingChange(string:(null), object, string:(null), bool:false)"));
}

/// Deliberate: four arguments are declared, three are filled.
TEST_F(RightsEventTest, RaisesRatingErrors_WithAnEmptyFourthArgument) {
  library().setProperty("PARENTAL_DRM_CONTENT_ID", "content");
  library().setProperty("PARENTAL_DRM_SYSTEM_ID", "");

  deliver("ON_PARENTAL_RATING_ERROR");

  EXPECT_THAT(events(plugin), ElementsAre("onParentalRatingError(string:content, object, string:, undefined)"));
}

TEST_F(RightsEventTest, HandsOverTheSameRatingsEachTime) {
  deliver("ON_PARENTAL_RATING_CHANGE");
  deliver("ON_PARENTAL_RATING_ERROR");

  std::set<CorvelNativePropertyBase*> ratings;
  for (const Entry& entry : log().entries()) {
    if (entry.kind == Entry::Kind::kEvent) ratings.insert(entry.args[1].object.object.get());
  }
  ASSERT_EQ(ratings.size(), 1U);
  EXPECT_EQ((*ratings.begin())->type(), 31);
}

TEST_F(RightsEventTest, RaisesThemOnTheWorker) {
  for (const char* word : {"ON_DRM_RIGHTS_ERROR", "ON_PARENTAL_RATING_CHANGE", "ON_PARENTAL_RATING_ERROR"}) deliver(word);

  const auto player = AVControlPlugin::cast(plugin.base.get())->player();
  ASSERT_TRUE(player->stopBroadcast());
  const auto queue = library().waitForCall(fakes::isCommand("STOPBROADCAST"));
  ASSERT_TRUE(queue);
  const auto entries = log().entries();
  EXPECT_EQ(entries.size(), 3U);
  for (const Entry& entry : entries) EXPECT_EQ(entry.thread, queue->thread) << entry.name;
  EXPECT_NE(queue->thread, std::this_thread::get_id());
  EXPECT_NE(queue->thread, library().dispatcherThread(plugin.handle));
}

/// The ratings themselves are read when script asks, not here.
TEST_F(RightsEventTest, ReadsNoRatings) {
  deliver("ON_PARENTAL_RATING_CHANGE");

  EXPECT_EQ(library().count(fakes::isRead("PARENTAL_RATING.LENGTH")), 0U);
  EXPECT_EQ(library().count(fakes::isRead("PARENTAL_RATING.ITEM.0")), 0U);
}

TEST_F(RightsEventTest, RaisesNothing_AfterTheElementIsGone) {
  const unsigned long handle = plugin.handle;
  destroy(plugin);
  log().clear();

  for (const char* word : {"ON_DRM_RIGHTS_ERROR", "ON_PARENTAL_RATING_CHANGE", "ON_PARENTAL_RATING_ERROR"}) {
    EXPECT_TRUE(library().invoke(handle, word)) << "a callback that the library had started before the end";
  }

  EXPECT_THAT(log().entries(), IsEmpty());
}

}  // namespace
