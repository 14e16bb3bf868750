// SPDX-License-Identifier: Apache-2.0
// selectComponent and unselectComponent, and the internal operations of selection, down to the commands of the media library.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "components/audio_component.h"
#include "components/subtitle_component.h"
#include "components/video_component.h"
#include "plugin/av_control_plugin.h"
#include "tests/support/script_object.h"
#include "tests/unit/components/record_text.h"

using fixture::integer;
using fixture::itemOf;
using fixture::objectArgument;
using fixture::objectFrom;
using fixture::ScriptObject;
using fixture::TestPlugin;
using fixture::text;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

constexpr char kSelect[] = "selectComponent";
constexpr char kUnselect[] = "unselectComponent";

class SelectionTest : public fixture::PluginTest {
 protected:
  void list(const std::string& kind, const std::vector<std::string>& records) {
    library().setProperty(kind + "_COMPONENT.LENGTH", std::to_string(records.size()));
    for (std::size_t i = 0; i < records.size(); ++i) {
      library().setProperty(kind + "_COMPONENT.ITEM." + std::to_string(i), records[i]);
    }
  }

  /// What calling the method with @p argument sends to the library; "failed" first when the call fails.
  std::vector<std::string> sentBy(const char* method, const _CorvelNativeVariant& argument) {
    library().clearCalls();
    log().clear();
    const bool ok = plugin.call(method, {argument}).has_value();
    std::vector<std::string> sent = library().actions();
    if (!ok) sent.insert(sent.begin(), "failed");
    return sent;
  }
  std::vector<std::string> sentBy(const char* method, const ScriptObject& object) { return sentBy(method, objectArgument(object)); }

  ScriptObject available(int type, int index) { return itemOf(objectFrom(plugin, "getComponents", {integer(type)}), index); }
  ScriptObject active(int type, int index) {
    return itemOf(objectFrom(plugin, "getCurrentActiveComponents", {integer(type)}), index);
  }
  AVControlPlugin& avControl() { return *AVControlPlugin::cast(plugin.base.get()); }

  TestPlugin plugin = makePlugin();
};

// --- By component type

TEST_F(SelectionTest, SelectsDefaultsByType) {
  EXPECT_THAT(sentBy(kSelect, integer(0)), ElementsAre("SELECT_DEFAULT_COMPONENT 0"));
  EXPECT_THAT(sentBy(kSelect, integer(1)), ElementsAre("SELECT_DEFAULT_COMPONENT 1"));
  EXPECT_THAT(sentBy(kSelect, integer(2)), ElementsAre("SELECT_DEFAULT_COMPONENT 2"));
  EXPECT_THAT(sentBy(kSelect, integer(3)), ElementsAre("SELECT_DEFAULT_COMPONENT 3"));
}

TEST_F(SelectionTest, UnselectsByType) {
  EXPECT_THAT(sentBy(kUnselect, integer(0)), ElementsAre("UNSELECT_COMPONENT_BY_TYPE 0"));
  EXPECT_THAT(sentBy(kUnselect, integer(1)), ElementsAre("UNSELECT_COMPONENT_BY_TYPE 1"));
  EXPECT_THAT(sentBy(kUnselect, integer(2)), ElementsAre("UNSELECT_COMPONENT_BY_TYPE 2"));
  EXPECT_THAT(sentBy(kUnselect, integer(3)), ElementsAre("UNSELECT_COMPONENT_BY_TYPE 3"));
}

TEST_F(SelectionTest, SendsNothing_ForOtherTypes) {
  for (const char* method : {kSelect, kUnselect}) {
    for (const int type : {-1, -2, 4, 10, 2147483647}) {
      EXPECT_THAT(sentBy(method, integer(type)), IsEmpty()) << method << " " << type;
      EXPECT_THAT(entries(plugin), IsEmpty());
    }
  }
}

TEST_F(SelectionTest, SendsOnTheCallersThread) {
  sentBy(kSelect, integer(1));

  const auto sent = library().calls(fakes::isCommand("SELECT_DEFAULT_COMPONENT"));
  ASSERT_EQ(sent.size(), 1U);
  EXPECT_EQ(sent[0].thread, std::this_thread::get_id());
  EXPECT_EQ(sent[0].handle, plugin.handle);
}

