// SPDX-License-Identifier: Apache-2.0
// Making, initialising, renewing and destroying plugin objects.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <future>
#include <memory>
#include <stdexcept>
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
using fixture::Gate;
using fixture::integer;
using fixture::TestPlugin;
using fixture::text;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Long enough for a thread that is not held up to get through, so that its silence means that it waits.
constexpr std::chrono::milliseconds kSilence{150};

class PluginLifecycleTest : public fixture::PluginTest {
 protected:
  static AVControlPlugin* object(const TestPlugin& plugin) { return AVControlPlugin::cast(plugin.base.get()); }
  std::size_t opened() { return library().count(isFunction(Function::kOpenPlayer)); }
  std::size_t closed() { return library().count(isFunction(Function::kClosePlayer)); }

  /// Makes a plugin on another thread.
  std::future<bool> createElsewhere() {
    return std::async(std::launch::async, [] {
      std::shared_ptr<CorvelNativePluginBase> made;
      const bool ok = corvelCreatePlugin(&made);
      if (made) made->willBeDestroyed();
      return ok;
    });
  }
};

/// A plugin of another kind.
class ForeignPlugin : public CorvelNativePluginBase {
 public:
  explicit ForeignPlugin(int kind) : CorvelNativePluginBase(nullptr), m_kind(kind) {}
  int type() override { return 0; }
  bool install() override { return CorvelNativePropertyBase::install(nullptr, 0, nullptr, 0); }
  int pluginType() override { return m_kind; }
  bool setWindowProperties(int, int, int, int) override { return true; }
  void willBeDestroyed() override {}
  bool initPlugin() override { return true; }
  bool setDocumentUrl(const char*, unsigned int) override { return true; }

 private:
  const int m_kind;
};

// --- Creation

TEST_F(PluginLifecycleTest, OpensOnePlayerAndRegistersItsCallbacksInOrder) {
  const auto plugin = makePlugin();

  std::vector<Function> functions;
  for (const Call& call : library().calls()) functions.push_back(call.function);
  EXPECT_THAT(functions, ElementsAre(Function::kOpenPlayer, Function::kRegisterCallback, Function::kRegisterTextTrackCallback,
                                     Function::kRegisterSubtitleSettingsChangedCallback));
  EXPECT_NE(plugin.handle, 0U);
}

TEST_F(PluginLifecycleTest, OpensThePlayerWithKindOne) {
  makePlugin();

  EXPECT_EQ(library().calls().front().number, 1);
}

TEST_F(PluginLifecycleTest, RegistersItsStaticCallbacksForItsHandle) {
  const auto plugin = makePlugin();

  const auto calls = library().calls();
  ASSERT_EQ(calls.size(), 4U);
  EXPECT_EQ(calls[1].callback, reinterpret_cast<const void*>(&AVControlPlugin::msgReceivedWrapper));
  EXPECT_EQ(calls[2].callback, reinterpret_cast<const void*>(&AVControlPlugin::subtitleReceivedWrapper));
  EXPECT_EQ(calls[3].callback, reinterpret_cast<const void*>(&AVControlPlugin::subtitleSettingsChanged));
  for (std::size_t i = 1; i < calls.size(); ++i) EXPECT_EQ(calls[i].handle, plugin.handle);
}

TEST_F(PluginLifecycleTest, DoesAllOfItOnTheCallingThread) {
  makePlugin();

  for (const Call& call : library().calls()) EXPECT_EQ(call.thread, std::this_thread::get_id()) << describe(call);
}

TEST_F(PluginLifecycleTest, HasNoPlayerYet_WhileTheCallbacksAreRegistered) {
  std::vector<unsigned long> seen;
  bool known = true;
  library().addHook(isFunction(Function::kRegisterCallback), [&](const Call& call) {
    AVControlPlugin* const plugin = AVControlPlugin::getPlugin(call.handle);
    known = known && plugin != nullptr;
    if (plugin != nullptr) seen.push_back(plugin->getNativePlayerHandle());
  });

  const auto plugin = makePlugin();

  EXPECT_TRUE(known) << "the handle must be in the registry before the callbacks are registered";
  EXPECT_THAT(seen, ElementsAre(0U));
  EXPECT_EQ(plugin.base->getNativePlayerHandle(), plugin.handle);
}

TEST_F(PluginLifecycleTest, IsInstalledBeforeItIsInitialised) {
  std::size_t rows = 0;
  library().addHook(isFunction(Function::kRegisterCallback),
                    [&](const Call& call) { rows = pluginhost::propertyRows(*AVControlPlugin::getPlugin(call.handle)).size(); });

  makePlugin();

  EXPECT_EQ(rows, 33U);
}

