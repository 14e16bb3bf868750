// SPDX-License-Identifier: Apache-2.0
// Objects are made, raise events from several threads and are destroyed while the shell hands events out. Nothing may be lost but
// the events of objects that are gone, nothing may come late, nothing may race (the test also runs under the sanitizers).
#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "platform/pluginhost/shell.h"
#include "tests/unit/pluginhost/fake_plugin.h"

namespace {

using pluginhost::Event;
using pluginhost::EventQueue;
using pluginhost::PluginLibrary;

constexpr int kSenders = 4;
constexpr int kObjects = 8;

/// The shell's main loop: sleeps until the queue wakes it.
class WakeSignal {
 public:
  void wake() {
    const std::lock_guard lock(m_mutex);
    m_woken = true;
    m_changed.notify_one();
  }
  /// @return false when nobody woke it within the deadline.
  bool wait() {
    std::unique_lock lock(m_mutex);
    const bool woken = m_changed.wait_for(lock, std::chrono::seconds(30), [this] { return m_woken; });
    m_woken = false;
    return woken;
  }

 private:
  std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_woken = false;
};

/// What the senders may pin, as a media library's callbacks do: an object is looked up, held for a moment, and let go.
class Targets {
 public:
  std::shared_ptr<CorvelNativePluginBase> pick(std::size_t index) const {
    const std::lock_guard lock(m_mutex);
    return m_objects[index % m_objects.size()];
  }
  void replace(std::size_t index, std::shared_ptr<CorvelNativePluginBase> object) {
    std::shared_ptr<CorvelNativePluginBase> former;  // destroyed outside the lock
    const std::lock_guard lock(m_mutex);
    former = std::exchange(m_objects[index % m_objects.size()], std::move(object));
    m_retired.push_back(std::move(former));
  }
  std::vector<std::shared_ptr<CorvelNativePluginBase>> takeRetired() {
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_retired, {});
  }

 private:
  mutable std::mutex m_mutex;
  std::vector<std::shared_ptr<CorvelNativePluginBase>> m_objects{kObjects};
  std::vector<std::shared_ptr<CorvelNativePluginBase>> m_retired;
};

/// One sender: raises numbered events, reads and writes values, and releases its pin on its own thread.
void send(const Targets& targets, int sender, int rounds) {
  std::mt19937 random(static_cast<unsigned int>(sender));
  for (int i = 0; i < rounds; ++i) {
    const auto object = targets.pick(random());
    const std::string text = "sender " + std::to_string(sender);
    _CorvelNativeVariant args[3];
    cvnplUtil::set(sender, args[0]);
    cvnplUtil::set(i, args[1]);
    cvnplUtil::set(text.c_str(), args[2], false);
    object->setProperty("count", i);
    int count = 0;
    object->getProperty("count", count);
    object->dispatchEvent("onStorm", args, 3);
  }
}

class DeliveryStormTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string error;
    m_library = PluginLibrary::load(FAKE_PLUGIN_LIBRARY, error);
    ASSERT_NE(m_library, nullptr) << error;
    for (std::size_t i = 0; i < kObjects; ++i) m_targets.replace(i, m_library->create());
  }

  void startSenders(int rounds) {
    for (int sender = 0; sender < kSenders; ++sender) {
      m_senders.emplace_back([this, sender, rounds] {
        send(m_targets, sender, rounds);
        ++m_finished;
        m_signal.wake();
      });
    }
  }

  void joinSenders() {
    for (auto& sender : m_senders) sender.join();
  }

  WakeSignal m_signal;
  EventQueue m_queue{[this] { m_signal.wake(); }};
  std::shared_ptr<PluginLibrary> m_library;
  Targets m_targets;
  std::vector<std::thread> m_senders;
  std::atomic<int> m_finished{0};
};

TEST_F(DeliveryStormTest, EveryEventOfALivingObjectArrivesInOrder) {
  constexpr int kRounds = 3000;
  std::map<int, int> last;
  int received = 0;
  bool ordered = true;
  const auto take = [&](CorvelNativePluginBase& object, const Event& event) {
    if (event.name != "onStorm") return;
    const int sender = event.args[0].integer;
    ordered = ordered && event.args[1].integer == last[sender]++;
    ordered = ordered && event.objectId == pluginhost::objectId(object);
    ordered = ordered && fake::shown(event.args[2]) == "text:sender " + std::to_string(sender);
    ++received;
  };

  startSenders(kRounds);
  while (received < kSenders * kRounds) {
    ASSERT_TRUE(m_signal.wait()) << received << " events arrived, then no wake came";
    m_queue.drain(take);
  }
  joinSenders();

  EXPECT_TRUE(ordered);
  EXPECT_TRUE(m_queue.empty());
}

TEST_F(DeliveryStormTest, ObjectsComeAndGoMeanwhile) {
  constexpr int kRounds = 3000;
  std::mt19937 random(99);
  std::uint64_t received = 0;
  bool wrong = false;
  const auto take = [&](CorvelNativePluginBase& object, const Event& event) {
    wrong = wrong || event.objectId != pluginhost::objectId(object) || fake::read(object, "answer") != "int:42";
    ++received;
    if (random() % 8 == 0) m_targets.replace(random(), m_library->create());
    if (random() % 4 == 0) m_targets.takeRetired();  // also the object whose event this is
  };

  startSenders(kRounds);
  while (m_finished < kSenders) {
    ASSERT_TRUE(m_signal.wait());
    m_queue.drain(take);
  }
  joinSenders();
  m_queue.drain(take);

  EXPECT_FALSE(wrong);
  EXPECT_GT(received, 0U);
}

}  // namespace
