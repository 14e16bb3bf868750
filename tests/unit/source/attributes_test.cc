// SPDX-License-Identifier: Apache-2.0
// The attributes beside the source. None of these tests uses a "." in a size or a loop count: see size_point_test.
#include <cstdlib>
#include <memory>
#include <string>

#include "tests/support/playing_plugin.h"

namespace {

using fixture::integer;
using fixture::kFirstUrl;
using fixture::kNextUrl;
using fixture::lengthOf;
using fixture::Strings;
using fixture::text;
using fixture::undefined;

class AttributesTest : public fixture::PlayingPluginTest {
 protected:
  bool set(const char* name, const std::string& value) { return plugin.write(name, text(value)); }
  std::string get(const char* name) const { return plugin.readShown(name); }
  std::string playerType() {
    char* type = nullptr;
    EXPECT_TRUE(av->getPlayerType(type));
    const std::unique_ptr<char, decltype(&std::free)> owned(type, &std::free);
    return owned != nullptr ? owned.get() : "(null)";
  }
};

// type

TEST_F(AttributesTest, TypeIsKept) {
  EXPECT_TRUE(set("type", "video/mp4"));
  EXPECT_EQ("string:video/mp4", get("type"));
  EXPECT_TRUE(set("type", "a"));
  EXPECT_EQ("string:a", get("type"));
  EXPECT_EQ(Strings{}, finishedActions());
}

TEST_F(AttributesTest, TypeHasItsBounds) {
  EXPECT_TRUE(set("type", std::string(2047, 't')));
  EXPECT_FALSE(set("type", std::string(2048, 'u')));
  EXPECT_FALSE(set("type", ""));
  EXPECT_FALSE(av->JS_SetTypeParam("", 0));
  EXPECT_EQ("string:" + std::string(2047, 't'), get("type"));
}

// width and height

class SizeTest : public AttributesTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(SizeTest, TakesDigits) {
  for (const char* value : {"0", "720", "000", "123456789012345678"}) {
    EXPECT_TRUE(set(GetParam(), value)) << value;
    EXPECT_EQ(std::string("string:") + value, get(GetParam()));
  }
}

TEST_P(SizeTest, RefusesWhatIsNoNumberOrTooLong_AndKeepsTheLast) {
  ASSERT_TRUE(set(GetParam(), "640"));

  for (const char* value : {"", "12a", "-5", "+5", " 5", "5 ", "50%", "auto", ".5", "1234567890123456789"}) {
    EXPECT_FALSE(set(GetParam(), value)) << value;
  }
  EXPECT_EQ("string:640", get(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Attributes, SizeTest, ::testing::Values("width", "height"),
                         [](const auto& info) { return std::string(info.param); });

// cache

TEST_F(AttributesTest, CacheIsKeptAndSent) {
  EXPECT_TRUE(set("cache", "yes"));
  EXPECT_EQ("string:yes", get("cache"));
  EXPECT_TRUE(set("cache", "no"));
  EXPECT_EQ("string:no", get("cache"));

  EXPECT_EQ((Strings{"CACHED=yes", "CACHED=no"}), finishedActions());
}

TEST_F(AttributesTest, EmptyCacheIsNone) {
  ASSERT_TRUE(set("cache", "yes"));
  forget();

  EXPECT_TRUE(set("cache", ""));

  EXPECT_EQ("string:", get("cache"));
  EXPECT_FALSE(av->setCacheParam());
  EXPECT_EQ(Strings{}, finishedActions());
}

TEST_F(AttributesTest, CacheWithoutAPlayerIsKept_ButNotAccepted) {
  library().failOpens(1);
  const fixture::TestPlugin poor = makePlugin();

  EXPECT_FALSE(poor.write("cache", text("yes")));

  EXPECT_EQ("string:yes", poor.readShown("cache"));
}

// loop

TEST_F(AttributesTest, LoopIsANumberOrInfinite) {
  EXPECT_TRUE(set("loop", "3"));
  EXPECT_EQ("string:3", get("loop"));
  EXPECT_TRUE(set("loop", "infinite"));
  EXPECT_EQ("string:infinite", get("loop"));

  EXPECT_EQ((Strings{"LOOP=3", "LOOP=infinite"}), finishedActions());
}

TEST_F(AttributesTest, LoopRefusesOtherWords_AndKeepsTheLast) {
  ASSERT_TRUE(set("loop", "3"));
  forget();

  for (const char* value : {"", "yes", "Infinite", "infinitely", "infinit", "-1", "3x"}) {
    EXPECT_FALSE(set("loop", value)) << value;
  }

  EXPECT_EQ("string:3", get("loop"));
  EXPECT_EQ(Strings{}, finishedActions());
}

TEST_F(AttributesTest, ALongLoopIsSentWhole_AndShownCut) {
  const std::string digits(3000, '7');

  EXPECT_TRUE(set("loop", digits));

  EXPECT_EQ((Strings{"LOOP=" + digits}), finishedActions());
  EXPECT_EQ("string:" + digits.substr(0, 2047), get("loop"));
}

// subtitles

TEST_F(AttributesTest, SubtitleParametersAreAlwaysAccepted) {
  EXPECT_TRUE(set("subParamAttr", "before any number"));
  EXPECT_TRUE(plugin.write("numOfSubtitles", integer(2)));
  for (int i = 0; i < 12; ++i) {
    EXPECT_TRUE(set("subParamAttr", "entry " + std::to_string(i)));
  }
  EXPECT_TRUE(set("subParamAttr", std::string(5000, 's')));
  EXPECT_FALSE(set("subParamAttr", ""));
  EXPECT_EQ(Strings{}, finishedActions());
}

TEST_F(AttributesTest, NumberOfSubtitlesIsAnInteger) {
  EXPECT_TRUE(plugin.write("numOfSubtitles", integer(3)));
  EXPECT_TRUE(plugin.write("numOfSubtitles", integer(0)));
  EXPECT_TRUE(plugin.write("numOfSubtitles", integer(-1)));
  EXPECT_FALSE(plugin.write("numOfSubtitles", text("3")));
  EXPECT_FALSE(plugin.write("numOfSubtitles", fixture::number(3.5)));
  EXPECT_FALSE(plugin.write("numOfSubtitles", undefined()));
}

// player type

TEST_F(AttributesTest, PlayerTypeIsKept) {
  EXPECT_EQ("", playerType());
  EXPECT_TRUE(set("playerType", "application/ttml+xml"));
  EXPECT_EQ("application/ttml+xml", playerType());
  EXPECT_FALSE(set("playerType", ""));
  EXPECT_EQ("application/ttml+xml", playerType());
}

TEST_F(AttributesTest, PlayerTypeIsCutToItsBuffer) {
  EXPECT_TRUE(set("playerType", std::string(257, 'p')));
  EXPECT_EQ(std::string(257, 'p'), playerType());
  EXPECT_TRUE(set("playerType", std::string(5000, 'q')));
  EXPECT_EQ(std::string(257, 'q'), playerType());
}

// user agent and window size

TEST_F(AttributesTest, UserAgentAndWindowSizeWaitForTheNextSource) {
  ASSERT_TRUE(setData(kFirstUrl));
  forget();

  EXPECT_TRUE(set("userAgent", "agent"));
  EXPECT_TRUE(set("nativeWindowSize", "1x1"));
  EXPECT_EQ(Strings{}, finishedActions());
  ASSERT_TRUE(setData(kNextUrl));

  EXPECT_EQ((Strings{"FORCED_FORMAT=", "USER_AGENT=agent", "NATIVE_WINDOW_SIZE=1x1", std::string("INPUT=") + kNextUrl}),
            finishedActions());
}

TEST_F(AttributesTest, EmptyUserAgentAndWindowSizeAreRefused) {
  EXPECT_FALSE(set("userAgent", ""));
  EXPECT_FALSE(set("nativeWindowSize", ""));
}

// The player borrows what it is given: a text stays as it was when its command was queued.

TEST_F(AttributesTest, QueuedTextsAreNotChangedByLaterOnes) {
  ASSERT_TRUE(set("type", "video/mp4"));
  ASSERT_TRUE(set("userAgent", "first agent"));
  ASSERT_TRUE(set("nativeWindowSize", "1x1"));
  const auto blocked = blockWorker();

  ASSERT_TRUE(av->setDataProperty(kFirstUrl, lengthOf(kFirstUrl)));
  ASSERT_TRUE(set("loop", "1"));
  ASSERT_TRUE(set("cache", "yes"));
  ASSERT_TRUE(set("type", "audio/mp4"));
  ASSERT_TRUE(set("userAgent", "second agent"));
  ASSERT_TRUE(set("nativeWindowSize", "2x2"));
  ASSERT_TRUE(set("loop", "2"));
  ASSERT_TRUE(set("cache", "no"));
  blocked->release();

  const Strings expected{"FORCED_FORMAT=video/mp4",
                         "USER_AGENT=first agent",
                         "NATIVE_WINDOW_SIZE=1x1",
                         std::string("INPUT=") + kFirstUrl,
                         "LOOP=1",
                         "CACHED=yes",
                         "LOOP=2",
                         "CACHED=no"};
  EXPECT_EQ(expected, finishedActions());
}

TEST_F(AttributesTest, QueuedTextsAreNotChangedByRefusedOnes) {
  const auto blocked = blockWorker();
  Strings expected;
  for (int i = 0; i < Player::sm_max_commands; ++i) {
    ASSERT_TRUE(set("loop", std::to_string(100 + i)));
    expected.push_back("LOOP=" + std::to_string(100 + i));
  }

  for (int i = 0; i < 500; ++i) {
    ASSERT_FALSE(set("loop", std::string(100, '9')));  // the queue is full; the page goes on all the same
  }
  blocked->release();

  ASSERT_TRUE(library().waitForCount(fakes::isWrite("LOOP"), expected.size()));
  EXPECT_EQ(expected, finishedActions());
}

}  // namespace
