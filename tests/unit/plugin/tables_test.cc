// SPDX-License-Identifier: Apache-2.0
// The script tables, row by row, as the plugin hands them to the host and as script finds them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "plugin/av_control_plugin.h"
#include "statemachine/play_states.h"
#include "tests/support/plugin_fixture.h"

namespace {

using fixture::integer;
using fixture::text;

struct PropertyRow {
  const char* name;
  int typeCode;
  int access;
  bool hasGetter;
  bool hasSetter;
};

constexpr int kNone = CORVEL_PLUGIN_ONLY;

const PropertyRow kProperties[] = {
    {"data", 6, 0, false, true},
    {"playPosition", 5, kNone, true, false},
    {"ttmlXmlPlayPosition", 3, kNone, true, false},
    {"playTime", 5, kNone, true, false},
    {"playState", 3, kNone, false, false},
    {"error", 3, kNone, true, false},
    {"speed", 5, kNone, true, false},
    {"nrTracks", 3, kNone, false, false},
    {"currentTrackIndex", 3, 0, false, false},
    {"onFocus", 8, 0, false, false},
    {"onPlayStateChange", 8, 0, false, false},
    {"onPlayPositionChanged", 8, 0, false, false},
    {"onPlaySpeedChanged", 8, 0, false, false},
    {"onFullScreenChange", 8, 0, false, false},
    {"onSelectedComponentChanged", 8, 0, false, false},
    {"onDRMRightsError", 8, 0, false, false},
    {"onParentalRatingChange", 8, 0, false, false},
    {"onParentalRatingError", 8, 0, false, false},
    {"persist", 2, 0, false, false},
    {"COMPONENT_TYPE_VIDEO", 3, kNone, false, false},
    {"COMPONENT_TYPE_AUDIO", 3, kNone, false, false},
    {"COMPONENT_TYPE_SUBTITLE", 3, kNone, false, false},
    {"numOfSubtitles", 3, 0, false, true},
    {"enableSubtitles", 3, 0, false, false},
    {"width", 6, 2, false, true},
    {"height", 6, 2, false, true},
    {"type", 6, 2, false, true},
    {"cache", 6, 2, false, true},
    {"loop", 6, 2, false, true},
    {"subParamAttr", 6, 0, false, true},
    {"playerType", 6, 0, false, true},
    {"userAgent", 6, 2, false, true},
    {"nativeWindowSize", 6, 2, false, true},
};

const char* const kMethods[] = {
    "play",
    "stop",
    "seek",
    "setVolume",
    "next",
    "previous",
    "getSinkProtocolInfo",
    "getTransportStateVariables",
    "setTransportStateVariables",
    "focus",
    "queue",
    "getComponents",
    "getCurrentActiveComponents",
    "selectComponent",
    "unselectComponent",
};

TEST(ScriptTablesTest, HaveTheFixedLengths) {
  EXPECT_EQ(AVControlPlugin::sm_prop_length, 33U);
  EXPECT_EQ(AVControlPlugin::sm_met_length, 15U);
  EXPECT_EQ(std::size(kProperties), 33U);
  EXPECT_EQ(std::size(kMethods), 15U);
}

TEST(ScriptTablesTest, MethodsStandInOrder) {
  for (unsigned int i = 0; i < AVControlPlugin::sm_met_length; ++i) {
    EXPECT_STREQ(AVControlPlugin::sm_methods[i].name, kMethods[i]) << "row " << i + 1;
    EXPECT_NE(AVControlPlugin::sm_methods[i].function, nullptr) << kMethods[i];
  }
}

TEST(ScriptTablesTest, MethodsEachHaveAFunctionOfTheirOwn) {
  std::set<const void*> functions;

  for (unsigned int i = 0; i < AVControlPlugin::sm_met_length; ++i) {
    functions.insert(reinterpret_cast<const void*>(AVControlPlugin::sm_methods[i].function));
  }

  EXPECT_EQ(functions.size(), 15U);
}

class PropertyRowTest : public ::testing::TestWithParam<std::size_t> {
 protected:
  const PropertyRow& expected() const { return kProperties[GetParam()]; }
  const CorvelNativeProperty& actual() const { return AVControlPlugin::sm_properties[GetParam()]; }
};

TEST_P(PropertyRowTest, NameTypeAndAccess) {
  EXPECT_STREQ(actual().name, expected().name);
  EXPECT_EQ(actual().defaultValue.details.type, expected().typeCode);
  EXPECT_EQ(actual().defaultValue.details.access, expected().access);
}

TEST_P(PropertyRowTest, ReservedWordIsZero) { EXPECT_EQ(actual().reserved, 0U); }

TEST_P(PropertyRowTest, GetterAndSetter) {
  EXPECT_EQ(actual().getter != nullptr, expected().hasGetter);
  EXPECT_EQ(actual().setter != nullptr, expected().hasSetter);
}

TEST_P(PropertyRowTest, DefaultValue) {
  const _CorvelNativeVariant& value = actual().defaultValue;
  const std::string name = expected().name;
  switch (expected().typeCode) {
    case CORVEL_BOOLEAN: EXPECT_FALSE(value.boolean); break;
    case CORVEL_INTEGER: EXPECT_EQ(value.integer, 0); break;
    case CORVEL_DOUBLE: EXPECT_EQ(value.number, name == "speed" ? 1.0 : 0.0); break;
    case CORVEL_STRING: EXPECT_EQ(value.string.length, 0U); break;
    default: ASSERT_EQ(expected().typeCode, CORVEL_EVENT_HANDLER); EXPECT_EQ(value.object.object, nullptr);
  }
}

INSTANTIATE_TEST_SUITE_P(All, PropertyRowTest, ::testing::Range<std::size_t>(0, std::size(kProperties)),
                         [](const auto& info) { return std::string(kProperties[info.param].name); });

// An integer value under a double's type code: deliberate.
TEST(ScriptTablesTest, PlayTimeDefaultIsAnInteger) { EXPECT_EQ(AVControlPlugin::sm_properties[3].defaultValue.integer, 0); }

TEST(ScriptTablesTest, PlayStateDefaultIsTheStoppedStatesId) {
  EXPECT_EQ(AVControlPlugin::sm_properties[4].defaultValue.integer, AVControlStoppedState::id());
}

class InstalledTablesTest : public fixture::PluginTest {};

TEST_F(InstalledTablesTest, HostHasEveryPropertyRowInOrder) {
  const auto plugin = makePlugin();

  const auto rows = pluginhost::propertyRows(*plugin.base);

  ASSERT_EQ(rows.size(), 33U);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    EXPECT_EQ(rows[i].name, kProperties[i].name);
    EXPECT_EQ(rows[i].typeCode, kProperties[i].typeCode) << rows[i].name;
    EXPECT_EQ(rows[i].access, kProperties[i].access) << rows[i].name;
    EXPECT_EQ(rows[i].hasGetter, kProperties[i].hasGetter) << rows[i].name;
    EXPECT_EQ(rows[i].hasSetter, kProperties[i].hasSetter) << rows[i].name;
  }
}

