// SPDX-License-Identifier: Apache-2.0
// The mark of a seen "." is set by an accepted byte, also when the whole text is refused in the end. One test for a whole process.
#include "tests/support/playing_plugin.h"

namespace {

using fixture::text;

class LoopPointTest : public fixture::PlayingPluginTest {};

TEST_F(LoopPointTest, ARefusedLoopUsesThePointUp) {
  EXPECT_FALSE(plugin.write("loop", text("1.5x")));

  EXPECT_FALSE(plugin.write("width", text("12.5")));
  EXPECT_FALSE(plugin.write("loop", text("1.5")));
  EXPECT_TRUE(plugin.write("loop", text("15")));
}

}  // namespace
