// SPDX-License-Identifier: Apache-2.0
// The thunks of the script tables: what they take, what they refuse, and what they write.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "plugin/av_control_plugin.h"
#include "tests/support/plugin_fixture.h"

namespace {

using fakes::isCommand;
using fakes::isWrite;
using fixture::boolean;
using fixture::integer;
using fixture::noValue;
using fixture::number;
using fixture::shown;
using fixture::TestPlugin;
using fixture::text;
using fixture::undefined;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// A text as a host gives it: no NUL behind it.
_CorvelNativeVariant unterminated(const char* memory, int length) {
  _CorvelNativeVariant value;
  cvnplUtil::set(memory, value, length, false);
  return value;
}

class ThunkTest : public fixture::PluginTest {
 protected:
  static const CorvelNativeProperty& propertyRow(const std::string& name) {
    for (unsigned int i = 0; i < AVControlPlugin::sm_prop_length; ++i) {
      if (AVControlPlugin::sm_properties[i].name == name) return AVControlPlugin::sm_properties[i];
    }
    throw std::runtime_error("no row " + name);
  }
  static const CorvelNativeMethod& methodRow(const std::string& name) {
    for (unsigned int i = 0; i < AVControlPlugin::sm_met_length; ++i) {
      if (AVControlPlugin::sm_methods[i].name == name) return AVControlPlugin::sm_methods[i];
    }
    throw std::runtime_error("no row " + name);
  }
  /// Each object as script may hold it.
  static _CorvelNativeVariant objectValue(const TestPlugin& plugin) {
    _CorvelNativeVariant value;
    cvnplUtil::set(std::shared_ptr<CorvelNativePropertyBase>(plugin.base), value);
    return value;
  }
};

// --- Getters

struct GetterRow {
  const char* property;
  const char* key;  ///< that the library answers
};

class QueriedGetterTest : public ThunkTest, public ::testing::WithParamInterface<GetterRow> {};

TEST_P(QueriedGetterTest, ReadsTheLibrary) {
  library().setProperty(GetParam().key, "1234.5");
  const auto plugin = makePlugin();

  EXPECT_EQ(plugin.readShown(GetParam().property), "double:1234.5");
}

TEST_P(QueriedGetterTest, FailsAndLeavesTheResultAlone_WhenTheLibraryDoesNotAnswer) {
  const auto plugin = makePlugin();
  _CorvelNativeVariant result = integer(77);

  EXPECT_FALSE(propertyRow(GetParam().property).getter(plugin.base.get(), &result));

  EXPECT_EQ(shown(result), "int:77");
}

INSTANTIATE_TEST_SUITE_P(All, QueriedGetterTest,
                         ::testing::Values(GetterRow{"playTime", "DURATION"}, GetterRow{"speed", "PLAY_SPEED"}),
                         [](const auto& info) { return info.param.property; });

TEST_F(ThunkTest, PlayPositionIsADouble) {
  const auto plugin = makePlugin();

  EXPECT_EQ(plugin.readShown("playPosition"), "double:0");
}

TEST_F(ThunkTest, PlayPositionFails_WithoutAPlayer) {
  library().failOpens(1);
  const auto plugin = makePlugin();
  _CorvelNativeVariant result = integer(77);

  EXPECT_FALSE(propertyRow("playPosition").getter(plugin.base.get(), &result));

  EXPECT_EQ(shown(result), "int:77");
}

TEST_F(ThunkTest, PlayTimeIsInfinite_WhenTheDurationIsNegative) {
  const auto plugin = makePlugin();

  for (const char* duration : {"-1", "-0.5", "-1e300"}) {
    library().setProperty("DURATION", duration);
    EXPECT_EQ(plugin.readShown("playTime"), "double:inf") << duration;
  }
}

TEST_F(ThunkTest, PlayTimeIsTheDuration_FromZeroOn) {
  const auto plugin = makePlugin();

  for (const char* duration : {"0", "0.25", "90000"}) {
    library().setProperty("DURATION", duration);
    EXPECT_EQ(plugin.readShown("playTime"), std::string("double:") + duration);
  }
}

TEST_F(ThunkTest, SpeedIsStoredAsItIsRead) {
  library().setProperty("PLAY_SPEED", "2.00");
  const auto plugin = makePlugin();
  log().clear();

  EXPECT_EQ(plugin.readShown("speed"), "double:2");

  EXPECT_THAT(entries(plugin), ElementsAre("speed=double:2"));
}

TEST_F(ThunkTest, ErrorIsNoValue_WhileThereIsNone) {
  const auto plugin = makePlugin();

  EXPECT_EQ(plugin.readShown("error"), "novalue");
}

// Only the type code is written then: deliberate.
TEST_F(ThunkTest, ErrorWithoutAValueWritesTheTypeCodeAlone) {
  const auto plugin = makePlugin();
  _CorvelNativeVariant result = integer(77);
  result.details.access = 9;

  EXPECT_TRUE(propertyRow("error").getter(plugin.base.get(), &result));

  EXPECT_EQ(result.details.type, 1);
  EXPECT_EQ(result.details.access, 9);
  EXPECT_EQ(result.integer, 77);
}

TEST_F(ThunkTest, ErrorZeroIsAValue) {
  library().setProperty("LAST_ERR_CODE", "0");
  const auto plugin = makePlugin();

  library().fire(plugin.handle, "ERROR");

  ASSERT_TRUE(waitForEvent(plugin, "onPlayStateChange(int:6)"));
  EXPECT_EQ(plugin.readShown("error"), "int:0");
}

TEST_F(ThunkTest, TtmlPositionIsTheLibrarys_OrMinusOne) {
  const auto plugin = makePlugin();
  EXPECT_EQ(plugin.readShown("ttmlXmlPlayPosition"), "int:-1");

  library().setOobPosition(4321);

  EXPECT_EQ(plugin.readShown("ttmlXmlPlayPosition"), "int:4321");
}

// --- Setters

TEST_F(ThunkTest, DataTakesTextOnly) {
  const auto plugin = makePlugin();

  for (const auto& value : {integer(12345), number(1.5), boolean(true), noValue(), undefined(), objectValue(plugin)}) {
    EXPECT_FALSE(propertyRow("data").setter(plugin.base.get(), &value)) << shown(value);
    EXPECT_FALSE(plugin.write("data", value)) << shown(value);
  }

  drainWorker(plugin);
  EXPECT_EQ(library().count(isWrite("INPUT")), 0U);
}

TEST_F(ThunkTest, DataTakesItsLengthOnly) {
  const auto plugin = makePlugin();
  const char memory[] = "http://media.example/a.mp4?what follows is not ours";

  EXPECT_TRUE(plugin.write("data", unterminated(memory, 26)));

  EXPECT_TRUE(library().waitForCall(isWrite("INPUT", "http://media.example/a.mp4")));
}

struct TextSetterRow {
  const char* property;
  const char* value;  ///< that it accepts
};

class TextSetterTest : public ThunkTest, public ::testing::WithParamInterface<TextSetterRow> {};

TEST_P(TextSetterTest, AcceptsAText) {
  const auto plugin = makePlugin();

  EXPECT_TRUE(plugin.write(GetParam().property, text(GetParam().value)));
}

TEST_P(TextSetterTest, RefusesEmptyAndNullTexts) {
  const auto plugin = makePlugin();
  ASSERT_TRUE(plugin.write(GetParam().property, text(GetParam().value)));
  const std::string before = plugin.readShown(GetParam().property);
  library().clearCalls();

  EXPECT_FALSE(plugin.write(GetParam().property, text("")));
  EXPECT_FALSE(plugin.write(GetParam().property, unterminated(nullptr, 0)));
  EXPECT_FALSE(plugin.write(GetParam().property, unterminated(nullptr, 5)));

  EXPECT_EQ(plugin.readShown(GetParam().property), before);
}

// A host may turn numbers into texts before it comes here; what comes here as something else has no text to take.
TEST_P(TextSetterTest, RefusesWhatIsNoText) {
  const auto plugin = makePlugin();

  for (const auto& value : {integer(640), number(640.5), boolean(true), noValue(), undefined(), objectValue(plugin)}) {
    EXPECT_FALSE(propertyRow(GetParam().property).setter(plugin.base.get(), &value)) << shown(value);
  }
}

INSTANTIATE_TEST_SUITE_P(All, TextSetterTest,
                         ::testing::Values(TextSetterRow{"width", "640"}, TextSetterRow{"height", "360"},
                                           TextSetterRow{"type", "video/mp4"}, TextSetterRow{"loop", "infinite"},
                                           TextSetterRow{"subParamAttr", "lang=eng"}, TextSetterRow{"playerType", "video/mp4"},
                                           TextSetterRow{"userAgent", "Set/1.0"}, TextSetterRow{"nativeWindowSize", "1920x1080"}),
                         [](const auto& info) { return info.param.property; });

class BoundTextTest : public ThunkTest, public ::testing::WithParamInterface<TextSetterRow> {};

TEST_P(BoundTextTest, ReadsBackWhatWasSet_WithoutWhatFollowsIt) {
  const auto plugin = makePlugin();
  const std::string value = GetParam().value;
  const std::string memory = value + "and more";

  EXPECT_TRUE(plugin.write(GetParam().property, unterminated(memory.c_str(), static_cast<int>(value.size()))));

  EXPECT_EQ(plugin.readShown(GetParam().property), "string:" + value);
}

TEST_P(BoundTextTest, ShorterTextReplacesALonger) {
  const auto plugin = makePlugin();
  ASSERT_TRUE(plugin.write(GetParam().property, text(GetParam().value)));
  const std::string shorter = std::string(GetParam().property) == "type" ? "a/b" : "7";

  EXPECT_TRUE(plugin.write(GetParam().property, text(shorter)));

  EXPECT_EQ(plugin.readShown(GetParam().property), "string:" + shorter);
}

INSTANTIATE_TEST_SUITE_P(All, BoundTextTest,
                         ::testing::Values(TextSetterRow{"width", "640"}, TextSetterRow{"height", "360"},
                                           TextSetterRow{"type", "video/mp4"}, TextSetterRow{"loop", "12"}),
                         [](const auto& info) { return info.param.property; });

// A refusal of the plugin is the setter's own result.
TEST_F(ThunkTest, SettersPassTheRefusalOn) {
  const auto plugin = makePlugin();

  EXPECT_FALSE(plugin.write("data", text("http")));
  EXPECT_FALSE(plugin.write("width", text("12a")));
  EXPECT_FALSE(plugin.write("height", text("-5")));
  EXPECT_FALSE(plugin.write("loop", text("forever")));
  EXPECT_FALSE(plugin.write("type", text(std::string(2048, 'x'))));

  EXPECT_EQ(plugin.readShown("width"), "string:");
  EXPECT_EQ(plugin.readShown("height"), "string:");
  EXPECT_EQ(plugin.readShown("loop"), "string:");
  EXPECT_EQ(plugin.readShown("type"), "string:");
}

TEST_F(ThunkTest, CacheTakesAnEmptyText) {
  const auto plugin = makePlugin();
  ASSERT_TRUE(plugin.write("cache", text("yes")));
  ASSERT_EQ(plugin.readShown("cache"), "string:yes");

  EXPECT_TRUE(plugin.write("cache", text("")));

  EXPECT_NE(plugin.readShown("cache"), "string:yes");
}

TEST_F(ThunkTest, CacheTakesItsLengthOnly) {
  const auto plugin = makePlugin();

  EXPECT_TRUE(plugin.write("cache", unterminated("yes and more", 3)));

  EXPECT_EQ(plugin.readShown("cache"), "string:yes");
  EXPECT_TRUE(library().waitForCall(isWrite("CACHED", "yes")));
}

TEST_F(ThunkTest, CacheSurvivesWhatIsNoText) {
  const auto plugin = makePlugin();

  for (const auto& value : {integer(5), number(1.5), boolean(true), noValue(), undefined(), objectValue(plugin)}) {
    propertyRow("cache").setter(plugin.base.get(), &value);
  }

  EXPECT_TRUE(plugin.write("cache", text("yes")));
  EXPECT_EQ(plugin.readShown("cache"), "string:yes");
}

TEST_F(ThunkTest, NumOfSubtitlesTakesIntegersOnly) {
  const auto plugin = makePlugin();
  const auto setter = propertyRow("numOfSubtitles").setter;

  for (const int count : {3, 0, -1}) {
    const auto value = integer(count);
    EXPECT_TRUE(setter(plugin.base.get(), &value)) << count;
  }
  for (const auto& value : {number(3), text("3"), boolean(true), noValue(), undefined(), objectValue(plugin)}) {
    EXPECT_FALSE(setter(plugin.base.get(), &value)) << shown(value);
  }
}

// --- Methods

struct PlayRow {
  const char* name;
  std::vector<_CorvelNativeVariant> args;
  const char* result;
  const char* sent;  ///< null: nothing
};

TEST_F(ThunkTest, PlayTakesNumbersOnly) {
  const PlayRow rows[] = {
      {"none", {}, "bool:true", "1.00"},
      {"integer", {integer(2)}, "bool:true", "2.00"},
      {"negative", {integer(-1)}, "bool:true", "-1.00"},
      {"double", {number(0.5)}, "bool:true", "0.50"},
      {"more", {number(1.5), integer(7)}, "bool:true", "1.50"},
      {"text", {text("2")}, "undefined", nullptr},
      {"boolean", {boolean(true)}, "undefined", nullptr},
      {"null", {noValue()}, "undefined", nullptr},
      {"undefined", {undefined()}, "undefined", nullptr},
  };
  for (const PlayRow& row : rows) {
    SCOPED_TRACE(row.name);
    const auto plugin = makeReadyPlugin();
    library().clearCalls();
    log().clear();

    EXPECT_EQ(plugin.callShown("play", row.args), row.result);
    drainWorker(plugin);

    const auto sent = library().calls(isCommand("PLAY"));
    ASSERT_EQ(sent.size(), row.sent == nullptr ? 0U : 1U);
    if (row.sent != nullptr) {
      EXPECT_EQ(sent[0].argument, row.sent);
    } else {
      EXPECT_THAT(entries(plugin), IsEmpty());
    }
  }
}

TEST_F(ThunkTest, PlayOfAnObjectCallsNothing) {
  const auto plugin = makeReadyPlugin();

  EXPECT_EQ(plugin.callShown("play", {objectValue(plugin)}), "undefined");

  EXPECT_EQ(plugin.readShown("playState"), "int:0");
}

TEST_F(ThunkTest, PlayLeavesTheResultAlone_WhenItCallsNothing) {
  const auto plugin = makeReadyPlugin();
  const _CorvelNativeVariant argument = text("2");
  _CorvelNativeVariant result = integer(77);

  EXPECT_TRUE(methodRow("play").function(plugin.base.get(), &argument, 1, &result));

  EXPECT_EQ(shown(result), "int:77");
}

TEST_F(ThunkTest, PlayZeroPauses) {
  const auto plugin = makeReadyPlugin();

  EXPECT_EQ(plugin.callShown("play", {integer(0)}), "bool:true");

  EXPECT_TRUE(library().waitForCall(isCommand("PAUSE", "")));
  EXPECT_EQ(library().count(isCommand("PLAY")), 0U);
}

TEST_F(ThunkTest, FailureReachesScriptAsAFalseValue) {
  library().failOpens(1000);
  const auto plugin = makePlugin();

  EXPECT_EQ(plugin.callShown("play"), "bool:false");
  EXPECT_EQ(plugin.callShown("seek", {integer(1)}), "bool:false");
  EXPECT_EQ(plugin.callShown("setVolume", {integer(500)}), "bool:false");
  EXPECT_EQ(plugin.callShown("queue", {text("")}), "bool:false");
}

TEST_F(ThunkTest, StopIsTrueInStoppedAndFalseInConnecting) {
  const auto plugin = makePluginWithSource();
  EXPECT_EQ(plugin.callShown("stop"), "bool:true");
  ASSERT_EQ(plugin.callShown("play"), "bool:true");
  ASSERT_EQ(plugin.readShown("playState"), "int:3");

  EXPECT_EQ(plugin.callShown("stop", {integer(1), text("ignored")}), "bool:false");

  EXPECT_EQ(plugin.readShown("playState"), "int:3");
}

TEST_F(ThunkTest, SeekReadsItsFirstSlot) {
  library().setProperty("DURATION", "0");

  struct Row {
    std::vector<_CorvelNativeVariant> args;
    const char* sent;
  };
  const Row rows[] = {
      {{}, "0.00"},  // the slot is read without a look at the count
      {{integer(1500)}, "1500.00"},
      {{number(1500.25)}, "1500.25"},
      {{number(-2.5)}, "-2.50"},
      {{number(1000), integer(7)}, "1000.00"},
      {{undefined()}, "0.00"},
      {{noValue()}, "0.00"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.sent);
    const auto plugin = makeReadyPlugin();
    library().clearCalls();

    EXPECT_EQ(plugin.callShown("seek", row.args), "bool:true");

    EXPECT_TRUE(library().waitForCall(isCommand("SEEK", row.sent)));
  }
}

TEST_F(ThunkTest, SetVolumeRoundsAndHasItsBounds) {
  const auto plugin = makePlugin();
  library().clearCalls();

  EXPECT_EQ(plugin.callShown("setVolume"), "bool:true");
  EXPECT_EQ(plugin.callShown("setVolume", {integer(0)}), "bool:true");
  EXPECT_EQ(plugin.callShown("setVolume", {integer(100)}), "bool:true");
  EXPECT_EQ(plugin.callShown("setVolume", {integer(101)}), "bool:true") << "the bound is 102: deliberate";
  EXPECT_EQ(plugin.callShown("setVolume", {integer(102)}), "bool:false");
  EXPECT_EQ(plugin.callShown("setVolume", {integer(-1)}), "bool:false");
  EXPECT_EQ(plugin.callShown("setVolume", {number(49.5)}), "bool:true");
  EXPECT_EQ(plugin.callShown("setVolume", {number(101.49)}), "bool:true");
  EXPECT_EQ(plugin.callShown("setVolume", {number(101.5)}), "bool:false");
  // Half is added, then what follows the point is cut off: below zero that rounds up.
  EXPECT_EQ(plugin.callShown("setVolume", {number(-0.7)}), "bool:true");
  EXPECT_EQ(plugin.callShown("setVolume", {number(-1.49)}), "bool:true");
  EXPECT_EQ(plugin.callShown("setVolume", {number(-1.5)}), "bool:false");

  EXPECT_THAT(library().calls(), IsEmpty()) << "no volume is ever applied";
}

TEST_F(ThunkTest, SetVolumeRefusesWhatIsNoInteger) {
  const auto plugin = makePlugin();

  for (const double value :
       {kInfinity, -kInfinity, std::numeric_limits<double>::quiet_NaN(), 1e300, -1e300, 2147483648.0, 4294967296.0}) {
    EXPECT_EQ(plugin.callShown("setVolume", {number(value)}), "bool:false") << value;
  }
}

TEST_F(ThunkTest, FiveMethodsAlwaysFail) {
  const auto plugin = makePlugin();
  library().clearCalls();

  for (const char* name : {"next", "previous", "getSinkProtocolInfo", "getTransportStateVariables", "setTransportStateVariables"}) {
    EXPECT_EQ(plugin.callShown(name), "failed") << name;
    EXPECT_EQ(plugin.callShown(name, {integer(1), text("a")}), "failed") << name;
    _CorvelNativeVariant argument;
    _CorvelNativeVariant result = integer(77);
    EXPECT_FALSE(methodRow(name).function(plugin.base.get(), &argument, 0, &result)) << name;
    EXPECT_EQ(shown(result), "int:77") << name;
  }

  EXPECT_THAT(events(plugin), IsEmpty());
  EXPECT_THAT(library().calls(), IsEmpty());
}

TEST_F(ThunkTest, FocusSucceedsAndLeavesTheResultAlone) {
  const auto plugin = makePlugin();
  _CorvelNativeVariant argument;
  _CorvelNativeVariant result = integer(77);

  EXPECT_TRUE(methodRow("focus").function(plugin.base.get(), &argument, 0, &result));

  EXPECT_EQ(shown(result), "int:77");
  EXPECT_THAT(events(plugin), ElementsAre("onFocus()"));
}

TEST_F(ThunkTest, QueueTakesItsFirstSlotAsAText) {
  const auto plugin = makeReadyPlugin();
  ASSERT_EQ(plugin.callShown("play"), "bool:true");
  const std::string memory = "http://media.example/next.mp4?not ours";

  EXPECT_EQ(plugin.callShown("queue", {unterminated(memory.c_str(), 29)}), "bool:true");
  EXPECT_EQ(plugin.callShown("queue", {text("http://media.example/third.mp4")}), "bool:false") << "one is queued already";
  EXPECT_EQ(plugin.callShown("queue"), "bool:true") << "nothing given clears the queue";
  EXPECT_EQ(plugin.callShown("queue", {text("http://media.example/third.mp4")}), "bool:true");
}

TEST_F(ThunkTest, QueueOfNumbersClearsTheQueue) {
  const auto plugin = makeReadyPlugin();
  ASSERT_EQ(plugin.callShown("play"), "bool:true");

  for (const auto& value : {integer(5), number(1.5), boolean(true), noValue(), undefined()}) {
    ASSERT_EQ(plugin.callShown("queue", {text("http://media.example/next.mp4")}), "bool:true");
    EXPECT_EQ(plugin.callShown("queue", {value}), "bool:true") << shown(value);
  }
}

TEST_F(ThunkTest, QueueSurvivesAnObject) {
  const auto plugin = makeReadyPlugin();
  ASSERT_EQ(plugin.callShown("play"), "bool:true");

  const auto result = plugin.call("queue", {objectValue(plugin)});

  ASSERT_TRUE(result);
  EXPECT_EQ(result->details.type, CORVEL_BOOLEAN);
}

// --- The first step of every thunk

TEST_F(ThunkTest, EveryThunkFails_OnADeinitialisedPlugin) {
  library().setProperty("DURATION", "5");
  library().setProperty("PLAY_SPEED", "1");
  library().setOobPosition(5);
  const auto plugin = makePluginWithSource();
  plugin.base->willBeDestroyed();
  library().clearCalls();
  log().clear();

  for (unsigned int i = 0; i < AVControlPlugin::sm_prop_length; ++i) {
    const CorvelNativeProperty& row = AVControlPlugin::sm_properties[i];
    _CorvelNativeVariant result = integer(77);
    const _CorvelNativeVariant value =
        row.defaultValue.details.type == CORVEL_INTEGER ? integer(1) : text("http://media.example/c");
    if (row.getter != nullptr) {
      EXPECT_FALSE(row.getter(plugin.base.get(), &result)) << row.name;
    }
    if (row.setter != nullptr) {
      EXPECT_FALSE(row.setter(plugin.base.get(), &value)) << row.name;
    }
    EXPECT_EQ(shown(result), "int:77") << row.name;
  }
  for (unsigned int i = 0; i < AVControlPlugin::sm_met_length; ++i) {
    const CorvelNativeMethod& row = AVControlPlugin::sm_methods[i];
    const _CorvelNativeVariant argument = integer(1);
    _CorvelNativeVariant result = integer(77);
    EXPECT_FALSE(row.function(plugin.base.get(), &argument, 1, &result)) << row.name;
    EXPECT_EQ(shown(result), "int:77") << row.name;
  }

  EXPECT_THAT(library().calls(), IsEmpty());
  EXPECT_THAT(log().entries(), IsEmpty());
}

/// An object of the page that is no plugin, and a plugin of another kind.
class Stranger : public CorvelNativePluginBase {
 public:
  Stranger(int type, int kind) : CorvelNativePluginBase(nullptr), m_type(type), m_kind(kind) {}
  int type() override { return m_type; }
  bool install() override { return CorvelNativePropertyBase::install(nullptr, 0, nullptr, 0); }
  int pluginType() override { return m_kind; }
  bool setWindowProperties(int, int, int, int) override { return true; }
  void willBeDestroyed() override {}
  bool initPlugin() override { return true; }
  bool setDocumentUrl(const char*, unsigned int) override { return true; }

