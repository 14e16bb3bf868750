// SPDX-License-Identifier: Apache-2.0
// In-band subtitle material, and the hooks of a page-side subtitle player.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "plugin/av_control_plugin.h"
#include "statemachine/play_states.h"
#include "tests/support/script_object.h"

using fixture::Entry;
using fixture::TestPlugin;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::internal::CaptureStderr;
using ::testing::internal::GetCapturedStderr;

namespace {

class TextTrackTest : public fixture::PluginTest {
 protected:
  TextTrackTest() { log().clear(); }

  /// Delivers a notification on the library's thread. @return what it wrote to standard error.
  std::string deliver(int type, void* data = nullptr) {
    CaptureStderr();
    EXPECT_TRUE(library().fireTextTrackAndWait(plugin.handle, static_cast<_TextTrackEventType>(type), data));
    return GetCapturedStderr();
  }

  TestPlugin plugin = makePlugin();
};

TEST_F(TextTrackTest, TracksAndCuesAreOnlyTraced) {
  EXPECT_EQ(deliver(TEXT_TRACK_ADD), "received command TEXT_TRACK_ADD");
  EXPECT_EQ(deliver(TEXT_TRACK_REMOVE), "received command TEXT_TRACK_REMOVE");
  EXPECT_EQ(deliver(TEXT_TRACK_CUE), "received command TEXT_TRACK_CUE");

  EXPECT_THAT(entries(plugin), IsEmpty());
}

/// The text is not NUL-terminated and may have a NUL inside: its length counts.
TEST_F(TextTrackTest, ForwardsADocument) {
  const std::string document("<tt>\0</tt>rest", 14);
  _TextTrackText data{document.data(), 10};

  EXPECT_EQ(deliver(TTML_SUBTITLE, &data), "received command TTML_SUBTITLE");

  EXPECT_THAT(events(plugin), ElementsAre("onInBandSubtitleData(string:" + document.substr(0, 10) + ")"));
}

TEST_F(TextTrackTest, TheHostCopiesTheDocument) {
  std::string document = "<tt>one</tt>";
  _TextTrackText data{document.data(), static_cast<int>(document.size())};
  deliver(TTML_SUBTITLE, &data);

  document.assign(document.size(), '#');

  EXPECT_THAT(drainEvents(), ElementsAre("onInBandSubtitleData(string:<tt>one</tt>)"));
  EXPECT_THAT(events(plugin), ElementsAre("onInBandSubtitleData(string:<tt>one</tt>)"));
}

TEST_F(TextTrackTest, TracesAnEmptyDocument_AndRaisesNothing) {
  _TextTrackText data{"", 0};

  EXPECT_EQ(deliver(TTML_SUBTITLE, &data), "received command TTML_SUBTITLE");

  EXPECT_THAT(entries(plugin), IsEmpty());
}

TEST_F(TextTrackTest, ForwardsFontTexts) {
  _TextTrackText data[] = {{"familyX", 6}, {"http://media.example/f.woff", 27}};

  EXPECT_EQ(deliver(TTML_SUBTITLE_FONT, data), "received command TTML_SUBTITLE_FONT");

  EXPECT_THAT(events(plugin), ElementsAre("onSubtitleFontFamily(string:family, string:http://media.example/f.woff)"));
}

TEST_F(TextTrackTest, RaisesNothing_WhenAFontTextIsEmpty) {
  _TextTrackText first[] = {{"", 0}, {"b", 1}};
  _TextTrackText second[] = {{"a", 1}, {"", 0}};

  EXPECT_EQ(deliver(TTML_SUBTITLE_FONT, first), "received command TTML_SUBTITLE_FONT");
  EXPECT_EQ(deliver(TTML_SUBTITLE_FONT, second), "received command TTML_SUBTITLE_FONT");

  EXPECT_THAT(entries(plugin), IsEmpty());
}

/// A notification that comes without its material is traced like an empty one.
TEST_F(TextTrackTest, TracesMaterialThatIsMissing_AndRaisesNothing) {
  EXPECT_EQ(deliver(TTML_SUBTITLE, nullptr), "received command TTML_SUBTITLE");
  EXPECT_EQ(deliver(TTML_SUBTITLE_FONT, nullptr), "received command TTML_SUBTITLE_FONT");

  EXPECT_THAT(entries(plugin), IsEmpty());
}

/// A null text stays one: what a page sees of it is the host's.
TEST_F(TextTrackTest, ForwardsANullTextAsNull) {
  _TextTrackText data[] = {{nullptr, 5}, {"font", 4}};

  deliver(TTML_SUBTITLE_FONT, data);

  EXPECT_THAT(events(plugin), ElementsAre("onSubtitleFontFamily(string:(null), string:font)"));
}

/// The host reads no text of a negative length.
TEST_F(TextTrackTest, ForwardsANegativeLengthAsNoText) {
  _TextTrackText data{"<tt/>", -1};

  EXPECT_EQ(deliver(TTML_SUBTITLE, &data), "received command TTML_SUBTITLE");

  EXPECT_THAT(events(plugin), ElementsAre("onInBandSubtitleData(string:)"));
}

TEST_F(TextTrackTest, ForwardsALargeDocument) {
  const std::string document = "<tt>" + std::string(1 << 20, 'x') + "</tt>";
  _TextTrackText data{document.data(), static_cast<int>(document.size())};

  deliver(TTML_SUBTITLE, &data);

  EXPECT_EQ(drainEvents(), std::vector<std::string>{"onInBandSubtitleData(string:" + document + ")"});
}

TEST_F(TextTrackTest, ForwardsSignals) {
  EXPECT_EQ(deliver(TTML_SUBTITLE_SHOW), "received command TTML_SUBTITLE_SHOW");
  EXPECT_EQ(deliver(TTML_SUBTITLE_HIDE), "received command TTML_SUBTITLE_HIDE");
  EXPECT_EQ(deliver(TTML_SUBTITLE_CHANGE), "received command TTML_SUBTITLE_CHANGE");

  EXPECT_THAT(events(plugin), ElementsAre("onInBandSubtitleShowHide(bool:true)", "onInBandSubtitleShowHide(bool:false)",
                                          "onInBandSubtitleChange()"));
}

TEST_F(TextTrackTest, IgnoresUnknownKinds) {
  for (const int type : {8, 9, 1000, -1}) EXPECT_EQ(deliver(type), "") << type;

  EXPECT_THAT(entries(plugin), IsEmpty());
}

TEST_F(TextTrackTest, RaisesOnTheLibrarysThread) {
  deliver(TTML_SUBTITLE_SHOW);

  const auto raised = log().entries();
  ASSERT_EQ(raised.size(), 1U);
  EXPECT_EQ(raised[0].thread, library().dispatcherThread(plugin.handle));
}

/// Not held up by the lock that status words run under.
TEST_F(TextTrackTest, TakesNoGlobalLock) {
  AVControlPlugin::the_mutex.lock(0);
  deliver(TTML_SUBTITLE_SHOW);
  AVControlPlugin::the_mutex.unlock(0);

  EXPECT_THAT(events(plugin), ElementsAre("onInBandSubtitleShowHide(bool:true)"));
}

TEST_F(TextTrackTest, RaisesNothing_AfterTheElementIsGone) {
  const unsigned long handle = plugin.handle;
  destroy(plugin);
  log().clear();

  CaptureStderr();
  EXPECT_TRUE(library().invokeTextTrack(handle, TTML_SUBTITLE_SHOW, nullptr));

  EXPECT_EQ(GetCapturedStderr(), "");
  EXPECT_THAT(log().entries(), IsEmpty());
}

/// Material, settings and status words come on threads of their own while the object goes: nothing waits, nothing is touched later.
TEST_F(TextTrackTest, MayComeOnSeveralThreads_WhileTheElementGoes) {
  constexpr int kRounds = 20;
  for (int round = 0; round < kRounds; ++round) {
    TestPlugin short_lived = makePlugin();
    const unsigned long handle = short_lived.handle;
    std::atomic<bool> gone{false};
    std::atomic<int> begun{0};
    const auto repeat = [&](const auto& call) {
      ++begun;
      while (!gone) call();
    };
    std::string text = "<tt/>";
    _TextTrackText document{text.data(), static_cast<int>(text.size())};
    CaptureStderr();
    std::thread tracks([&] { repeat([&] { library().invokeTextTrack(handle, TTML_SUBTITLE, &document); }); });
    std::thread settings([&] { repeat([&] { library().invokeSettings(handle, {1, "eng", 3}); }); });
    std::thread words([&] { repeat([&] { library().invoke(handle, "PLAYING"); }); });
    while (begun < 3) std::this_thread::yield();
    destroy(short_lived);
    gone = true;
    tracks.join();
    settings.join();
    words.join();
    const std::string traced = GetCapturedStderr();
    EXPECT_EQ(traced.size() % std::string("received command TTML_SUBTITLE").size(), 0U) << "no trace is torn";
  }
}

TEST_F(TextTrackTest, ReachesTheElementOfItsHandle) {
  const TestPlugin other = makePlugin();

  deliver(TTML_SUBTITLE_SHOW);

  EXPECT_EQ(events(plugin).size(), 1U);
  EXPECT_THAT(events(other), IsEmpty());
}

// --- The page-side subtitle player

class OutOfBandPlayerTest : public TextTrackTest {};

TEST_F(OutOfBandPlayerTest, StartTellsThePageThatPlaybackRuns) {
  plugin.base->startOOBSubtitlePlayer(true);

  EXPECT_THAT(entries(plugin), ElementsAre("onStartStopSubtitlePlayer(bool:true)", "playState=int:1", "onPlayStateChange(int:1)"));
  EXPECT_EQ(plugin.readShown("playState"), "int:1");
  EXPECT_TRUE(AVControlPlugin::cast(plugin.base.get())->stateMachine().isCurrentState(AVControlStoppedState::id()))
      << "the machine itself is not moved";
}

TEST_F(OutOfBandPlayerTest, StartOnlyStarts_WhenPlaybackRuns) {
  plugin.base->startOOBSubtitlePlayer(true);
  log().clear();

  plugin.base->startOOBSubtitlePlayer(true);

  EXPECT_THAT(entries(plugin), ElementsAre("onStartStopSubtitlePlayer(bool:true)"));
}

TEST_F(OutOfBandPlayerTest, StopOnlyStops) {
  plugin.base->startOOBSubtitlePlayer(false);

  EXPECT_THAT(entries(plugin), ElementsAre("onStartStopSubtitlePlayer(bool:false)"));
  EXPECT_EQ(plugin.readShown("playState"), "int:0");
}

TEST_F(OutOfBandPlayerTest, RaisesOnTheCallersThread) {
  plugin.base->startOOBSubtitlePlayer(true);

  for (const Entry& entry : log().entries()) EXPECT_EQ(entry.thread, std::this_thread::get_id());
}

TEST_F(OutOfBandPlayerTest, PositionIsTheLibrarys) {
  library().setOobPosition(4321);
  EXPECT_EQ(plugin.readShown("ttmlXmlPlayPosition"), "int:4321");
  library().setOobPosition(0);
  EXPECT_EQ(plugin.readShown("ttmlXmlPlayPosition"), "int:0");
}

/// What the library wrote counts, not what it answered.
TEST_F(OutOfBandPlayerTest, PositionIsTheLibrarys_WhateverItAnswers) {
  library().setOobPosition(4321, 0);
  EXPECT_EQ(plugin.readShown("ttmlXmlPlayPosition"), "int:4321");
  library().setOobPosition(-2, 0);
  EXPECT_EQ(plugin.readShown("ttmlXmlPlayPosition"), "int:-2");
  library().setOobPosition(5000, 1);
  EXPECT_EQ(plugin.readShown("ttmlXmlPlayPosition"), "int:5000");
}

TEST_F(OutOfBandPlayerTest, PositionIsMinusOne_WhenTheLibraryDoesNotSay) {
  EXPECT_EQ(plugin.readShown("ttmlXmlPlayPosition"), "int:-1");

  const auto asked = library().calls(fakes::isFunction(fakes::Function::kGetOobPlayerPosition));
  ASSERT_EQ(asked.size(), 1U);
  EXPECT_EQ(asked[0].handle, plugin.handle);
}

TEST_F(OutOfBandPlayerTest, PositionIsMinusOne_WithoutAPlayer) {
  library().failOpens(1);
  const TestPlugin other = makePlugin();

  EXPECT_EQ(other.readShown("ttmlXmlPlayPosition"), "int:-1");
}

TEST_F(OutOfBandPlayerTest, PositionFails_OnADeinitialisedObject) {
  plugin.base->willBeDestroyed();

  EXPECT_EQ(plugin.readShown("ttmlXmlPlayPosition"), "failed");
}

}  // namespace
