// SPDX-License-Identifier: Apache-2.0
// The mark that a "." was seen in a size belongs to the process and is never taken back. So this program has one test only.
#include <string>

#include "tests/support/playing_plugin.h"

namespace {

using fixture::Strings;
using fixture::text;

class SizePointTest : public fixture::PlayingPluginTest {};

TEST_F(SizePointTest, OnlyTheFirstPointOfTheProcessIsAccepted) {
  EXPECT_FALSE(plugin.write("width", text(".5")));  // a point in front is refused and leaves no mark
  EXPECT_FALSE(plugin.write("height", text(".")));

  EXPECT_TRUE(plugin.write("width", text("12.5")));
  EXPECT_EQ("string:12.5", plugin.readShown("width"));

  EXPECT_FALSE(plugin.write("width", text("12.5")));
  EXPECT_FALSE(plugin.write("height", text("3.0")));
  EXPECT_FALSE(plugin.write("loop", text("1.0")));
  const fixture::TestPlugin other = makePlugin();
  EXPECT_FALSE(other.write("width", text("7.5")));
  EXPECT_TRUE(other.write("width", text("75")));
  EXPECT_EQ("string:12.5", plugin.readShown("width"));
  EXPECT_EQ(Strings{}, finishedActions());
}

}  // namespace