TEST_F(PluginLifecycleTest, SendsNothingToANewPlayer) {
  const auto plugin = makePlugin();
  drainWorker(plugin);

  EXPECT_EQ(library().actions().size(), 1U) << "only the command that marks the end of the queue";
}

TEST_F(PluginLifecycleTest, RaisesNoEventAtCreation) {
  const auto plugin = makePlugin();

  EXPECT_THAT(events(plugin), IsEmpty());
}

TEST_F(PluginLifecycleTest, HasItsTypeNumbers) {
  const auto plugin = makePlugin();

  EXPECT_EQ(plugin.base->type(), 0);
  EXPECT_EQ(plugin.base->pluginType(), 8);
}

TEST_F(PluginLifecycleTest, HoldsTheMutexWhileItIsMade) {
  Gate inside;
  Gate go;
  library().addHook(isFunction(Function::kOpenPlayer), [inside, go](const Call&) {
    inside.open();
    go.wait();
  });
  auto first = createElsewhere();
  ASSERT_TRUE(inside.wait());
  library().clearHooks();

  auto second = createElsewhere();
  const bool held = second.wait_for(kSilence) == std::future_status::timeout;
  go.open();

  EXPECT_TRUE(held);
  EXPECT_TRUE(first.get());
  EXPECT_TRUE(second.get());
}

TEST_F(PluginLifecycleTest, NamesItsMutexes) {
  EXPECT_STREQ(AVControlPlugin::the_mutex.name(), "AVControlPlugin");
  EXPECT_STREQ(AVControlPlugin::plugin_handler_mutex.name(), "PluginHandler");
}

// --- cast

TEST_F(PluginLifecycleTest, CastsNullToNull) { EXPECT_EQ(AVControlPlugin::cast(nullptr), nullptr); }

TEST_F(PluginLifecycleTest, CastsAnotherKindOfPluginToNull) {
  ForeignPlugin seven(7);
  ForeignPlugin zero(0);

  EXPECT_EQ(AVControlPlugin::cast(&seven), nullptr);
  EXPECT_EQ(AVControlPlugin::cast(&zero), nullptr);
}

TEST_F(PluginLifecycleTest, CastsItself) {
  const auto plugin = makePlugin();

  EXPECT_EQ(static_cast<CorvelNativePluginBase*>(object(plugin)), plugin.base.get());
}

// --- A second initialisation

TEST_F(PluginLifecycleTest, KeepsPlayerAndHandle_OnASecondInit) {
  const auto plugin = makePlugin();

  EXPECT_TRUE(plugin.base->initPlugin());
  EXPECT_TRUE(plugin.base->initPlugin());

  EXPECT_EQ(opened(), 1U);
  EXPECT_EQ(closed(), 0U);
  EXPECT_EQ(plugin.base->getNativePlayerHandle(), plugin.handle);
}

TEST_F(PluginLifecycleTest, KeepsTheAttributes_OnASecondInit) {
  const auto plugin = makePlugin();
  ASSERT_TRUE(plugin.write("width", text("640")));
  ASSERT_TRUE(plugin.write("type", text("video/mp4")));

  EXPECT_TRUE(plugin.base->initPlugin());

  EXPECT_EQ(plugin.readShown("width"), "string:640");
  EXPECT_EQ(plugin.readShown("type"), "string:video/mp4");
}

TEST_F(PluginLifecycleTest, KeepsADeferredPlay_OnASecondInit) {
  const auto plugin = makePluginWithSource();
  ASSERT_EQ(plugin.callShown("play", {integer(2)}), "bool:true");

  EXPECT_TRUE(plugin.base->initPlugin());
  library().fire(plugin.handle, "READY_TO_PLAY");

  EXPECT_TRUE(library().waitForCall(isCommand("PLAY", "2.00")));
}

// --- No player to be had

TEST_F(PluginLifecycleTest, IsMadeWithoutAPlayer_WhenNoneCanBeOpened) {
  library().failOpens(1);

  const auto plugin = makePlugin();

  EXPECT_EQ(plugin.handle, 0U);
  EXPECT_EQ(plugin.base->getNativePlayerHandle(), 0U);
  EXPECT_EQ(library().calls().size(), 1U) << "no callback is registered for a handle of 0";
  EXPECT_EQ(AVControlPlugin::getPlugin(0), nullptr);
}