TEST_F(InstalledTablesTest, HostHasEveryMethodRowInOrder) {
  const auto plugin = makePlugin();

  const auto rows = pluginhost::methodRows(*plugin.base);

  EXPECT_EQ(std::vector<std::string>(rows.begin(), rows.end()), std::vector<std::string>(std::begin(kMethods), std::end(kMethods)));
}

TEST_F(InstalledTablesTest, AllPluginsShareOneTable) {
  const auto first = makePlugin();
  const auto second = makePlugin();

  EXPECT_EQ(pluginhost::tableId(*first.base), pluginhost::tableId(*second.base));
}

TEST_F(InstalledTablesTest, ScriptReadsTheDefaults) {
  const auto plugin = makePlugin();

  for (const char* name :
       {"data", "width", "height", "type", "cache", "loop", "subParamAttr", "playerType", "userAgent", "nativeWindowSize"}) {
    EXPECT_EQ(plugin.readShown(name), "string:") << name;
  }
  for (const char* name : {"playState", "nrTracks", "currentTrackIndex", "numOfSubtitles", "enableSubtitles"}) {
    EXPECT_EQ(plugin.readShown(name), "int:0") << name;
  }
  EXPECT_EQ(plugin.readShown("persist"), "bool:false");
}

// The rows start at 0; initialisation stores the numbers that pages pass to getComponents.
TEST_F(InstalledTablesTest, ComponentTypesReadAsTheirNumbers) {
  const auto plugin = makePlugin();

  EXPECT_EQ(plugin.readShown("COMPONENT_TYPE_VIDEO"), "int:0");
  EXPECT_EQ(plugin.readShown("COMPONENT_TYPE_AUDIO"), "int:1");
  EXPECT_EQ(plugin.readShown("COMPONENT_TYPE_SUBTITLE"), "int:2");
}

TEST_F(InstalledTablesTest, OnePluginsValuesAreNotAnothers) {
  const auto first = makePlugin();
  const auto second = makePlugin();

  EXPECT_TRUE(first.write("width", text("640")));
  EXPECT_TRUE(first.write("currentTrackIndex", integer(4)));

  EXPECT_EQ(first.readShown("width"), "string:640");
  EXPECT_EQ(second.readShown("width"), "string:");
  EXPECT_EQ(first.readShown("currentTrackIndex"), "int:4");
  EXPECT_EQ(second.readShown("currentTrackIndex"), "int:0");
}

TEST_F(InstalledTablesTest, ScriptCannotWriteWhatOnlyThePluginWrites) {
  const auto plugin = makePlugin();

  for (const char* name : {"playState", "nrTracks", "COMPONENT_TYPE_VIDEO"}) {
    EXPECT_FALSE(plugin.write(name, integer(5))) << name;
    EXPECT_EQ(plugin.readShown(name), "int:0") << name;
  }
}

TEST_F(InstalledTablesTest, HostStoresWhatHasNoSetter) {
  const auto plugin = makePlugin();

  EXPECT_TRUE(plugin.write("persist", fixture::boolean(true)));
  EXPECT_TRUE(plugin.write("enableSubtitles", integer(1)));

  EXPECT_EQ(plugin.readShown("persist"), "bool:true");
  EXPECT_EQ(plugin.readShown("enableSubtitles"), "int:1");
}

}  // namespace
