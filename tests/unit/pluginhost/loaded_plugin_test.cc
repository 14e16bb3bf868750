// SPDX-License-Identifier: Apache-2.0
// The real plugin, loaded as a television would load it: its media library's functions are those of this program.
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "examples/minimal-host/scripted_media_library.h"
#include "platform/pluginhost/shell.h"

namespace {

using pluginhost::Event;
using pluginhost::EventQueue;
using pluginhost::PluginLibrary;

constexpr int kFinished = 5;

class LoadedPluginTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string error;
    m_library = PluginLibrary::load(AVCONTROL_LIBRARY, error);
    ASSERT_NE(m_library, nullptr) << error;
    m_object = m_library->create();
    ASSERT_NE(m_object, nullptr);
  }

  void destroy() {
    m_object->willBeDestroyed();
    m_object.reset();
  }

  static bool loaded() {
    void* const handle = dlopen(AVCONTROL_LIBRARY, RTLD_NOW | RTLD_NOLOAD);
    if (handle != nullptr) dlclose(handle);
    return handle != nullptr;
  }

  /// Hands out events until the last play state is @p last. @return all states in their order, also when the deadline has passed.
  std::vector<int> statesUntil(int last) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    std::vector<int> states;
    while ((states.empty() || states.back() != last) && waitForWake(deadline)) {
      m_queue.drain([&states](CorvelNativePluginBase&, const Event& event) {
        if (event.name == "onPlayStateChange") states.push_back(event.args.at(0).integer);
      });
    }
    return states;
  }

  bool waitForWake(std::chrono::steady_clock::time_point deadline) {
    std::unique_lock lock(m_mutex);
    return m_woken.wait_until(lock, deadline, [this] { return !m_queue.empty(); });
  }

  void wake() {
    const std::lock_guard lock(m_mutex);
    m_woken.notify_one();
  }

  std::mutex m_mutex;
  std::condition_variable m_woken;
  EventQueue m_queue{[this] { wake(); }};
  std::shared_ptr<PluginLibrary> m_library;
  std::shared_ptr<CorvelNativePluginBase> m_object;
};

// First: an object that ends on another thread, as after playing it may, leaves the file loaded for good.
TEST_F(LoadedPluginTest, IsUnloaded_WithItsLastObject) {
  m_library.reset();
  EXPECT_TRUE(loaded());

  destroy();

  EXPECT_FALSE(loaded());
}

TEST_F(LoadedPluginTest, PlaysToTheEnd) {
  _CorvelNativeVariant source;
  cvnplUtil::set("http://media.example/film.mp4", source, false);
  _CorvelNativeVariant result;
  ASSERT_TRUE(pluginhost::writeProperty(*m_object, "data", source));
  ASSERT_TRUE(pluginhost::callMethod(*m_object, "play", nullptr, 0, result));
  EXPECT_TRUE(result.boolean);
  scriptedMediaBegin();

  const std::vector<int> states = statesUntil(kFinished);
  destroy();

  EXPECT_THAT(states, testing::ElementsAre(3, 7, 4, 1, kFinished));
}

TEST_F(LoadedPluginTest, HasItsRows) {
  EXPECT_EQ(pluginhost::propertyRows(*m_object).size(), 33U);
  EXPECT_EQ(pluginhost::methodRows(*m_object).size(), 15U);
  EXPECT_EQ(m_object->pluginType(), 8);
  destroy();
}

}  // namespace