TEST_F(PluginLifecycleTest, InitSaysWhetherThereIsAPlayer) {
  library().failOpens(2);
  const auto plugin = makePlugin();

  EXPECT_FALSE(plugin.base->initPlugin());
  EXPECT_TRUE(plugin.base->initPlugin());

  EXPECT_EQ(plugin.base->getNativePlayerHandle(), library().lastHandle());
  EXPECT_EQ(AVControlPlugin::getPlugin(library().lastHandle()), object(plugin));
}

TEST_F(PluginLifecycleTest, EveryCommandFails_WithoutAPlayer) {
  library().failOpens(1000);
  const auto plugin = makePlugin();

  EXPECT_EQ(plugin.callShown("play"), "bool:false");
  EXPECT_EQ(plugin.callShown("play", {integer(0)}), "bool:false");
  EXPECT_EQ(plugin.callShown("seek", {integer(5)}), "bool:false");
  EXPECT_EQ(plugin.readShown("playPosition"), "failed");
  EXPECT_EQ(plugin.readShown("playTime"), "failed");
  EXPECT_EQ(plugin.readShown("speed"), "failed");
  EXPECT_TRUE(plugin.base->setWindowProperties(0, 0, 640, 360));
  EXPECT_THAT(library().actions(), IsEmpty());
}

TEST_F(PluginLifecycleTest, PlayOpensThePlayer_WhenThereIsNone) {
  library().failOpens(1);
  const auto plugin = makePlugin();

  EXPECT_EQ(plugin.callShown("play"), "bool:true");

  EXPECT_EQ(opened(), 2U);
  EXPECT_EQ(plugin.base->getNativePlayerHandle(), library().lastHandle());
}

TEST_F(PluginLifecycleTest, IsDestroyedWithoutAPlayer) {
  library().failOpens(1);
  auto plugin = makePlugin();

  destroy(plugin);

  EXPECT_EQ(closed(), 0U);
}

// --- Exceptions

TEST_F(PluginLifecycleTest, ReleasesLockAndObject_WhenOpenPlayerThrows) {
  library().addHook(isFunction(Function::kOpenPlayer), [](const Call&) { throw std::runtime_error("no resources"); });

  EXPECT_ANY_THROW(AVControlPlugin::create());
  library().clearHooks();

  auto next = createElsewhere();
  ASSERT_EQ(next.wait_for(fakes::kDeadline), std::future_status::ready) << "the lock was not released";
  EXPECT_TRUE(next.get());
}

TEST_F(PluginLifecycleTest, EntryPointSaysFalse_WhenOpenPlayerThrows) {
  library().addHook(isFunction(Function::kOpenPlayer), [](const Call&) { throw std::runtime_error("no resources"); });
  std::shared_ptr<CorvelNativePluginBase> made;

  EXPECT_FALSE(corvelCreatePlugin(&made));

  EXPECT_EQ(made, nullptr);
}

TEST_F(PluginLifecycleTest, ReleasesLockAndObject_WhenRegisteringThrows) {
  library().addHook(isFunction(Function::kRegisterTextTrackCallback), [](const Call&) { throw std::runtime_error("no"); });
  auto failing = std::async(std::launch::async, [] { EXPECT_ANY_THROW(AVControlPlugin::create()); });
  ASSERT_EQ(failing.wait_for(fakes::kDeadline), std::future_status::ready) << "the object was released under its own lock";
  library().clearHooks();

  const unsigned long handle = library().lastHandle();
  EXPECT_EQ(AVControlPlugin::getPlugin(handle), nullptr);
  EXPECT_TRUE(createElsewhere().get());
  EXPECT_THAT(library().openHandles(), IsEmpty()) << "nobody else can close that player";
}

// The handle must not stay in the registry: its entry would outlive the plugin.
TEST_F(PluginLifecycleTest, LeavesNoHandleBehind_WhenRegisteringThrowsLater) {
  library().failOpens(1);
  auto plugin = makePlugin();
  library().addHook(isFunction(Function::kRegisterTextTrackCallback), [](const Call&) { throw std::runtime_error("no"); });
  EXPECT_ANY_THROW(plugin.base->initPlugin());
  library().clearHooks();
  const unsigned long abandoned = library().lastHandle();

  EXPECT_TRUE(plugin.base->initPlugin());

  EXPECT_EQ(AVControlPlugin::getPlugin(abandoned), nullptr);
  EXPECT_THAT(library().openHandles(), ElementsAre(library().lastHandle()));
  destroy(plugin);
  EXPECT_EQ(AVControlPlugin::getPlugin(abandoned), nullptr);
}

// --- willBeDestroyed and the destructor

