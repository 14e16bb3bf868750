// SPDX-License-Identifier: Apache-2.0
// The text check of "width", "height" and "loop". Its mark that a "." was seen is one for the whole process and never cleared
// (deliberate), so each case runs in a process of its own.
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <iostream>
#include <string>
#include <vector>

#include "tests/support/plugin_fixture.h"

namespace {

using fixture::TestPlugin;
using fixture::text;

struct Step {
  const char* property;
  const char* value;
  bool accepted;
};

struct Case {
  const char* name;
  std::vector<Step> steps;
};

const Case kCases[] = {
    {"Digits", {{"width", "640", true}, {"height", "360", true}, {"width", "0", true}, {"width", "0012345678901234", true}}},
    {"NotDigits",
     {{"width", "12a", false},
      {"width", "-5", false},
      {"width", "+5", false},
      {"width", " 5", false},
      {"width", "5 ", false},
      {"width", "1e3", false},
      {"height", "100%", false},
      {"height", "10px", false},
      {"height", "1,5", false}}},
    {"FirstPointIsAccepted", {{"width", "12.5", true}}},
    {"SecondPointEverIsRefused", {{"width", "12.5", true}, {"width", "12.5", false}, {"height", "3.0", false}}},
    {"PointOfHeightCountsForWidth", {{"height", "3.0", true}, {"width", "12.5", false}}},
    {"PointOfLoopCountsToo", {{"loop", "2.5", true}, {"width", "12.5", false}}},
    {"PointOfWidthCountsForLoop",
     {{"width", "2.5", true}, {"loop", "2.5", false}, {"loop", "2", true}, {"loop", "infinite", true}}},
    {"DigitsGoOnAfterAPoint", {{"width", "12.5", true}, {"width", "12", true}, {"height", "9", true}}},
    {"LeadingPointIsRefusedAndLeavesNoMark", {{"width", ".5", false}, {"width", ".", false}, {"width", "1.5", true}}},
    {"TrailingPointIsAccepted", {{"width", "5.", true}, {"width", "5.", false}}},
    {"TwoPointsAreRefusedAndMark", {{"width", "1.2.3", false}, {"width", "1.2", false}}},
    {"MarkStays_WhenALaterByteIsRefused", {{"width", "1.x", false}, {"height", "1.2", false}}},
    {"NoMark_WhenAnEarlierByteIsRefused", {{"width", "x1.5", false}, {"width", "1.5", true}}},
    {"MarkStays_WhenTheTextIsTooLong", {{"width", "1.00000000000000000", false}, {"width", "1.2", false}}},
    {"Words",
     {{"loop", "infinite", true},
      {"loop", "infinit", false},
      {"loop", "infinitely", false},
      {"loop", "INFINITE", false},
      {"width", "infinite", false},
      {"loop", "3", true}}},
};

class NumericMarkTest : public fixture::PluginTest, public ::testing::WithParamInterface<Case> {
 protected:
  /// The whole case, in the child process; it ends with the number of differences.
  [[noreturn]] void runAndExit(const std::function<TestPlugin(int)>& pluginOfStep) {
    int differences = 0;
    int index = 0;
    for (const Step& step : GetParam().steps) {
      const TestPlugin plugin = pluginOfStep(index++);
      const std::string before = plugin.readShown(step.property);
      const bool accepted = plugin.write(step.property, text(step.value));
      const std::string expected = accepted ? std::string("string:") + step.value : before;
      if (accepted == step.accepted && plugin.readShown(step.property) == expected) continue;
      std::cerr << step.property << " = " << step.value << " was " << (accepted ? "accepted" : "refused") << ", reads "
                << plugin.readShown(step.property) << "\n";
      ++differences;
    }
    TearDown();
    std::exit(differences);
  }
};

TEST_P(NumericMarkTest, InOnePlugin) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        const TestPlugin plugin = makePlugin();
        runAndExit([&](int) { return plugin; });
      },
      ::testing::ExitedWithCode(0), "");
}

TEST_P(NumericMarkTest, OverAllPlugins) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(runAndExit([&](int) { return makePlugin(); }), ::testing::ExitedWithCode(0), "");
}

INSTANTIATE_TEST_SUITE_P(All, NumericMarkTest, ::testing::ValuesIn(kCases), [](const auto& info) { return info.param.name; });

}  // namespace
