// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <chrono>
#include <thread>

#include "tests/unit/script/script_fixture.h"

namespace {

using testing::ElementsAre;

class EventPumpTest : public ScriptTest {
 protected:
  EventPumpTest() {
    binding().create();
    binding().create();
    waitForEvents(2);  // the fake plugins raise one event while they are made
    events.clear();
  }

  CorvelNativePluginBase& plugin(std::uint64_t id) { return *binding().plugin(id); }

  void waitForEvents(std::size_t count) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    const guint alarm = g_timeout_add(
        100, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
    while (events.size() < count && std::chrono::steady_clock::now() < deadline) g_main_context_iteration(nullptr, TRUE);
    g_source_remove(alarm);
    ASSERT_EQ(events.size(), count);
  }

  std::vector<std::string> names() const {
    std::vector<std::string> out;
    for (const pluginhost::Event& event : events) out.push_back(event.name);
    return out;
  }
};

std::vector<std::uint64_t> firstIds(script::Binding& binding) {
  std::vector<std::uint64_t> out;
  for (std::uint64_t id = 1; out.size() < binding.pluginCount(); ++id) {
    if (binding.plugin(id) != nullptr) out.push_back(id);
  }
  return out;
}

TEST_F(EventPumpTest, DeliversFromAnotherThread_InOrder) {
  CorvelNativePluginBase& sender = plugin(firstIds(binding())[0]);
  constexpr int kCount = 500;

  std::thread thread([&sender] {
    for (int i = 0; i < kCount; ++i) {
      _CorvelNativeVariant value;
      cvnplUtil::set(i, value);
      sender.dispatchEvent("onCount", &value, 1);
    }
  });
  waitForEvents(kCount);
  thread.join();

  for (int i = 0; i < kCount; ++i) ASSERT_EQ(events[static_cast<std::size_t>(i)].args[0].integer, i);
}

TEST_F(EventPumpTest, DeliversLater_NeverOnTheSendersStack) {
  plugin(firstIds(binding())[0]).dispatchEvent("onOne", nullptr, 0);

  EXPECT_THAT(events, testing::IsEmpty());

  waitForEvents(1);
}

TEST_F(EventPumpTest, LetsAHandlerDestroyObjects) {
  const auto ids = firstIds(binding());
  for (const std::uint64_t id : ids) plugin(id).dispatchEvent("onOne", nullptr, 0);
  plugin(ids[0]).dispatchEvent("onTwo", nullptr, 0);
  onEvent = [this](const pluginhost::Event&) { binding().destroyAll(); };

  waitForEvents(3);  // who delivers to script asks the binding whether the object is still there

  EXPECT_EQ(binding().pluginCount(), 0U);
}

TEST_F(EventPumpTest, TakesWhatAHandlerRaises_AfterWhatWasThere) {
  CorvelNativePluginBase& sender = plugin(firstIds(binding())[0]);
  onEvent = [&sender](const pluginhost::Event& event) {
    if (event.name == "onFirst") sender.dispatchEvent("onThird", nullptr, 0);
  };
  sender.dispatchEvent("onFirst", nullptr, 0);
  sender.dispatchEvent("onSecond", nullptr, 0);

  waitForEvents(3);

  EXPECT_THAT(names(), ElementsAre("onFirst", "onSecond", "onThird"));
}

}  // namespace