TEST_F(PluginLifecycleTest, ClosesThePlayerOnTheDestroyingThread) {
  auto plugin = makePlugin();

  plugin.base->willBeDestroyed();

  const auto closes = library().calls(isFunction(Function::kClosePlayer));
  ASSERT_EQ(closes.size(), 1U);
  EXPECT_EQ(closes[0].handle, plugin.handle);
  EXPECT_EQ(closes[0].thread, std::this_thread::get_id());
  EXPECT_EQ(plugin.base->getNativePlayerHandle(), 0U);
}

TEST_F(PluginLifecycleTest, SendsNoStop_WhenNothingWasPlayed) {
  auto plugin = makePluginWithSource();

  destroy(plugin);

  EXPECT_EQ(library().count(isCommand("STOP")), 0U);
}

TEST_F(PluginLifecycleTest, StopsBeforeItCloses_WhenPlaying) {
  auto plugin = makeReadyPlugin();
  ASSERT_EQ(plugin.callShown("play"), "bool:true");
  ASSERT_TRUE(library().waitForCall(isCommand("PLAY")));

  destroy(plugin);

  const auto stops = library().calls(isCommand("STOP", ""));
  const auto closes = library().calls(isFunction(Function::kClosePlayer));
  ASSERT_EQ(stops.size(), 1U);
  ASSERT_EQ(closes.size(), 1U);
  EXPECT_LT(stops[0].sequence, closes[0].sequence);
  EXPECT_EQ(stops[0].thread, std::this_thread::get_id());
}

TEST_F(PluginLifecycleTest, LeavesTheRegistryBeforeItCloses) {
  auto plugin = makePlugin();
  const AVControlPlugin* found = object(plugin);
  library().addHook(isFunction(Function::kClosePlayer), [&](const Call& call) { found = AVControlPlugin::getPlugin(call.handle); });

  destroy(plugin);

  EXPECT_EQ(found, nullptr);
}

TEST_F(PluginLifecycleTest, HoldsTheMutexWhileItIsDestroyed) {
  auto plugin = makePlugin();
  Gate inside;
  Gate go;
  library().addHook(isFunction(Function::kClosePlayer), [inside, go](const Call&) {
    inside.open();
    go.wait();
  });
  auto destroying = std::async(std::launch::async, [&] { plugin.base->willBeDestroyed(); });
  ASSERT_TRUE(inside.wait());
  library().clearHooks();

  auto creating = createElsewhere();
  const bool held = creating.wait_for(kSilence) == std::future_status::timeout;
  go.open();

  EXPECT_TRUE(held);
  destroying.get();
  EXPECT_TRUE(creating.get());
}

TEST_F(PluginLifecycleTest, IsDeinitialisedForGood) {
  const auto plugin = makePlugin();
  EXPECT_FALSE(object(plugin)->deinitialized());

  plugin.base->willBeDestroyed();

  EXPECT_TRUE(object(plugin)->deinitialized());
  EXPECT_FALSE(plugin.base->initPlugin());
  EXPECT_FALSE(object(plugin)->resetPlayer());
  EXPECT_TRUE(object(plugin)->deinitialized());
  EXPECT_EQ(opened(), 1U) << "a plugin must not come back to life";
}

TEST_F(PluginLifecycleTest, IsDeinitialisedOnce_WhenToldTwice) {
  auto plugin = makePlugin();

  plugin.base->willBeDestroyed();
  plugin.base->willBeDestroyed();
  object(plugin)->deinit();
  object(plugin)->deinit();
  drop(plugin);

  EXPECT_EQ(closed(), 1U);
}

TEST_F(PluginLifecycleTest, FreesItsTextsOnce) {
  auto plugin = makePlugin();
  ASSERT_TRUE(plugin.write("cache", text("yes")));
  ASSERT_TRUE(plugin.write("loop", text("infinite")));
  ASSERT_TRUE(plugin.write("userAgent", text("Set/1.0")));
  ASSERT_TRUE(plugin.write("nativeWindowSize", text("1920x1080")));

  plugin.base->willBeDestroyed();
  object(plugin)->deinit();
  destroy(plugin);

  EXPECT_EQ(closed(), 1U);
}

TEST_F(PluginLifecycleTest, DestructorDoesNotDeinitialiseAgain_AfterWillBeDestroyed) {
  auto plugin = makePlugin();
  plugin.base->willBeDestroyed();
  library().clearCalls();

  drop(plugin);

  EXPECT_THAT(library().calls(), IsEmpty());
}

TEST_F(PluginLifecycleTest, DestructorDeinitialises_WithoutWillBeDestroyed) {
  auto plugin = makePlugin();
  const unsigned long handle = plugin.handle;

  drop(plugin);

  EXPECT_EQ(library().count(ofHandle(handle, isFunction(Function::kClosePlayer))), 1U);
  EXPECT_EQ(AVControlPlugin::getPlugin(handle), nullptr);
}

