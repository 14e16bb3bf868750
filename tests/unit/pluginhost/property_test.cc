// SPDX-License-Identifier: Apache-2.0
// The plugin's own access to its property values.
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

#include "tests/unit/pluginhost/fake_plugin.h"

namespace {

using fake::read;

class PropertyTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(m_plugin.install()); }

  FakePlugin m_plugin;
};

TEST_F(PropertyTest, StartsWithTheTablesDefaults) {
  int count = 0;
  bool flag = true;
  double speed = 0;
  double ratio = 9;

  EXPECT_TRUE(m_plugin.getProperty("count", count));
  EXPECT_TRUE(m_plugin.getProperty("flag", flag));
  EXPECT_TRUE(m_plugin.getProperty("speed", speed));
  EXPECT_TRUE(m_plugin.getProperty("ratio", ratio)) << "an integer 0 under a double type code";
  EXPECT_EQ(count, 7);
  EXPECT_FALSE(flag);
  EXPECT_EQ(speed, 1.0);
  EXPECT_EQ(ratio, 0.0);
}

TEST_F(PropertyTest, ReadsBackWhatItSet) {
  int count = 0;
  bool flag = false;
  double ratio = 0;

  EXPECT_TRUE(m_plugin.setProperty("count", -12));
  EXPECT_TRUE(m_plugin.setProperty("flag", true));
  EXPECT_TRUE(m_plugin.setProperty("ratio", -2.5));

  EXPECT_TRUE(m_plugin.getProperty("count", count));
  EXPECT_TRUE(m_plugin.getProperty("flag", flag));
  EXPECT_TRUE(m_plugin.getProperty("ratio", ratio));
  EXPECT_EQ(count, -12);
  EXPECT_TRUE(flag);
  EXPECT_EQ(ratio, -2.5);
  EXPECT_EQ(read(m_plugin, "count"), "int:-12");
}

TEST_F(PropertyTest, UnknownNameIsFalseAndLeavesTheOutputAlone) {
  int integer = 11;
  bool boolean = true;
  double number = 1.5;
  char marker = 'x';
  char* text = &marker;

  EXPECT_FALSE(m_plugin.getProperty("absent", integer));
  EXPECT_FALSE(m_plugin.getProperty("absent", boolean));
  EXPECT_FALSE(m_plugin.getProperty("absent", number));
  EXPECT_FALSE(m_plugin.getProperty("absent", text));
  EXPECT_EQ(integer, 11);
  EXPECT_TRUE(boolean);
  EXPECT_EQ(number, 1.5);
  EXPECT_EQ(text, &marker);
  EXPECT_FALSE(m_plugin.setProperty("absent", 1));
  EXPECT_FALSE(m_plugin.setProperty("absent", true));
  EXPECT_FALSE(m_plugin.setProperty("absent", 1.0));
  EXPECT_FALSE(m_plugin.setProperty("absent", text));
}

TEST_F(PropertyTest, NullNameIsFalse) {
  int integer = 11;
  bool boolean = true;

  EXPECT_FALSE(m_plugin.getProperty(nullptr, integer));
  EXPECT_FALSE(m_plugin.getProperty(nullptr, boolean));
  EXPECT_FALSE(m_plugin.setProperty(nullptr, 1));
  EXPECT_FALSE(m_plugin.setProperty(nullptr, true));
}

TEST_F(PropertyTest, AnotherTypeThanTheRowsIsFalse) {
  double number = 1.5;
  int integer = 2;

  EXPECT_FALSE(m_plugin.getProperty("count", number));
  EXPECT_FALSE(m_plugin.getProperty("title", integer));
  EXPECT_FALSE(m_plugin.setProperty("count", 2.0));
  EXPECT_FALSE(m_plugin.setProperty("onThing", 2));
  EXPECT_EQ(number, 1.5);
  EXPECT_EQ(integer, 2);
  EXPECT_EQ(read(m_plugin, "count"), "int:7");
}

TEST_F(PropertyTest, NothingIsKnown_BeforeInstall) {
  FakePlugin plain;
  int count = 3;

  EXPECT_FALSE(plain.getProperty("count", count));
  EXPECT_FALSE(plain.setProperty("count", 1));
  EXPECT_EQ(read(plain, "count"), "failed");
  EXPECT_EQ(count, 3);
}