TEST_F(SelectionTest, SubtitleDefaultsSwitchSubtitles) {
  sentBy(kSelect, integer(2));
  EXPECT_THAT(entries(plugin), ElementsAre("enableSubtitles=int:1"));
  EXPECT_EQ(plugin.readShown("enableSubtitles"), "int:1");

  sentBy(kUnselect, integer(2));
  EXPECT_THAT(entries(plugin), ElementsAre("enableSubtitles=int:0"));
  EXPECT_EQ(plugin.readShown("enableSubtitles"), "int:0");
}

TEST_F(SelectionTest, OtherDefaultsLeaveSubtitlesAlone) {
  ASSERT_TRUE(plugin.write("numOfSubtitles", integer(3)));

  for (const int type : {0, 1, 3}) {
    sentBy(kSelect, integer(type));
    EXPECT_THAT(entries(plugin), IsEmpty());
  }
}

TEST_F(SelectionTest, SubtitleDefaultsRaiseAnEvent_WhenThereAreSomeFromOutOfBand) {
  ASSERT_TRUE(plugin.write("numOfSubtitles", integer(3)));

  EXPECT_THAT(sentBy(kSelect, integer(2)), ElementsAre("SELECT_DEFAULT_COMPONENT 2"));
  EXPECT_THAT(entries(plugin), ElementsAre("enableSubtitles=int:1", "onSelectedComponentChanged(int:2)"));

  EXPECT_THAT(sentBy(kUnselect, integer(2)), ElementsAre("UNSELECT_COMPONENT_BY_TYPE 2"));
  EXPECT_THAT(entries(plugin), ElementsAre("enableSubtitles=int:0", "onSelectedComponentChanged(int:2)"));
}

/// A number below 1 is not kept for selection: deliberate.
TEST_F(SelectionTest, SubtitleDefaultsRaiseAnEvent_AfterALowerNumberToo) {
  ASSERT_TRUE(plugin.write("numOfSubtitles", integer(3)));

  for (const int lower : {0, -1}) {
    plugin.write("numOfSubtitles", integer(lower));
    sentBy(kSelect, integer(2));
    EXPECT_THAT(events(plugin), ElementsAre("onSelectedComponentChanged(int:2)")) << lower;
  }
}

TEST_F(SelectionTest, TheLibrarysRefusalIsNotReported) {
  ASSERT_TRUE(plugin.write("numOfSubtitles", integer(1)));
  library().setCommandResult("SELECT_DEFAULT_COMPONENT", 0);

  EXPECT_THAT(sentBy(kSelect, integer(2)), ElementsAre("SELECT_DEFAULT_COMPONENT 2"));
  EXPECT_THAT(events(plugin), ElementsAre("onSelectedComponentChanged(int:2)"));
}

// --- Arguments

TEST_F(SelectionTest, FailsForOtherArguments) {
  for (const char* method : {kSelect, kUnselect}) {
    EXPECT_THAT(sentBy(method, text("1")), ElementsAre("failed"));
    EXPECT_THAT(sentBy(method, fixture::number(1.5)), ElementsAre("failed"));
    EXPECT_THAT(sentBy(method, fixture::boolean(true)), ElementsAre("failed"));
    EXPECT_THAT(sentBy(method, fixture::noValue()), ElementsAre("failed"));
    EXPECT_THAT(sentBy(method, fixture::undefined()), ElementsAre("failed"));
    EXPECT_THAT(sentBy(method, ScriptObject()), ElementsAre("failed"));
    EXPECT_EQ(plugin.callShown(method), "failed");
    EXPECT_THAT(entries(plugin), IsEmpty());
  }
}

TEST_F(SelectionTest, LeavesTheResultUntouched) { EXPECT_EQ(plugin.callShown(kSelect, {integer(1)}), "undefined"); }