TEST_F(PluginLifecycleTest, DestructorDeinitialisesUnderTheMutex) {
  auto plugin = makePlugin();
  Gate inside;
  Gate go;
  library().addHook(isFunction(Function::kClosePlayer), [inside, go](const Call&) {
    inside.open();
    go.wait();
  });
  auto dropping = std::async(std::launch::async, [&] { drop(plugin); });
  ASSERT_TRUE(inside.wait());
  library().clearHooks();

  auto creating = createElsewhere();
  const bool held = creating.wait_for(kSilence) == std::future_status::timeout;
  go.open();

  EXPECT_TRUE(held);
  dropping.get();
  EXPECT_TRUE(creating.get());
}

TEST_F(PluginLifecycleTest, DestructorNeedsNoMutex_AfterWillBeDestroyed) {
  auto doomed = makePlugin();
  doomed.base->willBeDestroyed();
  Gate inside;
  Gate go;
  library().addHook(isFunction(Function::kOpenPlayer), [inside, go](const Call&) {
    inside.open();
    go.wait();
  });
  auto creating = createElsewhere();
  ASSERT_TRUE(inside.wait());

  auto dropping = std::async(std::launch::async, [&] { drop(doomed); });
  const bool dropped = dropping.wait_for(fakes::kDeadline / 2) == std::future_status::ready;
  go.open();

  EXPECT_TRUE(dropped);
  EXPECT_TRUE(creating.get());
}

// --- Document address, shown by what a relative source becomes

struct DocumentUrl {
  const char* name;
  std::string url;
  unsigned int length;
  bool accepted;
};

class DocumentUrlTest : public fixture::PluginTest, public ::testing::WithParamInterface<DocumentUrl> {};

TEST_P(DocumentUrlTest, IsAcceptedOrRefused) {
  const auto plugin = makePlugin();

  EXPECT_EQ(plugin.base->setDocumentUrl(GetParam().url.c_str(), GetParam().length), GetParam().accepted);
}

std::string longUrl(std::size_t length) { return "http://a/" + std::string(length - 9, 'x'); }

INSTANTIATE_TEST_SUITE_P(All, DocumentUrlTest,
                         ::testing::Values(DocumentUrl{"Path", "abc/def/page.html", 17, true},
                                           DocumentUrl{"ThreeBytes", "a/b", 3, false}, DocumentUrl{"FourBytes", "a/bc", 4, true},
                                           DocumentUrl{"SlashFirst", "/abc", 4, true},
                                           DocumentUrl{"Longest", longUrl(2047), 2047, true},
                                           DocumentUrl{"TooLong", longUrl(2048), 2048, false},
                                           DocumentUrl{"MuchTooLong", longUrl(9000), 9000, false},
                                           DocumentUrl{"Empty", "", 0, false}, DocumentUrl{"NoSlash", "about:blank", 11, false}),
                         [](const auto& info) { return info.param.name; });

TEST_F(PluginLifecycleTest, RefusesANullDocumentUrl) {
  const auto plugin = makePlugin();

  EXPECT_FALSE(plugin.base->setDocumentUrl(nullptr, 17));
}

TEST_F(PluginLifecycleTest, KeepsTheDocumentUrlUpToItsLastSlash) {
  const auto plugin = makePlugin();
  const std::string url = "http://page.example/abc/def/page.html";
  ASSERT_TRUE(plugin.base->setDocumentUrl(url.c_str(), static_cast<unsigned int>(url.size())));

  EXPECT_TRUE(plugin.write("data", text("clip.mp4")));

  EXPECT_TRUE(library().waitForCall(isWrite("INPUT", "http://page.example/abc/def/clip.mp4")));
}

TEST_F(PluginLifecycleTest, KeepsTheWholeDocumentUrl_WhenItEndsWithASlash) {
  const auto plugin = makePlugin();
  const std::string url = "http://page.example/abc/";
  ASSERT_TRUE(plugin.base->setDocumentUrl(url.c_str(), static_cast<unsigned int>(url.size())));

  EXPECT_TRUE(plugin.write("data", text("clip.mp4")));

  EXPECT_TRUE(library().waitForCall(isWrite("INPUT", "http://page.example/abc/clip.mp4")));
}

