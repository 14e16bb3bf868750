// SPDX-License-Identifier: Apache-2.0
// Parental ratings as a page uses them: the real plugin behind the page layer, over a media library that lists what the test tells
// it to.
#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "tests/unit/script/page_fixture.h"

namespace {

/// Script has `ratings`, the argument of an event.
class PageRatingsTest : public PageTest {
 protected:
  PageRatingsTest() {
    library().setProperty("PARENTAL_RATING.LENGTH", "2");
    library().setProperty("PARENTAL_RATING.ITEM.0", "16|dvb-si|13|3|DE|");
    library().setProperty("PARENTAL_RATING.ITEM.1", "18|oipf|18|0|AT|");
    onEvent = [this](const pluginhost::Event& event) {
      if (event.name == "onParentalRatingChange") setGlobal("ratings", binding().wrap(event.args[1].object.object));
    };
    EXPECT_TRUE(library().fireAndWait(library().lastHandle(), "ON_PARENTAL_RATING_CHANGE"));
    const guint alarm = g_timeout_add(
        100, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
    const auto deadline = std::chrono::steady_clock::now() + fakes::kDeadline;
    while (eval("typeof ratings") != "object" && std::chrono::steady_clock::now() < deadline) {
      g_main_context_iteration(nullptr, TRUE);
    }
    g_source_remove(alarm);
    EXPECT_EQ(eval("typeof ratings"), "object");
  }
};

TEST_F(PageRatingsTest, AreUndefined_OutsideTheList) {
  library().setProperty("PARENTAL_RATING.ITEM.2", "NOT_AVAILABLE");

  EXPECT_EQ(eval("ratings.length + ' ' + ratings.item(0).name + ' ' + ratings.item(1).name"), "2 16 18");
  for (const char* outside : {"ratings.item(2)", "ratings.item(9)", "ratings.item(-1)"}) {
    EXPECT_EQ(eval(std::string(outside) + " === undefined"), "true") << outside;
  }
}

}  // namespace