TEST_F(PropertyTest, TextIsBound_LaterReadsSeeTheBuffersPresentContent) {
  char buffer[16] = "one";
  char* bound = nullptr;

  EXPECT_TRUE(m_plugin.setProperty("title", buffer));
  EXPECT_EQ(read(m_plugin, "title"), "text:one");
  std::snprintf(buffer, sizeof(buffer), "two");

  EXPECT_EQ(read(m_plugin, "title"), "text:two");
  EXPECT_TRUE(m_plugin.getProperty("title", bound));
  EXPECT_EQ(bound, buffer);
}

TEST_F(PropertyTest, BoundEmptyTextReadsAsEmpty_AndGivesItsPointerBack) {
  char buffer[4] = "";
  char* bound = nullptr;

  EXPECT_TRUE(m_plugin.setProperty("title", buffer));

  EXPECT_EQ(read(m_plugin, "title"), "text:");
  EXPECT_TRUE(m_plugin.getProperty("title", bound));
  EXPECT_EQ(bound, buffer);
}

TEST_F(PropertyTest, TextAtItsEmptyDefaultIsNullForThePluginAndEmptyForScript) {
  char marker = 'x';
  char* text = &marker;

  EXPECT_TRUE(m_plugin.getProperty("title", text));

  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(read(m_plugin, "title"), "text:");
}

TEST_F(PropertyTest, TextBoundToNullIsNullForThePluginAndEmptyForScript) {
  char buffer[4] = "abc";
  char* text = buffer;

  EXPECT_TRUE(m_plugin.setProperty("title", buffer));
  EXPECT_TRUE(m_plugin.setProperty("title", static_cast<char*>(nullptr)));

  EXPECT_TRUE(m_plugin.getProperty("title", text));
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(read(m_plugin, "title"), "text:");
}

TEST_F(PropertyTest, TextDefaultThatIsNotEmptyReadsAsItself) {
  char* text = nullptr;

  EXPECT_EQ(read(m_plugin, "label"), "text:first label");
  EXPECT_TRUE(m_plugin.getProperty("label", text));
  ASSERT_NE(text, nullptr);
  EXPECT_STREQ(text, "first label");
}

TEST_F(PropertyTest, ReadTextSurvivesTheBuffer) {
  auto buffer = std::make_unique<std::string>("lives on in the variant, whatever becomes of the buffer");
  _CorvelNativeVariant value;
  m_plugin.setProperty("title", buffer->data());

  ASSERT_TRUE(pluginhost::readProperty(m_plugin, "title", value));
  m_plugin.setProperty("title", static_cast<char*>(nullptr));
  buffer.reset();

  EXPECT_EQ(fake::shown(value), "text:lives on in the variant, whatever becomes of the buffer");
}

TEST_F(PropertyTest, ScriptTextsAreKeptInTheHostsStorage_AndThePluginSeesThem) {
  char buffer[16] = "plugin's";
  char* text = nullptr;
  m_plugin.setProperty("title", buffer);

  EXPECT_TRUE(pluginhost::writeProperty(m_plugin, "title", fake::text("script's")));

  EXPECT_STREQ(buffer, "plugin's");
  EXPECT_TRUE(m_plugin.getProperty("title", text));
  ASSERT_NE(text, nullptr);
  EXPECT_NE(text, buffer);
  EXPECT_STREQ(text, "script's");
}

TEST_F(PropertyTest, BindingReplacesTheTextThatScriptWrote) {
  char buffer[16] = "plugin's";
  pluginhost::writeProperty(m_plugin, "title", fake::text("script's"));

  EXPECT_TRUE(m_plugin.setProperty("title", buffer));

  EXPECT_EQ(read(m_plugin, "title"), "text:plugin's");
}

TEST_F(PropertyTest, NeverRunsThunks_AndIgnoresTheAccessWord) {
  int answer = 0;
  char buffer[] = "x";
  char* size = nullptr;

  EXPECT_TRUE(m_plugin.setProperty("answer", 5)) << "a row that only the plugin writes, with a getter";
  EXPECT_TRUE(m_plugin.getProperty("answer", answer));
  EXPECT_TRUE(m_plugin.setProperty("size", buffer)) << "a row with a setter";
  EXPECT_TRUE(m_plugin.getProperty("size", size));

  EXPECT_EQ(answer, 5);
  EXPECT_EQ(size, buffer);
  EXPECT_EQ(m_plugin.getterCalls, 0);
  EXPECT_TRUE(m_plugin.setterCalls.empty());
}