TEST_F(SelectionTest, IgnoresObjectsThatAreNoComponents) {
  for (const char* method : {kSelect, kUnselect}) {
    EXPECT_THAT(sentBy(method, objectFrom(plugin, "getComponents")), IsEmpty());
    EXPECT_THAT(sentBy(method, ScriptObject(plugin.base)), IsEmpty());
  }
}

// --- By object

TEST_F(SelectionTest, SelectsByTheIndexOfTheFirstFetch) {
  list("VIDEO", {videoText("10"), videoText("11")});
  list("AUDIO", {audioText("20"), audioText("21"), audioText("22")});
  list("SUBTITLE", {subtitleText("30"), subtitleText("31")});

  EXPECT_THAT(sentBy(kSelect, available(0, 1)), ElementsAre("SELECT_VIDEO_COMPONENT 1"));
  EXPECT_THAT(sentBy(kUnselect, available(0, 1)), ElementsAre("UNSELECT_VIDEO_COMPONENT 1"));
  EXPECT_THAT(sentBy(kSelect, available(1, 2)), ElementsAre("SELECT_AUDIO_COMPONENT 2"));
  EXPECT_THAT(sentBy(kUnselect, available(1, 2)), ElementsAre("UNSELECT_AUDIO_COMPONENT 2"));
  EXPECT_THAT(sentBy(kSelect, available(2, 1)), ElementsAre("SELECT_SUBTITLE_COMPONENT 1"));
  EXPECT_THAT(sentBy(kUnselect, available(2, 1)), ElementsAre("UNSELECT_SUBTITLE_COMPONENT 1"));
}

TEST_F(SelectionTest, SelectsItemsOfTheCollectionOfAll_ByTheIndexOfTheirKind) {
  list("VIDEO", {videoText("10")});
  list("AUDIO", {audioText("20"), audioText("21")});
  const ScriptObject all = objectFrom(plugin, "getComponents");

  EXPECT_THAT(sentBy(kSelect, itemOf(all, 2)), ElementsAre("SELECT_AUDIO_COMPONENT 1"));
}

/// Deliberate: the index stays that of the list from which the record came first, here the active one.
TEST_F(SelectionTest, KeepsTheFirstIndexOfARecord) {
  list("ACTIVE_AUDIO", {audioText("22")});
  list("AUDIO", {audioText("20"), audioText("21"), audioText("22")});

  EXPECT_NE(active(1, 0), nullptr);
  const ScriptObject audio = available(1, 2);

  EXPECT_THAT(sentBy(kSelect, audio), ElementsAre("SELECT_AUDIO_COMPONENT 0"));
}

TEST_F(SelectionTest, KeepsTheFirstIndexOfAVideo) {
  list("ACTIVE_VIDEO", {videoText("12")});
  list("VIDEO", {videoText("10"), videoText("11"), videoText("12")});

  EXPECT_NE(active(0, 0), nullptr);

  EXPECT_THAT(sentBy(kSelect, available(0, 2)), ElementsAre("SELECT_VIDEO_COMPONENT 0"));
}

TEST_F(SelectionTest, KeepsTheFirstIndexOfASubtitle) {
  list("ACTIVE_SUBTITLE", {subtitleText("32")});
  list("SUBTITLE", {subtitleText("30"), subtitleText("31"), subtitleText("32")});

  EXPECT_NE(active(2, 0), nullptr);

  EXPECT_THAT(sentBy(kSelect, available(2, 2)), ElementsAre("SELECT_SUBTITLE_COMPONENT 0"));
}

TEST_F(SelectionTest, SelectsByTheTypeThatTheRecordSays) {
  list("AUDIO", {commonText(2) + "main|deu|1|6|", commonText(9) + "main|deu|1|6|"});

  EXPECT_THAT(sentBy(kSelect, available(1, 0)), ElementsAre("SELECT_SUBTITLE_COMPONENT 0"));
  EXPECT_THAT(sentBy(kSelect, available(1, 1)), IsEmpty()) << "no command for such a type";
}