TEST_F(PluginLifecycleTest, TakesOnlyTheGivenLengthOfTheDocumentUrl) {
  const auto plugin = makePlugin();
  const std::string url = "http://page.example/abc/page.html?back=/other/page";
  ASSERT_TRUE(plugin.base->setDocumentUrl(url.c_str(), 30));

  EXPECT_TRUE(plugin.write("data", text("clip.mp4")));

  EXPECT_TRUE(library().waitForCall(isWrite("INPUT", "http://page.example/abc/clip.mp4")));
}

// The byte behind the given length is looked at too: a slash there ends the address without being part of it. Deliberate.
TEST_F(PluginLifecycleTest, SlashBehindTheLengthEndsTheDocumentUrl) {
  const auto plugin = makePlugin();
  ASSERT_TRUE(plugin.base->setDocumentUrl("http://page.example/abc/page.html", 23));

  EXPECT_TRUE(plugin.write("data", text("clip.mp4")));

  EXPECT_TRUE(library().waitForCall(isWrite("INPUT", "http://page.example/abcclip.mp4")));
}

TEST_F(PluginLifecycleTest, LaterDocumentUrlReplacesTheEarlier) {
  const auto plugin = makePlugin();
  const std::string first = "http://page.example/a/very/long/way/down/page.html";
  const std::string second = "http://b.example/page.html";
  ASSERT_TRUE(plugin.base->setDocumentUrl(first.c_str(), static_cast<unsigned int>(first.size())));
  ASSERT_TRUE(plugin.base->setDocumentUrl(second.c_str(), static_cast<unsigned int>(second.size())));

  EXPECT_TRUE(plugin.write("data", text("clip.mp4")));

  EXPECT_TRUE(library().waitForCall(isWrite("INPUT", "http://b.example/clip.mp4")));
}

TEST_F(PluginLifecycleTest, RefusedDocumentUrlLeavesTheEarlier) {
  const auto plugin = makePlugin();
  const std::string url = "http://page.example/abc/page.html";
  ASSERT_TRUE(plugin.base->setDocumentUrl(url.c_str(), static_cast<unsigned int>(url.size())));
  EXPECT_FALSE(plugin.base->setDocumentUrl("x/y", 3));
  EXPECT_FALSE(plugin.base->setDocumentUrl("about:blank", 11));

  EXPECT_TRUE(plugin.write("data", text("clip.mp4")));

  EXPECT_TRUE(library().waitForCall(isWrite("INPUT", "http://page.example/abc/clip.mp4")));
}

// "/" is no http address: nothing relative can be made of it.
TEST_F(PluginLifecycleTest, DocumentUrlMayBeNoMoreThanItsFirstSlash) {
  const auto plugin = makePlugin();
  const std::string url = "http://page.example/abc/page.html";
  ASSERT_TRUE(plugin.base->setDocumentUrl(url.c_str(), static_cast<unsigned int>(url.size())));

  EXPECT_TRUE(plugin.base->setDocumentUrl("/abc", 4));

  EXPECT_FALSE(plugin.write("data", text("clip.mp4")));
}

// --- Questions of the host

TEST_F(PluginLifecycleTest, HasNoUrlForTheMediaSynchroniser_WithoutData) {
  const auto plugin = makePlugin();
  char untouched[] = "untouched";
  char* out = untouched;

  EXPECT_FALSE(plugin.base->getURLForMediaSynchroniser(out));

  EXPECT_EQ(out, untouched);
}

TEST_F(PluginLifecycleTest, GivesTheMediaSynchroniserItsOwnCopyOfData) {
  const auto plugin = makePluginWithSource();
  char* first = nullptr;
  char* second = nullptr;

  ASSERT_TRUE(plugin.base->getURLForMediaSynchroniser(first));
  ASSERT_TRUE(plugin.base->getURLForMediaSynchroniser(second));

  EXPECT_STREQ(first, "http://media.example/a.mp4");
  EXPECT_STREQ(second, "http://media.example/a.mp4");
  EXPECT_NE(first, second);
  std::free(first);
  std::free(second);
}

TEST_F(PluginLifecycleTest, HasAnEmptyPlayerType_AtFirst) {
  const auto plugin = makePlugin();
  char* out = nullptr;

  EXPECT_TRUE(plugin.base->getPlayerType(out));

  EXPECT_STREQ(out, "");
  std::free(out);
}

TEST_F(PluginLifecycleTest, GivesACopyOfThePlayerType) {
  const auto plugin = makePlugin();
  ASSERT_TRUE(plugin.write("playerType", text("application/ttml+xml")));
  char* out = nullptr;

  EXPECT_TRUE(plugin.base->getPlayerType(out));

  EXPECT_STREQ(out, "application/ttml+xml");
  std::free(out);
}

// --- Renewal with queued media

