// SPDX-License-Identifier: Apache-2.0
#include "platform/script/js_text.h"

#include <gtest/gtest.h>

namespace {

struct Text {
  const char* name;
  std::string_view bytes;
  std::string_view expected;
};

class JsTextTest : public testing::TestWithParam<Text> {};

TEST_P(JsTextTest, SurvivesTheWayThroughTheEngine) {
  const script::JsText text(GetParam().bytes);

  EXPECT_EQ(script::toUtf8(static_cast<JSStringRef>(text)), GetParam().expected);
}

constexpr std::string_view kFault = "\xEF\xBF\xBD";

INSTANTIATE_TEST_SUITE_P(
    Texts, JsTextTest,
    testing::Values(Text{"Empty", "", ""}, Text{"Ascii", "abc", "abc"}, Text{"TwoBytes", "\xC3\xBC", "\xC3\xBC"},
                    Text{"ThreeBytes", "\xE2\x82\xAC", "\xE2\x82\xAC"}, Text{"FourBytes", "\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80"},
                    Text{"Nul", std::string_view("a\0b", 3), std::string_view("a\0b", 3)}, Text{"Stray", "\x80", kFault},
                    Text{"Cut", "\xE2\x82", "\xEF\xBF\xBD\xEF\xBF\xBD"}, Text{"Overlong", "\xC0\x80", "\xEF\xBF\xBD\xEF\xBF\xBD"},
                    Text{"Surrogate", "\xED\xA0\x80", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
                    Text{"TooLarge", "\xF5\x80\x80\x80", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
                    Text{"FaultInTheMiddle", "a\xFFz", "a\xEF\xBF\xBDz"}),
    [](const testing::TestParamInfo<Text>& info) { return info.param.name; });

TEST(JsTextHalvesTest, OfACharacterAreReplaced) {
  const JSChar units[] = {'a', 0xD83D, 'b', 0xDE00, 0xD83D, 0xDE00, 0xD83D};
  const script::JsText text(JSStringCreateWithCharacters(units, std::size(units)));

  EXPECT_EQ(script::toUtf8(static_cast<JSStringRef>(text)),
            "a\xEF\xBF\xBD"
            "b\xEF\xBF\xBD\xF0\x9F\x98\x80\xEF\xBF\xBD");
}

}  // namespace