TEST_F(SelectionTest, LibrarySubtitlesSwitchSubtitles_WithoutAnEvent) {
  ASSERT_TRUE(plugin.write("numOfSubtitles", integer(2)));
  list("SUBTITLE", {subtitleText("30")});
  const ScriptObject subtitle = available(2, 0);

  sentBy(kSelect, subtitle);
  EXPECT_THAT(entries(plugin), ElementsAre("enableSubtitles=int:1"));
  sentBy(kUnselect, subtitle);
  EXPECT_THAT(entries(plugin), ElementsAre("enableSubtitles=int:0"));
}

TEST_F(SelectionTest, OutOfBandSubtitlesRaiseAnEvent_AndSendNothing) {
  ASSERT_TRUE(plugin.write("numOfSubtitles", integer(1)));
  ASSERT_TRUE(plugin.write("subParamAttr", text("2|ttml|0|0|0|||0|http://media.example/de.ttml||deu||0|")));
  const ScriptObject subtitle = available(2, 0);
  ASSERT_NE(subtitle, nullptr);

  EXPECT_THAT(sentBy(kSelect, subtitle), IsEmpty());
  EXPECT_THAT(entries(plugin),
              ElementsAre("enableSubtitles=int:1", "onSelectedComponentChanged(int:2, string:http://media.example/de.ttml)"));

  EXPECT_THAT(sentBy(kUnselect, subtitle), IsEmpty());
  EXPECT_THAT(entries(plugin),
              ElementsAre("enableSubtitles=int:0", "onSelectedComponentChanged(int:2, string:http://media.example/de.ttml)"));
}

TEST_F(SelectionTest, OutOfBandSubtitlesRaiseAnEvent_AlsoBehindTheLibrarysOwn) {
  list("SUBTITLE", {subtitleText("30")});
  ASSERT_TRUE(plugin.write("numOfSubtitles", integer(1)));
  ASSERT_TRUE(plugin.write("subParamAttr", text("2|ttml|0|0|0|||0|http://media.example/de.ttml||deu||0|")));
  const ScriptObject subtitle = available(2, 1);
  ASSERT_NE(subtitle, nullptr);

  EXPECT_THAT(sentBy(kSelect, subtitle), IsEmpty());
  EXPECT_THAT(entries(plugin),
              ElementsAre("enableSubtitles=int:1", "onSelectedComponentChanged(int:2, string:http://media.example/de.ttml)"));
}

/// What a record says is all that tells it from another: deliberate.
TEST_F(SelectionTest, AnOutOfBandSubtitleThatEqualsOneOfTheLibrarysIsTakenForIt) {
  list("SUBTITLE", {subtitleText("30"), subtitleText("31")});
  ASSERT_TRUE(plugin.write("numOfSubtitles", integer(1)));
  ASSERT_TRUE(plugin.write("subParamAttr", text(subtitleText("31"))));
  ASSERT_NE(available(2, 1), nullptr);
  const ScriptObject outOfBand = available(2, 2);
  ASSERT_NE(outOfBand, nullptr);

  EXPECT_THAT(sentBy(kSelect, outOfBand), ElementsAre("SELECT_SUBTITLE_COMPONENT 1"));
  EXPECT_THAT(entries(plugin), ElementsAre("enableSubtitles=int:1"));
}

TEST_F(SelectionTest, UnknownComponentsAreIgnored) {
  const ScriptObject video = hbbtv_avc::HbbTVVideoComponentClass::create(nullptr, readVideo(videoText()).release());
  const ScriptObject audio = hbbtv_avc::HbbTVAudioComponentClass::create(nullptr, readAudio(audioText()).release());
  const ScriptObject subtitle = hbbtv_avc::HbbTVSubtitleComponentClass::create(nullptr, readSubtitle(subtitleText()).release());

  for (const char* method : {kSelect, kUnselect}) {
    for (const ScriptObject& object : {video, audio, subtitle}) {
      EXPECT_THAT(sentBy(method, object), IsEmpty());
      EXPECT_THAT(entries(plugin), IsEmpty());
    }
  }
}