class RenewalTest : public PluginLifecycleTest {
 protected:
  static constexpr const char* kNext = "http://media.example/next.mp4";

  TestPlugin playToTheEnd() {
    auto plugin = makeReadyPlugin();
    EXPECT_EQ(plugin.callShown("play"), "bool:true");
    EXPECT_TRUE(library().fireAndWait(plugin.handle, "BUFFER_READY"));
    EXPECT_EQ(plugin.readShown("playState"), "int:1");
    return plugin;
  }
  unsigned long waitForRenewedInput() {
    const auto input = library().waitForCall(isWrite("INPUT", kNext));
    EXPECT_TRUE(input);
    return input ? input->handle : 0;
  }
};

TEST_F(RenewalTest, StaysWithItsPlayer_WhenNothingIsQueued) {
  const auto plugin = playToTheEnd();

  ASSERT_TRUE(library().fireAndWait(plugin.handle, "FINISHED"));
  drainWorker(plugin);

  EXPECT_EQ(plugin.readShown("playState"), "int:5");
  EXPECT_EQ(opened(), 1U);
}

TEST_F(RenewalTest, MakesANewPlayerForTheQueuedMedia) {
  const auto plugin = playToTheEnd();
  ASSERT_EQ(plugin.callShown("queue", {text(kNext)}), "bool:true");

  ASSERT_TRUE(library().fireAndWait(plugin.handle, "FINISHED"));
  const unsigned long renewed = waitForRenewedInput();

  EXPECT_NE(renewed, plugin.handle);
  EXPECT_EQ(renewed, library().lastHandle());
  EXPECT_EQ(library().count(ofHandle(plugin.handle, isFunction(Function::kClosePlayer))), 1U);
  EXPECT_EQ(plugin.base->getNativePlayerHandle(), renewed);
  EXPECT_EQ(plugin.readShown("data"), std::string("string:") + kNext);
}

TEST_F(RenewalTest, DoesItsWorkOnAThreadOfItsOwn) {
  const auto plugin = playToTheEnd();
  ASSERT_EQ(plugin.callShown("queue", {text(kNext)}), "bool:true");

  ASSERT_TRUE(library().fireAndWait(plugin.handle, "FINISHED"));
  waitForRenewedInput();

  const auto opens = library().calls(isFunction(Function::kOpenPlayer));
  const auto closes = library().calls(isFunction(Function::kClosePlayer));
  ASSERT_EQ(opens.size(), 2U);
  ASSERT_EQ(closes.size(), 1U);
  EXPECT_EQ(opens[1].thread, closes[0].thread);
  EXPECT_NE(opens[1].thread, std::this_thread::get_id());
  EXPECT_NE(opens[1].thread, library().dispatcherThread(plugin.handle));
  EXPECT_LT(closes[0].sequence, opens[1].sequence);
}

TEST_F(RenewalTest, StopsTheOldPlayerFirst) {
  const auto plugin = playToTheEnd();
  ASSERT_EQ(plugin.callShown("queue", {text(kNext)}), "bool:true");

  ASSERT_TRUE(library().fireAndWait(plugin.handle, "FINISHED"));
  waitForRenewedInput();

  const auto stop = library().waitForCall(ofHandle(plugin.handle, isCommand("STOP")));
  const auto close = library().waitForCall(ofHandle(plugin.handle, isFunction(Function::kClosePlayer)));
  ASSERT_TRUE(stop && close);
  EXPECT_LT(stop->sequence, close->sequence);
}

TEST_F(RenewalTest, RegistersTheCallbacksAgainInOrder) {
  const auto plugin = playToTheEnd();
  ASSERT_EQ(plugin.callShown("queue", {text(kNext)}), "bool:true");

  ASSERT_TRUE(library().fireAndWait(plugin.handle, "FINISHED"));
  const unsigned long renewed = waitForRenewedInput();

  std::vector<Function> functions;
  for (const Call& call : library().calls()) {
    if (call.handle == renewed) functions.push_back(call.function);
  }
  ASSERT_GE(functions.size(), 3U);
  functions.resize(3);
  EXPECT_THAT(functions, ElementsAre(Function::kRegisterCallback, Function::kRegisterTextTrackCallback,
                                     Function::kRegisterSubtitleSettingsChangedCallback));
}

