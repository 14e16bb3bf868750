// SPDX-License-Identifier: Apache-2.0
// The registry from media-library handle to plugin.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "plugin/av_control_plugin.h"
#include "support/av_control_lock.h"
#include "tests/support/plugin_fixture.h"

namespace {

using fakes::Call;
using fakes::Function;
using fakes::isFunction;
using fakes::isWrite;
using fixture::TestPlugin;
using fixture::text;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class PluginRegistryTest : public fixture::PluginTest {
 protected:
  static AVControlPlugin* object(const TestPlugin& plugin) { return AVControlPlugin::cast(plugin.base.get()); }
  /// Makes the plugin change its player, as a page does by a second source.
  unsigned long renew(const TestPlugin& plugin) {
    EXPECT_TRUE(plugin.write("data", text("http://media.example/next.mp4")));
    EXPECT_TRUE(library().waitForCall(isWrite("INPUT", "http://media.example/next.mp4")));
    return library().lastHandle();
  }
};

TEST_F(PluginRegistryTest, FindsThePluginOfAHandle) {
  const auto first = makePlugin();
  const auto second = makePlugin();

  EXPECT_NE(first.handle, second.handle);
  EXPECT_EQ(AVControlPlugin::getPlugin(first.handle), object(first));
  EXPECT_EQ(AVControlPlugin::getPlugin(second.handle), object(second));
}

TEST_F(PluginRegistryTest, FindsNothingForAnUnknownHandle) {
  const auto plugin = makePlugin();

  EXPECT_EQ(AVControlPlugin::getPlugin(0), nullptr);
  EXPECT_EQ(AVControlPlugin::getPlugin(plugin.handle + 1000), nullptr);
}

TEST_F(PluginRegistryTest, ForgetsADestroyedPlugin) {
  auto plugin = makePlugin();
  const auto other = makePlugin();
  const unsigned long handle = plugin.handle;

  destroy(plugin);

  EXPECT_EQ(AVControlPlugin::getPlugin(handle), nullptr);
  EXPECT_EQ(AVControlPlugin::getPlugin(other.handle), object(other));
}

TEST_F(PluginRegistryTest, DoesNotOwnItsPlugins) {
  auto plugin = makePlugin();
  const std::weak_ptr<CorvelNativePluginBase> watch = plugin.base;

  drop(plugin);

  EXPECT_TRUE(watch.expired());
}

TEST_F(PluginRegistryTest, IsEmptyWhenAllAreGone) {
  auto first = makePlugin();
  auto second = makePlugin();
  destroy(first);
  drop(second);

  const AVControlLock lock(AVControlPlugin::plugin_handler_mutex);
  EXPECT_THAT(AVControlPlugin::m_mmlib_player_map, IsEmpty());
}

TEST_F(PluginRegistryTest, HasThePluginUnderItsNewHandle_AfterARenewal) {
  const auto plugin = makePluginWithSource();

  const unsigned long renewed = renew(plugin);

  ASSERT_NE(renewed, plugin.handle);
  EXPECT_EQ(AVControlPlugin::getPlugin(plugin.handle), nullptr);
  EXPECT_EQ(AVControlPlugin::getPlugin(renewed), object(plugin));
  EXPECT_EQ(plugin.base->getNativePlayerHandle(), renewed);
}

// The player goes first, then the registry entry: the words of its own stop still find their plugin.
TEST_F(PluginRegistryTest, KeepsTheOldHandle_WhileTheOldPlayerIsClosed) {
  const auto plugin = makePluginWithSource();
  const AVControlPlugin* found = nullptr;
  library().addHook(isFunction(Function::kClosePlayer),
                    [&](const Call& call) { found = found == nullptr ? AVControlPlugin::getPlugin(call.handle) : found; });

  renew(plugin);

  EXPECT_EQ(found, object(plugin));
}

TEST_F(PluginRegistryTest, RenewalReplacesOneHandleByOne) {
  const auto plugin = makePluginWithSource();
  renew(plugin);

  const AVControlLock lock(AVControlPlugin::plugin_handler_mutex);
  EXPECT_EQ(AVControlPlugin::m_mmlib_player_map.size(), 1U);
}

TEST_F(PluginRegistryTest, HoldsNothing_WhenTheRenewalFindsNoPlayer) {
  const auto plugin = makePluginWithSource();
  library().failOpens(1);

  EXPECT_FALSE(object(plugin)->resetPlayer());

  EXPECT_EQ(AVControlPlugin::getPlugin(plugin.handle), nullptr);
  EXPECT_EQ(plugin.base->getNativePlayerHandle(), 0U);
  EXPECT_TRUE(object(plugin)->initializePlayer());
  EXPECT_EQ(AVControlPlugin::getPlugin(library().lastHandle()), object(plugin));
}

TEST_F(PluginRegistryTest, RenewedPlayerForgetsItsPastState) {
  library().setProperty("POSITION", "5000");
  library().setProperty("DURATION", "9000");
  const auto plugin = makeReadyPlugin();
  ASSERT_TRUE(library().fireAndWait(plugin.handle, "PLAY_POSITION_CHANGED"));
  ASSERT_TRUE(waitForEvent(plugin, "onPlayPositionChanged(double:5000)"));
  ASSERT_EQ(plugin.readShown("playPosition"), "double:5000");

  ASSERT_TRUE(object(plugin)->resetPlayer());

  EXPECT_EQ(plugin.readShown("playPosition"), "double:0");
  EXPECT_FALSE(object(plugin)->isSeeking());
}

TEST_F(PluginRegistryTest, ResetDropsADeferredPlay) {
  const auto plugin = makePluginWithSource();
  ASSERT_EQ(plugin.callShown("play"), "bool:true");

  ASSERT_TRUE(object(plugin)->resetPlayer());
  ASSERT_TRUE(library().fireAndWait(library().lastHandle(), "READY_TO_PLAY"));
  drainWorker(plugin);

  EXPECT_EQ(library().count(fakes::isCommand("PLAY")), 0U);
}

TEST_F(PluginRegistryTest, ResetClearsTheReadyMark) {
  const auto plugin = makeReadyPlugin();

  ASSERT_TRUE(object(plugin)->resetPlayer());
  ASSERT_EQ(plugin.callShown("play"), "bool:true");
  drainWorker(plugin);

  EXPECT_EQ(library().count(fakes::isCommand("PLAY")), 0U) << "the play waits for the new player";
}

// Creation, look-up and destruction from several threads at once.
TEST_F(PluginRegistryTest, StaysWhole_UnderManyThreads) {
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;

  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < 25; ++round) {
        std::shared_ptr<CorvelNativePluginBase> made;
        if (!corvelCreatePlugin(&made)) ++wrong;
        const unsigned long handle = made->getNativePlayerHandle();
        if (AVControlPlugin::getPlugin(handle) != AVControlPlugin::cast(made.get())) ++wrong;
        library().fire(handle, "SELECTED_VIDEO_COMPONENT_CHANGED");
        const bool told = round % 2 == 0;
        if (told) made->willBeDestroyed();
        made.reset();
        // Without willBeDestroyed a callback that runs may keep the plugin a little longer.
        if (told && AVControlPlugin::getPlugin(handle) != nullptr) ++wrong;
      }
    });
  }
  for (auto& thread : threads) thread.join();

  EXPECT_EQ(wrong, 0);
  EXPECT_TRUE(library().waitIdle());
  EXPECT_THAT(library().openHandles(), IsEmpty());
}

}  // namespace