TEST_F(SelectionTest, ObjectsWithoutARecordAreIgnored) {
  ASSERT_TRUE(plugin.write("numOfSubtitles", integer(1)));

  for (const char* method : {kSelect, kUnselect}) {
    EXPECT_THAT(sentBy(method, hbbtv_avc::HbbTVVideoComponentClass::create(nullptr, nullptr)), IsEmpty());
    EXPECT_THAT(sentBy(method, hbbtv_avc::HbbTVAudioComponentClass::create(nullptr, nullptr)), IsEmpty());
    EXPECT_THAT(sentBy(method, hbbtv_avc::HbbTVSubtitleComponentClass::create(nullptr, nullptr)), IsEmpty());
    EXPECT_THAT(entries(plugin), IsEmpty());
  }
}

TEST_F(SelectionTest, SelectsAComponentWhoseObjectIsKeptPastItsCollection) {
  list("AUDIO", {audioText("20")});
  const ScriptObject first = available(1, 0);
  EXPECT_NE(available(1, 0), first);

  EXPECT_THAT(sentBy(kSelect, first), ElementsAre("SELECT_AUDIO_COMPONENT 0"));
}

/// New media: what was fetched before is not known any more.
TEST_F(SelectionTest, NewDataForgetsTheIndices) {
  list("AUDIO", {audioText("20")});
  const ScriptObject audio = available(1, 0);
  ASSERT_TRUE(plugin.write("data", text("http://media.example/b.mp4")));
  ASSERT_TRUE(library().waitForCall(fakes::isWrite("INPUT", "http://media.example/b.mp4")));

  EXPECT_THAT(sentBy(kSelect, audio), IsEmpty());
}

/// A refused source, too: deliberate.
TEST_F(SelectionTest, RefusedDataForgetsTheIndices) {
  list("AUDIO", {audioText("20")});
  const ScriptObject audio = available(1, 0);
  ASSERT_FALSE(plugin.write("data", text("x")));

  EXPECT_THAT(sentBy(kSelect, audio), IsEmpty());
  EXPECT_NE(available(1, 0), nullptr);
  EXPECT_THAT(sentBy(kSelect, audio), ElementsAre("SELECT_AUDIO_COMPONENT 0")) << "known again once it is fetched again";
}

/// The rows say it before the library hears of it, and the page is told last.
TEST_F(SelectionTest, SwitchesSubtitlesFirst_ThenSends_ThenTellsThePage) {
  ASSERT_TRUE(plugin.write("numOfSubtitles", integer(1)));
  list("SUBTITLE", {subtitleText("30")});
  const ScriptObject subtitle = available(2, 0);
  std::vector<std::string> before;
  for (const char* command : {"SELECT_DEFAULT_COMPONENT", "UNSELECT_COMPONENT_BY_TYPE", "SELECT_SUBTITLE_COMPONENT"}) {
    library().addHook(fakes::isCommand(command), [&](const fakes::Call&) { before = entries(plugin); });
  }

  sentBy(kSelect, integer(2));
  EXPECT_THAT(before, ElementsAre("enableSubtitles=int:1"));
  EXPECT_THAT(entries(plugin), ElementsAre("enableSubtitles=int:1", "onSelectedComponentChanged(int:2)"));
  sentBy(kUnselect, integer(2));
  EXPECT_THAT(before, ElementsAre("enableSubtitles=int:0"));
  sentBy(kSelect, subtitle);
  EXPECT_THAT(before, ElementsAre("enableSubtitles=int:1"));
}

TEST_F(SelectionTest, WithoutAPlayerNothingIsSent_ButThePageIsTold) {
  library().failOpens(1);
  TestPlugin other = makePlugin();
  ASSERT_TRUE(other.write("numOfSubtitles", integer(1)));
  library().clearCalls();

  EXPECT_EQ(other.callShown(kSelect, {integer(2)}), "undefined");

  EXPECT_THAT(library().actions(), IsEmpty());
  EXPECT_THAT(events(other), ElementsAre("onSelectedComponentChanged(int:2)"));
}

// --- Internal operations

TEST_F(SelectionTest, SelectsTheDefaultsOfTheProcess) {
  library().clearCalls();

  avControl().selectDefaultAVcomponent();

  const auto calls = library().calls(fakes::isFunction(fakes::Function::kSelectDefaultAvComponent));
  ASSERT_EQ(calls.size(), 2U);
  EXPECT_EQ(calls[0].number, 0);
  EXPECT_EQ(calls[1].number, 1);
}