 private:
  const int m_type;
  const int m_kind;
};

void expectEveryThunkFails(CorvelNativePropertyBase* self) {
  const _CorvelNativeVariant value = text("http://media.example/c");
  _CorvelNativeVariant result = integer(77);
  for (unsigned int i = 0; i < AVControlPlugin::sm_prop_length; ++i) {
    const CorvelNativeProperty& row = AVControlPlugin::sm_properties[i];
    if (row.getter != nullptr) {
      EXPECT_FALSE(row.getter(self, &result)) << row.name;
    }
    if (row.setter != nullptr) {
      EXPECT_FALSE(row.setter(self, &value)) << row.name;
    }
  }
  for (unsigned int i = 0; i < AVControlPlugin::sm_met_length; ++i) {
    const CorvelNativeMethod& row = AVControlPlugin::sm_methods[i];
    EXPECT_FALSE(row.function(self, &value, 1, &result)) << row.name;
  }
  EXPECT_EQ(shown(result), "int:77");
}

TEST_F(ThunkTest, EveryThunkFails_OnAnotherKindOfPlugin) {
  Stranger otherPlugin(0, 7);

  expectEveryThunkFails(&otherPlugin);
}

TEST_F(ThunkTest, EveryThunkFails_OnAnObjectThatIsNoPlugin) {
  Stranger component(5, 8);

  expectEveryThunkFails(&component);
}

TEST_F(ThunkTest, EveryThunkFails_OnNull) { expectEveryThunkFails(nullptr); }

}  // namespace
