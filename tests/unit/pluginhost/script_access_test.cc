// SPDX-License-Identifier: Apache-2.0
// What script may do with rows, and what the thunks behind them are given.
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "tests/unit/pluginhost/fake_plugin.h"

namespace {

using fake::read;
using pluginhost::callMethod;
using pluginhost::writeProperty;

class ScriptAccessTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(m_plugin.install()); }

  std::string call(std::string_view name, const _CorvelNativeVariant* args = nullptr, unsigned int argc = 0) {
    _CorvelNativeVariant result = fake::text("left over");
    const bool ok = callMethod(m_plugin, name, args, argc, result);
    return ok ? fake::shown(result) : "failed/" + fake::shown(result);
  }

  FakePlugin m_plugin;
};

TEST_F(ScriptAccessTest, GetterAnswers_AndTheStoredValueDoesNot) {
  m_plugin.setProperty("answer", 5);

  EXPECT_EQ(read(m_plugin, "answer"), "int:42");
  EXPECT_EQ(m_plugin.getterCalls, 1);
}

TEST_F(ScriptAccessTest, FailedGetterFails_AndLeavesUndefined) {
  _CorvelNativeVariant value = fake::text("old");

  EXPECT_FALSE(pluginhost::readProperty(m_plugin, "broken", value));

  EXPECT_EQ(fake::shown(value), "undefined");
}

TEST_F(ScriptAccessTest, GetterThatSetsOnlyTheTypeCodeFindsAFreshResult) {
  _CorvelNativeVariant value = fake::text("a text that must be released");

  EXPECT_TRUE(pluginhost::readProperty(m_plugin, "nothing", value));

  EXPECT_EQ(fake::shown(value), "null");
  EXPECT_EQ(value.string.text, nullptr);
}

TEST_F(ScriptAccessTest, HandlerSlotTakesAnything_AndReadsAsNull) {
  EXPECT_TRUE(writeProperty(m_plugin, "onThing", fake::integer(3)));
  EXPECT_TRUE(writeProperty(m_plugin, "onThing", fake::null()));
  EXPECT_TRUE(writeProperty(m_plugin, "onThing", fake::object(nullptr)));

  EXPECT_EQ(read(m_plugin, "onThing"), "null");
}

TEST_F(ScriptAccessTest, WriteWithoutASetterIsStored) {
  EXPECT_TRUE(writeProperty(m_plugin, "level", fake::integer(9)));
  EXPECT_TRUE(writeProperty(m_plugin, "flag", fake::boolean(true)));
  EXPECT_TRUE(writeProperty(m_plugin, "ratio", fake::number(0.25)));
  EXPECT_TRUE(writeProperty(m_plugin, "attribute", fake::text("set")));

  EXPECT_EQ(read(m_plugin, "level"), "int:9");
  EXPECT_EQ(read(m_plugin, "flag"), "bool:1");
  EXPECT_EQ(read(m_plugin, "ratio"), "double:0.25");
  EXPECT_EQ(read(m_plugin, "attribute"), "text:set");
}

TEST_F(ScriptAccessTest, WriteIsIgnored_WhereOnlyThePluginWrites) {
  EXPECT_FALSE(writeProperty(m_plugin, "count", fake::integer(9)));
  EXPECT_FALSE(writeProperty(m_plugin, "locked", fake::text("no")));
  EXPECT_FALSE(writeProperty(m_plugin, "answer", fake::integer(9)));

  EXPECT_EQ(read(m_plugin, "count"), "int:7");
  EXPECT_EQ(read(m_plugin, "locked"), "text:");
}

TEST_F(ScriptAccessTest, StoredTextMayHoldNuls) {
  const std::string bytes("a\0b", 3);

  EXPECT_TRUE(writeProperty(m_plugin, "title", fake::text(bytes)));

  EXPECT_EQ(read(m_plugin, "title"), "text:" + bytes);
}

TEST_F(ScriptAccessTest, SetterRuns_AndTheHostStoresNothing) {
  EXPECT_TRUE(writeProperty(m_plugin, "size", fake::text("100")));

  ASSERT_EQ(m_plugin.setterCalls.size(), 1U);
  EXPECT_EQ(m_plugin.setterCalls[0].text, "100");
  EXPECT_EQ(read(m_plugin, "size"), "text:");
}

TEST_F(ScriptAccessTest, SettersRefusalIsTheWritesResult) {
  m_plugin.setterResult = false;

  EXPECT_FALSE(writeProperty(m_plugin, "link", fake::text("x")));
  EXPECT_FALSE(writeProperty(m_plugin, "index", fake::text("x")));
  EXPECT_EQ(m_plugin.setterCalls.size(), 2U);
}