TEST_F(PropertyTest, ObjectsDoNotShareValues) {
  FakePlugin other;
  ASSERT_TRUE(other.install());

  m_plugin.setProperty("count", 1);
  other.setProperty("count", 2);

  EXPECT_EQ(read(m_plugin, "count"), "int:1");
  EXPECT_EQ(read(other, "count"), "int:2");
}

TEST_F(PropertyTest, IntroducedValueIsReadAndWrittenLikeARow) {
  bool value = true;
  EXPECT_FALSE(m_plugin.getProperty("fullScreen", value));
  EXPECT_FALSE(m_plugin.setProperty("fullScreen", true));

  pluginhost::introduceProperty(m_plugin, "fullScreen", false);

  EXPECT_TRUE(m_plugin.getProperty("fullScreen", value));
  EXPECT_FALSE(value);
  EXPECT_TRUE(m_plugin.setProperty("fullScreen", true));
  EXPECT_TRUE(pluginhost::readIntroduced(m_plugin, "fullScreen", value));
  EXPECT_TRUE(value);
  EXPECT_EQ(pluginhost::findProperty(m_plugin, "fullScreen"), -1);
}

TEST_F(PropertyTest, IntroducingARowsNameWritesTheRow) {
  bool value = false;

  pluginhost::introduceProperty(m_plugin, "flag", true);

  EXPECT_TRUE(pluginhost::readIntroduced(m_plugin, "flag", value));
  EXPECT_TRUE(value);
  EXPECT_EQ(read(m_plugin, "flag"), "bool:1");
}

TEST_F(PropertyTest, IsSafeFromAnyThread) {
  constexpr int kRounds = 20000;
  static char first[] = "first";
  static char second[] = "second";
  std::atomic<bool> wrong{false};
  m_plugin.setProperty("title", first);
  pluginhost::introduceProperty(m_plugin, "fullScreen", false);

  std::thread writer([&] {
    for (int i = 0; i < kRounds; ++i) {
      m_plugin.setProperty("count", i);
      m_plugin.setProperty("ratio", i * 0.5);
      m_plugin.setProperty("title", i % 2 == 0 ? first : second);
      m_plugin.setProperty("fullScreen", i % 2 == 0);
    }
  });
  std::thread reader([&] {
    double ratio = 0;
    char* title = nullptr;
    bool fullScreen = false;
    for (int i = 0; i < kRounds; ++i) {
      m_plugin.getProperty("ratio", ratio);
      m_plugin.getProperty("title", title);
      m_plugin.getProperty("fullScreen", fullScreen);
      if (ratio * 2 != static_cast<int>(ratio * 2) || (title != first && title != second)) wrong = true;
    }
  });
  for (int i = 0; i < kRounds; ++i) {
    const std::string title = read(m_plugin, "title");
    if (title != "text:first" && title != "text:second") wrong = true;
  }
  writer.join();
  reader.join();

  EXPECT_FALSE(wrong);
  EXPECT_EQ(read(m_plugin, "count"), "int:" + std::to_string(kRounds - 1));
}

// The plugin binds null before it frees a text that was bound.
TEST_F(PropertyTest, ReadersAreDoneWithABufferOnceAnotherIsBound) {
  constexpr int kRounds = 5000;

  std::thread plugin([&] {
    for (int i = 0; i < kRounds; ++i) {
      auto text = std::make_unique<std::string>(200, static_cast<char>('a' + i % 26));
      m_plugin.setProperty("title", text->data());
      m_plugin.setProperty("title", static_cast<char*>(nullptr));
    }
  });
  std::size_t odd = 0;
  for (int i = 0; i < kRounds; ++i) {
    const std::size_t length = read(m_plugin, "title").size();
    if (length != 5 && length != 205) ++odd;
  }
  plugin.join();

  EXPECT_EQ(odd, 0U);
}

}  // namespace