TEST_F(SelectionTest, StopsTheBroadcast) {
  library().clearCalls();

  avControl().stopActiveAVComp();

  EXPECT_TRUE(library().waitForCall(fakes::isCommand("STOPBROADCAST", "")));
}

TEST_F(SelectionTest, StopsNothing_WithoutAPlayer) {
  library().failOpens(1);
  const TestPlugin other = makePlugin();
  library().clearCalls();

  AVControlPlugin::cast(other.base.get())->stopActiveAVComp();

  EXPECT_EQ(library().count(fakes::isCommand("STOPBROADCAST")), 0U);
}

// --- What the host asks about subtitles from out of band

class ComponentInfoTest : public SelectionTest {
 protected:
  /// The host frees what it is given.
  std::string info(int index) {
    char untouched[] = "untouched";
    char* out = untouched;
    if (!plugin.base->getComponentInfo(index, out)) return out == untouched ? "false" : "false, touched";
    const std::string copy(out);
    std::free(out);
    return copy;
  }
};

TEST_F(ComponentInfoTest, NumberIsTheLastPositiveOne) {
  EXPECT_EQ(plugin.base->getComponentNum(), 0);
  ASSERT_TRUE(plugin.write("numOfSubtitles", integer(3)));
  EXPECT_EQ(plugin.base->getComponentNum(), 3);
  plugin.write("numOfSubtitles", integer(0));
  plugin.write("numOfSubtitles", integer(-1));
  EXPECT_EQ(plugin.base->getComponentNum(), 3);
}

TEST_F(ComponentInfoTest, GivesStoredTexts) {
  ASSERT_TRUE(plugin.write("numOfSubtitles", integer(2)));
  ASSERT_TRUE(plugin.write("subParamAttr", text("first")));
  ASSERT_TRUE(plugin.write("subParamAttr", text("second")));

  EXPECT_EQ(info(0), "first");
  EXPECT_EQ(info(1), "second");
}

/// Deliberate: only an index above the count fails; the count itself and negative numbers give an empty text.
TEST_F(ComponentInfoTest, FailsOnlyAboveTheCount) {
  ASSERT_TRUE(plugin.write("numOfSubtitles", integer(2)));
  ASSERT_TRUE(plugin.write("subParamAttr", text("first")));

  EXPECT_EQ(info(1), "");
  EXPECT_EQ(info(2), "false");
  EXPECT_EQ(info(-1), "");
  EXPECT_EQ(info(-2147483647), "");
}

TEST_F(ComponentInfoTest, FailsBeforeANumberIsSet) {
  ASSERT_TRUE(plugin.write("subParamAttr", text("first")));

  EXPECT_EQ(info(0), "false");
  EXPECT_EQ(info(-1), "");
}

TEST_F(ComponentInfoTest, NeverReadsOutsideTheTable) {
  ASSERT_TRUE(plugin.write("numOfSubtitles", integer(11)));
  for (int i = 0; i < 11; ++i) ASSERT_TRUE(plugin.write("subParamAttr", text("text " + std::to_string(i))));

  EXPECT_EQ(info(9), "text 9");
  EXPECT_EQ(info(10), "");
  EXPECT_EQ(info(11), "false");
}

TEST_F(ComponentInfoTest, ANewNumberStartsTheTableAgain) {
  ASSERT_TRUE(plugin.write("numOfSubtitles", integer(2)));
  ASSERT_TRUE(plugin.write("subParamAttr", text("first")));
  ASSERT_TRUE(plugin.write("numOfSubtitles", integer(1)));

  EXPECT_EQ(info(0), "first") << "a stale text, until it is written over";
  EXPECT_EQ(info(1), "false");
}

TEST_F(ComponentInfoTest, CutsATextTo1023Bytes) {
  ASSERT_TRUE(plugin.write("numOfSubtitles", integer(1)));
  ASSERT_TRUE(plugin.write("subParamAttr", text(std::string(5000, 's'))));

  EXPECT_EQ(info(0), std::string(1023, 's'));
}

}  // namespace
