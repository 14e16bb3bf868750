// SPDX-License-Identifier: Apache-2.0
// Which status words reach their plugin, and under which lock.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include "plugin/av_control_plugin.h"
#include "tests/support/plugin_fixture.h"

namespace {

using fakes::Call;
using fakes::Function;
using fakes::isCommand;
using fakes::isFunction;
using fakes::isWrite;
using fakes::ofHandle;
using fixture::Entry;
using fixture::Gate;
using fixture::integer;
using fixture::TestPlugin;
using fixture::text;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

/// Long enough for a thread that is not held up to get through, so that its silence means that it waits.
constexpr std::chrono::milliseconds kSilence{150};
constexpr const char* kVideoWord = "SELECTED_VIDEO_COMPONENT_CHANGED";
constexpr const char* kAudioWord = "SELECTED_AUDIO_COMPONENT_CHANGED";
constexpr const char* kVideoEvent = "onSelectedComponentChanged(int:0)";
constexpr const char* kAudioEvent = "onSelectedComponentChanged(int:1)";

class MessageFilterTest : public fixture::PluginTest {
 protected:
  TestPlugin makePlayingPlugin() {
    auto plugin = makeReadyPlugin();
    EXPECT_EQ(plugin.callShown("play"), "bool:true");
    EXPECT_TRUE(library().fireAndWait(plugin.handle, "BUFFER_READY"));
    EXPECT_EQ(plugin.readShown("playState"), "int:1");
    EXPECT_TRUE(library().waitForCall(isCommand("PLAY")));
    log().clear();
    return plugin;
  }
  /// Holds the thread that raises @p shownEvent until @p go opens.
  void holdEvent(const std::string& shownEvent, const Gate& inside, const Gate& go) {
    log().setHook([shownEvent, inside, go](const Entry& entry) {
      if (shown(entry) != shownEvent) return;
      inside.open();
      go.wait();
    });
  }
  std::future<void> createElsewhere() {
    return std::async(std::launch::async, [] {
      std::shared_ptr<CorvelNativePluginBase> made;
      EXPECT_TRUE(corvelCreatePlugin(&made));
      if (made) made->willBeDestroyed();
    });
  }
};

// --- The registry

TEST_F(MessageFilterTest, WordsGoToThePluginOfTheirHandle) {
  const auto first = makePlugin();
  const auto second = makePlugin();

  ASSERT_TRUE(library().fireAndWait(second.handle, kVideoWord));

  EXPECT_THAT(events(first), IsEmpty());
  EXPECT_THAT(events(second), ElementsAre(kVideoEvent));
}

TEST_F(MessageFilterTest, WordsForAnUnknownHandleAreDropped) {
  const auto plugin = makePlugin();

  AVControlPlugin::msgReceivedWrapper(0, kVideoWord, nullptr);
  AVControlPlugin::msgReceivedWrapper(plugin.handle + 1, kVideoWord, nullptr);

  EXPECT_THAT(log().entries(), Not(Contains(::testing::Field(&Entry::kind, Entry::Kind::kEvent))));
}

TEST_F(MessageFilterTest, LateWordsAreDropped_AfterWillBeDestroyed) {
  const auto plugin = makePlugin();
  plugin.base->willBeDestroyed();
  log().clear();

  for (const char* word : {"READY_TO_PLAY", "STOPPED", "ERROR", "PLAYING", "FINISHED", kVideoWord}) {
    ASSERT_TRUE(library().invoke(plugin.handle, word));
  }

  EXPECT_THAT(log().entries(), IsEmpty());
}

TEST_F(MessageFilterTest, LateCallbacksAreDropped_AfterDestruction) {
  auto plugin = makePlugin();
  const unsigned long handle = plugin.handle;
  destroy(plugin);
  log().clear();
  _SubtitleSettingsParams settings{};

  EXPECT_TRUE(library().invoke(handle, "READY_TO_PLAY"));
  EXPECT_TRUE(library().invokeTextTrack(handle, TTML_SUBTITLE_SHOW, nullptr));
  EXPECT_TRUE(library().invokeSettings(handle, settings));

  EXPECT_THAT(log().entries(), IsEmpty());
}

// A word that found its plugin and then waited for the lock must look again: the plugin may have been destroyed meanwhile. Word and
// destruction race for the lock here; whichever wins, a destroyed plugin raises nothing.
TEST_F(MessageFilterTest, WordThatWaitedForADestructionIsDropped) {
  const auto other = makePlugin();
  for (int round = 0; round < 30; ++round) {
    auto plugin = makePlugin();
    const AVControlPlugin* const object = AVControlPlugin::cast(plugin.base.get());
    const Gate inside;
    const Gate go;
    std::atomic<bool> raisedLate{false};
    log().setHook([=, &raisedLate](const Entry& entry) {
      if (shown(entry) == kVideoEvent && object->deinitialized()) raisedLate = true;
      if (shown(entry) != kAudioEvent) return;
      inside.open();
      go.wait();
    });
    library().fire(other.handle, kAudioWord);  // takes the lock and keeps it
    ASSERT_TRUE(inside.wait());

    auto late = std::async(std::launch::async, [&] { library().invoke(plugin.handle, kVideoWord); });
    auto destroying = std::async(std::launch::async, [&] { plugin.base->willBeDestroyed(); });
    go.open();
    late.get();
    destroying.get();
    ASSERT_TRUE(library().waitIdle());
    log().setHook({});

    EXPECT_FALSE(raisedLate);
    drop(plugin);
  }
}

TEST_F(MessageFilterTest, WordDuringTheDestructionIsDropped) {
  auto plugin = makePlayingPlugin();
  std::future<void> late;
  library().addHook(ofHandle(plugin.handle, isFunction(Function::kClosePlayer)), [&](const Call& call) {
    late = std::async(std::launch::async, [this, handle = call.handle] { library().invoke(handle, kVideoWord); });
    EXPECT_EQ(late.wait_for(fakes::kDeadline), std::future_status::ready)
        << "the handle is out of the registry: nothing to wait for";
  });

  plugin.base->willBeDestroyed();

  ASSERT_TRUE(late.valid());
  EXPECT_THAT(events(plugin), IsEmpty());
}

TEST_F(MessageFilterTest, StopEchoDuringTheDestructionMovesNothing) {
  auto plugin = makePlayingPlugin();
  library().addHook(isCommand("STOP"), [&](const Call& call) { library().fireAndWait(call.handle, "STOPPED"); });

  plugin.base->willBeDestroyed();

  EXPECT_THAT(events(plugin), IsEmpty());
  EXPECT_EQ(library().count(isFunction(Function::kSelectDefaultAvComponent)), 0U);
}

// --- Renewal

class RenewalFilterTest : public MessageFilterTest {
 protected:
  /// Sets a new source, and runs @p body inside the renewal: while the old player is being closed.
  void renew(const TestPlugin& plugin, std::function<void()> body) {
    library().addHook(ofHandle(plugin.handle, isFunction(Function::kClosePlayer)), [body](const Call&) { body(); });
    EXPECT_TRUE(plugin.write("data", text("http://media.example/b.mp4")));
    EXPECT_TRUE(library().waitForCall(isWrite("INPUT", "http://media.example/b.mp4")));
  }
};

TEST_F(RenewalFilterTest, SwallowsEveryWord) {
  const auto plugin = makePlayingPlugin();

  renew(plugin, [&] {
    for (const char* word : {"PAUSED", "FINISHED", "ERROR", "READY_TO_PLAY", kVideoWord})
      library().fireAndWait(plugin.handle, word);
  });

  EXPECT_THAT(events(plugin), ElementsAre("onPlayStateChange(int:0)")) << "only the change of source itself";
}

TEST_F(RenewalFilterTest, FirstStoppedIsSwallowedAndEndsIt) {
  const auto plugin = makePlayingPlugin();
  std::vector<std::string> beforeStopped;
  std::vector<std::string> afterStopped;

  renew(plugin, [&] {
    library().fireAndWait(plugin.handle, kVideoWord);
    beforeStopped = events(plugin);
    library().fireAndWait(plugin.handle, "STOPPED");
    library().fireAndWait(plugin.handle, kAudioWord);
    afterStopped = events(plugin);
  });

  EXPECT_THAT(beforeStopped, IsEmpty());
  EXPECT_THAT(afterStopped, ElementsAre(kAudioEvent));
}

TEST_F(RenewalFilterTest, SecondStoppedIsHandled) {
  library().setProperty("DURATION", "60000");
  const auto plugin = makeReadyPlugin();
  ASSERT_EQ(plugin.callShown("play"), "bool:true");
  ASSERT_EQ(plugin.callShown("seek", {integer(1000)}), "bool:true");
  std::vector<std::string> states;
  // "PLAYING" leaves buffering only when no seek is under way, so it shows whether a "STOPPED" was handled.
  renew(plugin, [&] {
    library().fireAndWait(plugin.handle, "STOPPED");
    library().fireAndWait(plugin.handle, "PLAYING");
    states.push_back(plugin.readShown("playState"));
    library().fireAndWait(plugin.handle, "STOPPED");
    library().fireAndWait(plugin.handle, "PLAYING");
    states.push_back(plugin.readShown("playState"));
  });

  EXPECT_THAT(states, ElementsAre("int:4", "int:1"));
}

TEST_F(RenewalFilterTest, WordsOfTheNewPlayerAreSwallowedToo_WhileItLasts) {
  const auto plugin = makePlayingPlugin();
  library().addHook(isFunction(Function::kRegisterSubtitleSettingsChangedCallback),
                    [&](const Call& call) { library().fireAndWait(call.handle, kVideoWord); });

  renew(plugin, [] {});

  EXPECT_THAT(events(plugin), Not(Contains(kVideoEvent)));
}

TEST_F(RenewalFilterTest, WordsOfTheNewPlayerArriveAfterIt) {
  const auto plugin = makePlayingPlugin();
  renew(plugin, [] {});
  const unsigned long renewed = library().lastHandle();
  ASSERT_NE(renewed, plugin.handle);

  ASSERT_TRUE(library().fireAndWait(renewed, kVideoWord));

  EXPECT_THAT(events(plugin), Contains(kVideoEvent));
}

TEST_F(RenewalFilterTest, WordsOfTheOldPlayerAreDroppedAfterIt) {
  const auto plugin = makePlayingPlugin();
  renew(plugin, [] {});

  ASSERT_TRUE(library().invoke(plugin.handle, kVideoWord));

  EXPECT_THAT(events(plugin), Not(Contains(kVideoEvent)));
}

TEST_F(RenewalFilterTest, SwallowsWordsOfAQueuedMediasRenewal) {
  const auto plugin = makePlayingPlugin();
  ASSERT_EQ(plugin.callShown("queue", {text("http://media.example/next.mp4")}), "bool:true");
  library().addHook(ofHandle(plugin.handle, isFunction(Function::kClosePlayer)),
                    [&](const Call& call) { library().fireAndWait(call.handle, kVideoWord); });

  ASSERT_TRUE(library().fireAndWait(plugin.handle, "FINISHED"));
  ASSERT_TRUE(library().waitForCall(isWrite("INPUT", "http://media.example/next.mp4")));

  EXPECT_THAT(events(plugin), ElementsAre("onPlayStateChange(int:5)", "onPlayStateChange(int:0)"));
}

// --- A requested stop

class StopFilterTest : public MessageFilterTest {};

TEST_F(StopFilterTest, OnlyStoppedIsDelivered) {
  library().setProperty("POSITION", "1000");
  const auto plugin = makePlayingPlugin();
  std::vector<std::string> meanwhile;
  library().addHook(isCommand("STOP"), [&](const Call& call) {
    for (const char* word : {"FINISHED", "ERROR", "PLAYING", "PAUSED", "BUFFERING", "BUFFER_READY", "PLAY_POSITION_CHANGED",
                             "PLAY_SPEED_CHANGED", "READY_TO_PLAY", "CONNECTED", kVideoWord}) {
      EXPECT_TRUE(library().fireAndWait(call.handle, word));
    }
    meanwhile = events(plugin);
    library().fire(call.handle, "STOPPED");
  });

  EXPECT_EQ(plugin.callShown("stop"), "bool:true");
  drainWorker(plugin);

  EXPECT_THAT(meanwhile, IsEmpty());
  EXPECT_THAT(events(plugin), ElementsAre("onPlayStateChange(int:0)"));
  EXPECT_EQ(plugin.readShown("error"), "novalue");
}

// The stop waits on the script thread, which may hold the lock itself: its confirmation must not need it.
TEST_F(StopFilterTest, StoppedNeedsNoLock) {
  const auto plugin = makePlayingPlugin();
  const auto other = makePlugin();
  Gate inside;
  Gate go;
  holdEvent(kVideoEvent, inside, go);
  library().fire(other.handle, kVideoWord);
  ASSERT_TRUE(inside.wait());  // the lock is taken now, by the other plugin's word
  library().addHook(isCommand("STOP"), [&](const Call& call) { library().fire(call.handle, "STOPPED"); });

  auto stopping = std::async(std::launch::async, [&] { return plugin.callShown("stop"); });
  const bool stopped = waitForEvent(plugin, "onPlayStateChange(int:0)", fakes::kDeadline / 2);
  go.open();

  EXPECT_TRUE(stopped);
  EXPECT_EQ(stopping.get(), "bool:true");
}

TEST_F(StopFilterTest, WordsAreDeliveredAgainAfterwards) {
  const auto plugin = makePlayingPlugin();
  library().addHook(isCommand("STOP"), [&](const Call& call) { library().fire(call.handle, "STOPPED"); });
  ASSERT_EQ(plugin.callShown("stop"), "bool:true");

  ASSERT_TRUE(library().fireAndWait(plugin.handle, kVideoWord));

  EXPECT_THAT(events(plugin), Contains(kVideoEvent));
}

// --- The lock of all other words

class MessageLockTest : public MessageFilterTest {
 protected:
  /// Whether @p word, held while it raises @p event, keeps others from the lock.
  void expectLockHeld(const TestPlugin& plugin, const std::string& word, const std::string& event) {
    const auto other = makePlugin();
    Gate inside;
    Gate go;
    holdEvent(event, inside, go);
    library().fire(plugin.handle, word);
    ASSERT_TRUE(inside.wait());

    auto creating = createElsewhere();
    library().fire(other.handle, kAudioWord);
    const bool createdEarly = creating.wait_for(kSilence) == std::future_status::ready;
    const bool raisedEarly = !events(other).empty();
    go.open();

    EXPECT_FALSE(createdEarly);
    EXPECT_FALSE(raisedEarly);
    creating.get();
    EXPECT_TRUE(waitForEvent(other, kAudioEvent)) << "the other plugin's word went through afterwards";
  }
};

TEST_F(MessageLockTest, IsHeld_WhileAComponentChangeIsRaised) {
  const auto plugin = makePlugin();
  expectLockHeld(plugin, kVideoWord, kVideoEvent);
}

TEST_F(MessageLockTest, IsHeld_WhileThePlayerHandleIsRaised) {
  const auto plugin = makePluginWithSource();
  expectLockHeld(plugin, "READY_TO_PLAY", "onPlayerHandle(double:" + std::to_string(plugin.handle) + ")");
}

TEST_F(MessageLockTest, IsHeld_WhileReadyToPlayRaisesSeven) {
  const auto plugin = makePluginWithSource();
  expectLockHeld(plugin, "READY_TO_PLAY", "onPlayStateChange(int:7)");
}

TEST_F(MessageLockTest, IsHeld_WhileTheMachineMoves) {
  const auto plugin = makePlayingPlugin();
  expectLockHeld(plugin, "FINISHED", "onPlayStateChange(int:5)");
}

TEST_F(MessageLockTest, IsReleasedAfterEachWord) {
  const auto plugin = makePlayingPlugin();

  for (const char* word : {"PLAYING", "BUFFERING", "BUFFER_READY", "PAUSED", "UNKNOWN", "STOPPED", "ERROR"}) {
    ASSERT_TRUE(library().fireAndWait(plugin.handle, word));
  }

  EXPECT_EQ(createElsewhere().wait_for(fakes::kDeadline), std::future_status::ready);
}

TEST_F(MessageLockTest, IsNotHeld_WhileTheWorkerRaisesAnEvent) {
  library().setProperty("POSITION", "1500");
  const auto plugin = makePlugin();
  const auto other = makePlugin();
  Gate inside;
  Gate go;
  holdEvent("onPlayPositionChanged(double:1500)", inside, go);
  library().fire(plugin.handle, "PLAY_POSITION_CHANGED");
  ASSERT_TRUE(inside.wait());

  auto creating = createElsewhere();
  const bool created = creating.wait_for(fakes::kDeadline / 2) == std::future_status::ready;
  const bool delivered = library().fireAndWait(other.handle, kAudioWord, fakes::kDeadline / 2);
  go.open();

  EXPECT_TRUE(created);
  EXPECT_TRUE(delivered);
}

TEST_F(MessageLockTest, IsNotHeld_WhileAnErrorMovesTheMachine) {
  const auto plugin = makePlayingPlugin();
  Gate inside;
  Gate go;
  holdEvent("onPlayStateChange(int:6)", inside, go);
  library().fire(plugin.handle, "ERROR");
  ASSERT_TRUE(inside.wait());

  auto creating = createElsewhere();
  const bool created = creating.wait_for(fakes::kDeadline / 2) == std::future_status::ready;
  go.open();

  EXPECT_TRUE(created);
}

}  // namespace
