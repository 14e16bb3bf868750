// SPDX-License-Identifier: Apache-2.0
// Installing tables, and what a shell learns about them.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "tests/unit/pluginhost/fake_plugin.h"

namespace {

TEST(TableTest, InstallRefusesATableThatIsNullButCounted) {
  FakePlugin plugin;

  EXPECT_FALSE(plugin.install(nullptr, 3, nullptr, 0));
  EXPECT_FALSE(plugin.install(nullptr, 0, nullptr, 2));

  EXPECT_EQ(pluginhost::tableId(plugin), nullptr);
}

TEST(TableTest, ObjectWithoutRowsIsFine) {
  FakeScriptObject object;

  EXPECT_TRUE(object.install());

  EXPECT_TRUE(pluginhost::propertyRows(object).empty());
  EXPECT_TRUE(pluginhost::methodRows(object).empty());
  EXPECT_EQ(pluginhost::findProperty(object, "type"), -1);
}

TEST(TableTest, RowsAreListedInTableOrder) {
  FakePlugin plugin;
  ASSERT_TRUE(plugin.install());

  const auto rows = pluginhost::propertyRows(plugin);
  const auto methods = pluginhost::methodRows(plugin);

  ASSERT_EQ(rows.size(), 16U);
  EXPECT_EQ(rows[0].name, "title");
  EXPECT_EQ(rows[6].name, "size");
  EXPECT_EQ(rows[6].typeCode, CORVEL_STRING);
  EXPECT_EQ(rows[6].access, CORVEL_ATTRIBUTE);
  EXPECT_TRUE(rows[6].hasSetter);
  EXPECT_FALSE(rows[6].hasGetter);
  EXPECT_EQ(rows[8].access, CORVEL_PLUGIN_ONLY);
  EXPECT_TRUE(rows[8].hasGetter);
  EXPECT_EQ(methods, (std::vector<std::string_view>{"echo", "fail", "firstSlot", "nullObject", "child"}));
}

TEST(TableTest, EveryRowIsFoundByItsName) {
  FakePlugin plugin;
  ASSERT_TRUE(plugin.install());

  const auto rows = pluginhost::propertyRows(plugin);
  for (std::size_t i = 0; i < rows.size(); ++i) EXPECT_EQ(pluginhost::findProperty(plugin, rows[i].name), static_cast<int>(i));
  const auto methods = pluginhost::methodRows(plugin);
  for (std::size_t i = 0; i < methods.size(); ++i) EXPECT_EQ(pluginhost::findMethod(plugin, methods[i]), static_cast<int>(i));
  EXPECT_EQ(pluginhost::findProperty(plugin, "titl"), -1);
  EXPECT_EQ(pluginhost::findProperty(plugin, ""), -1);
  EXPECT_EQ(pluginhost::findMethod(plugin, "title"), -1);
}

TEST(TableTest, ObjectsOfOneClassShareTheTableId) {
  FakePlugin first;
  FakePlugin second;
  FakeScriptObject other;

  EXPECT_EQ(pluginhost::tableId(first), nullptr) << "before install";
  ASSERT_TRUE(first.install() && second.install() && other.install());

  EXPECT_NE(pluginhost::tableId(first), nullptr);
  EXPECT_EQ(pluginhost::tableId(first), pluginhost::tableId(second));
  EXPECT_NE(pluginhost::tableId(first), pluginhost::tableId(other));
}

CorvelNativeProperty makeRow(const char* name) {
  CorvelNativeProperty row{};
  row.name = name;
  row.defaultValue = fake::integer(1);
  return row;
}

// Libraries come and go, and another one's table may lie where a former one lay.
TEST(TableTest, NothingIsRememberedOfATableWithoutObjects) {
  CorvelNativeProperty table[] = {makeRow("old")};
  {
    FakePlugin plugin;
    ASSERT_TRUE(plugin.install(table, 1, nullptr, 0));
    EXPECT_EQ(pluginhost::findProperty(plugin, "old"), 0);
  }

  table[0].name = "new";
  FakePlugin plugin;
  ASSERT_TRUE(plugin.install(table, 1, nullptr, 0));

  EXPECT_EQ(pluginhost::findProperty(plugin, "new"), 0);
  EXPECT_EQ(pluginhost::findProperty(plugin, "old"), -1);
}

TEST(TableTest, SecondInstallStartsFromTheDefaults) {
  FakePlugin plugin;
  ASSERT_TRUE(plugin.install());
  plugin.setProperty("count", 1);

  ASSERT_TRUE(plugin.install());

  EXPECT_EQ(fake::read(plugin, "count"), "int:7");
}

TEST(TableTest, ObjectIdsAreNeverReused) {
  std::set<std::uint64_t> seen;
  for (int i = 0; i < 1000; ++i) {
    const FakePlugin plugin;
    const std::uint64_t id = pluginhost::objectId(plugin);
    EXPECT_NE(id, 0U);
    EXPECT_TRUE(seen.insert(id).second);
  }
}

// Collections outlive the plugin that is their parent.
TEST(TableTest, ParentIsNeverUsed_AfterItsObjectsLife) {
  auto parent = std::make_unique<FakePlugin>();
  auto child = std::make_unique<FakePlugin>(parent.get());
  parent.reset();

  ASSERT_TRUE(child->install());
  EXPECT_TRUE(child->setProperty("count", 3));
  EXPECT_EQ(fake::read(*child, "count"), "int:3");
  EXPECT_EQ(fake::read(*child, "answer"), "int:42");
  child->dispatchEvent("onThing", nullptr, 0);
  child.reset();
}

TEST(TableTest, CastTakesObjectsOfTypeZeroOnly) {
  FakePlugin plugin;
  FakeScriptObject object;

  EXPECT_EQ(CorvelNativePluginBase::cast(&plugin), &plugin);
  EXPECT_EQ(CorvelNativePluginBase::cast(&object), nullptr);
  EXPECT_EQ(CorvelNativePluginBase::cast(nullptr), nullptr);
}

TEST(TableTest, BaseOperationsHaveHarmlessDefaults) {
  FakeScriptObject object;
  char marker = 'x';
  char* text = &marker;

  EXPECT_EQ(object.getNativePlayerHandle(), 0UL);
  EXPECT_FALSE(object.getURLForMediaSynchroniser(text));
  EXPECT_FALSE(object.getPlayerType(text));
  EXPECT_EQ(object.getComponentNum(), 0);
  EXPECT_FALSE(object.getComponentInfo(0, text));
  object.startOOBSubtitlePlayer(true);
  EXPECT_EQ(text, &marker);
}

}  // namespace