TEST_F(ScriptAccessTest, AttributeSettersGetNumbersAndBooleansAsText) {
  writeProperty(m_plugin, "size", fake::integer(640));
  writeProperty(m_plugin, "size", fake::number(12.5));
  writeProperty(m_plugin, "size", fake::boolean(true));

  ASSERT_EQ(m_plugin.setterCalls.size(), 3U);
  EXPECT_EQ(m_plugin.setterCalls[0].text, "640");
  EXPECT_EQ(m_plugin.setterCalls[1].text, "12.5");
  EXPECT_EQ(m_plugin.setterCalls[2].text, "true");
  for (const auto& made : m_plugin.setterCalls) EXPECT_EQ(made.type, CORVEL_STRING);
}

TEST_F(ScriptAccessTest, AttributeSettersGetNullAndUndefinedAsTheyAre) {
  writeProperty(m_plugin, "size", fake::null());
  writeProperty(m_plugin, "size", fake::undefined());

  ASSERT_EQ(m_plugin.setterCalls.size(), 2U);
  EXPECT_EQ(m_plugin.setterCalls[0].type, CORVEL_NO_VALUE);
  EXPECT_EQ(m_plugin.setterCalls[1].type, CORVEL_UNDEFINED);
  EXPECT_TRUE(m_plugin.setterCalls[0].nullText);
  EXPECT_TRUE(m_plugin.setterCalls[1].nullText);
}

TEST_F(ScriptAccessTest, OtherTextSettersGetEachValueAsScriptWroteIt) {
  writeProperty(m_plugin, "link", fake::integer(5));
  writeProperty(m_plugin, "link", fake::null());

  ASSERT_EQ(m_plugin.setterCalls.size(), 2U);
  EXPECT_EQ(m_plugin.setterCalls[0].type, CORVEL_INTEGER);
  EXPECT_EQ(m_plugin.setterCalls[1].type, CORVEL_NO_VALUE);
}

// An object's bytes, read as a text's, would be one of any length.
TEST_F(ScriptAccessTest, TextSettersNeverGetAnObject) {
  const auto object = std::make_shared<FakeScriptObject>();

  EXPECT_FALSE(writeProperty(m_plugin, "size", fake::object(object)));
  EXPECT_FALSE(writeProperty(m_plugin, "link", fake::object(object)));

  EXPECT_TRUE(m_plugin.setterCalls.empty());
}

TEST_F(ScriptAccessTest, ArgumentsReachTheMethodAsTheyAre) {
  const _CorvelNativeVariant values[] = {fake::undefined(),   fake::null(),
                                         fake::boolean(true), fake::integer(-3),
                                         fake::number(1e10),  fake::text(std::string("a\0b", 3)),
                                         fake::text(""),      fake::object(std::make_shared<FakeScriptObject>())};

  for (const auto& value : values) EXPECT_EQ(call("echo", &value, 1), fake::shown(value));
}

TEST_F(ScriptAccessTest, MethodHasAZeroedFirstSlot_WithoutArguments) {
  EXPECT_EQ(call("firstSlot"), "bool:1");

  const _CorvelNativeVariant value = fake::integer(3);
  EXPECT_EQ(call("firstSlot", &value, 0), "bool:1") << "an array without a valid element";
}

TEST_F(ScriptAccessTest, MethodWithoutAResultGivesUndefined) { EXPECT_EQ(call("echo"), "undefined"); }

TEST_F(ScriptAccessTest, FailedMethodGivesUndefined) { EXPECT_EQ(call("fail"), "failed/undefined"); }

TEST_F(ScriptAccessTest, NullObjectResultIsToldFromNoResult) { EXPECT_EQ(call("nullObject"), "object:null"); }

TEST_F(ScriptAccessTest, MissingArgumentArrayIsRefused) { EXPECT_EQ(call("echo", nullptr, 2), "failed/text:left over"); }

TEST_F(ScriptAccessTest, UnknownNamesAndRowsAreFalse) {
  _CorvelNativeVariant value;

  EXPECT_FALSE(pluginhost::readProperty(m_plugin, "absent", value));
  EXPECT_FALSE(writeProperty(m_plugin, "absent", value));
  EXPECT_FALSE(callMethod(m_plugin, "absent", nullptr, 0, value));
  EXPECT_FALSE(pluginhost::readProperty(m_plugin, 1000U, value));
  EXPECT_FALSE(writeProperty(m_plugin, 1000U, value));
  EXPECT_FALSE(callMethod(m_plugin, 1000U, nullptr, 0, value));
}

// A thunk may use the host without restraint: no lock of the host is held while it runs.
TEST_F(ScriptAccessTest, ThunksMayCallTheHost) {
  m_plugin.insideThunk = [this] {
    char* text = nullptr;
    m_plugin.getProperty("title", text);
    m_plugin.setProperty("count", 1);
    m_plugin.setProperty("title", static_cast<char*>(nullptr));
    bool introduced = false;
    m_plugin.getProperty("fullScreen", introduced);
    m_plugin.dispatchEvent("onThing", nullptr, 0);
  };

  EXPECT_EQ(read(m_plugin, "answer"), "int:42");
  EXPECT_TRUE(writeProperty(m_plugin, "size", fake::text("1")));
  EXPECT_EQ(call("echo"), "undefined");
}

}  // namespace