// The deferred speed is 0.0 after every renewal: the queued media is paused at its start and waits for the page. Deliberate.
TEST_F(RenewalTest, PausesTheQueuedMediaAtItsStart) {
  const auto plugin = playToTheEnd();
  ASSERT_EQ(plugin.callShown("queue", {text(kNext)}), "bool:true");
  ASSERT_TRUE(library().fireAndWait(plugin.handle, "FINISHED"));
  const unsigned long renewed = waitForRenewedInput();

  ASSERT_TRUE(library().fireAndWait(renewed, "READY_TO_PLAY"));

  EXPECT_TRUE(library().waitForCall(ofHandle(renewed, isCommand("PAUSE", ""))));
  EXPECT_EQ(library().count(ofHandle(renewed, isCommand("PLAY"))), 0U);
}

TEST_F(RenewalTest, AnnouncesStopped) {
  const auto plugin = playToTheEnd();
  ASSERT_EQ(plugin.callShown("queue", {text(kNext)}), "bool:true");
  log().clear();

  ASSERT_TRUE(library().fireAndWait(plugin.handle, "FINISHED"));
  waitForRenewedInput();

  EXPECT_THAT(events(plugin), ElementsAre("onPlayStateChange(int:5)", "onPlayStateChange(int:0)"));
  EXPECT_EQ(plugin.readShown("playState"), "int:0");
}

TEST_F(RenewalTest, PlaysTheQueueOnce) {
  const auto plugin = playToTheEnd();
  ASSERT_EQ(plugin.callShown("queue", {text(kNext)}), "bool:true");
  ASSERT_TRUE(library().fireAndWait(plugin.handle, "FINISHED"));
  const unsigned long renewed = waitForRenewedInput();
  ASSERT_TRUE(library().fireAndWait(renewed, "READY_TO_PLAY"));
  ASSERT_TRUE(library().waitForCall(ofHandle(renewed, isCommand("PAUSE"))));
  ASSERT_EQ(plugin.callShown("play"), "bool:true");
  ASSERT_TRUE(library().fireAndWait(renewed, "BUFFER_READY"));

  ASSERT_TRUE(library().fireAndWait(renewed, "FINISHED"));
  drainWorker(plugin);

  EXPECT_EQ(plugin.readShown("playState"), "int:5");
  EXPECT_EQ(opened(), 2U);
}

TEST_F(RenewalTest, LeavesNoPlayer_WhenNoneCanBeOpened) {
  const auto plugin = playToTheEnd();
  ASSERT_EQ(plugin.callShown("queue", {text(kNext)}), "bool:true");
  library().failOpens(1);

  ASSERT_TRUE(library().fireAndWait(plugin.handle, "FINISHED"));

  EXPECT_TRUE(waitForEvent(plugin, "onPlayStateChange(int:0)"));
  EXPECT_EQ(plugin.base->getNativePlayerHandle(), 0U);
  EXPECT_EQ(AVControlPlugin::getPlugin(plugin.handle), nullptr);
  EXPECT_EQ(plugin.callShown("play"), "bool:true") << "the next play opens a player";
}

// The element is removed while its queued media is about to play: the renewal gives way and everything is closed.
TEST_F(RenewalTest, EndsWithItsPlugin_WhenThatIsDestroyedMeanwhile) {
  auto plugin = playToTheEnd();
  ASSERT_EQ(plugin.callShown("queue", {text(kNext)}), "bool:true");
  Gate inside;
  Gate go;
  library().addHook(isFunction(Function::kOpenPlayer), [inside, go](const Call&) {
    inside.open();
    go.wait();
  });
  const std::weak_ptr<CorvelNativePluginBase> watch = plugin.base;
  ASSERT_TRUE(library().fireAndWait(plugin.handle, "FINISHED"));
  ASSERT_TRUE(inside.wait());

  auto destroying = std::async(std::launch::async, [&] { destroy(plugin); });
  go.open();

  ASSERT_EQ(destroying.wait_for(fakes::kDeadline), std::future_status::ready);
  EXPECT_TRUE(library().waitForCount(isFunction(Function::kClosePlayer), 2));
  const auto giveUp = std::chrono::steady_clock::now() + fakes::kDeadline;
  while (!watch.expired() && std::chrono::steady_clock::now() < giveUp) std::this_thread::yield();
  EXPECT_TRUE(watch.expired()) << "the renewal keeps its plugin";
  EXPECT_THAT(library().openHandles(), IsEmpty());
}

TEST_F(RenewalTest, DoesNothing_WhenItsPluginIsAlreadyDestroyed) {
  auto plugin = playToTheEnd();
  ASSERT_EQ(plugin.callShown("queue", {text(kNext)}), "bool:true");
  plugin.base->willBeDestroyed();
  library().clearCalls();

  object(plugin)->runRenewThread();

  EXPECT_THAT(library().calls(), IsEmpty());
}

}  // namespace
