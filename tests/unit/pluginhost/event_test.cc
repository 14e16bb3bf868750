// SPDX-License-Identifier: Apache-2.0
// Raising events and handing them out.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tests/unit/pluginhost/fake_plugin.h"

namespace {

using pluginhost::Event;
using pluginhost::EventQueue;
using testing::ElementsAre;
using testing::IsEmpty;

std::string shown(const Event& event) {
  std::string line = event.name + "(";
  for (std::size_t i = 0; i < event.args.size(); ++i) line += (i == 0 ? "" : ", ") + fake::shown(event.args[i]);
  return line + ")";
}

class EventTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(m_plugin->install()); }

  std::vector<std::string> drained() {
    std::vector<std::string> lines;
    m_queue.drain([&lines](CorvelNativePluginBase&, const Event& event) { lines.push_back(shown(event)); });
    return lines;
  }

  std::atomic<int> m_wakes{0};
  EventQueue m_queue{[this] { ++m_wakes; }};
  std::shared_ptr<FakePlugin> m_plugin = std::make_shared<FakePlugin>();
};

TEST_F(EventTest, RunsNothing_UntilTheShellDrains) {
  EXPECT_TRUE(m_queue.empty());

  EXPECT_TRUE(m_plugin->dispatchEvent("onThing", nullptr, 0));

  EXPECT_FALSE(m_queue.empty());
  EXPECT_THAT(drained(), ElementsAre("onThing()"));
  EXPECT_TRUE(m_queue.empty());
}

TEST_F(EventTest, TellsWhichObjectRaisedIt) {
  FakePlugin other;
  m_plugin->dispatchEvent("first", nullptr, 0);
  other.dispatchEvent("second", nullptr, 0);
  std::vector<CorvelNativePluginBase*> objects;
  std::vector<std::uint64_t> ids;

  m_queue.drain([&](CorvelNativePluginBase& object, const Event& event) {
    objects.push_back(&object);
    ids.push_back(event.objectId);
  });

  EXPECT_THAT(objects, ElementsAre(m_plugin.get(), &other));
  EXPECT_THAT(ids, ElementsAre(pluginhost::objectId(*m_plugin), pluginhost::objectId(other)));
}

TEST_F(EventTest, NamesNeedNoRow) {
  EXPECT_TRUE(m_plugin->dispatchEvent("onNobodyHasARowForThis", nullptr, 0));

  EXPECT_THAT(drained(), ElementsAre("onNobodyHasARowForThis()"));
}

TEST_F(EventTest, CopiesNameAndArguments) {
  {
    std::string name = "onTexts";
    std::string borrowed = "borrowed text that ends with its sender";
    const char counted[] = {'n', '\0', 'u', 'l'};
    _CorvelNativeVariant args[3];
    cvnplUtil::set(borrowed.c_str(), args[0], false);
    cvnplUtil::set(counted, args[1], 4, false);
    args[2] = fake::number(2.5);
    EXPECT_TRUE(m_plugin->dispatchEvent(name.c_str(), args, 3));
    name.assign("XXXXXXX");
    borrowed.assign(borrowed.size(), 'X');
  }

  EXPECT_THAT(drained(), ElementsAre("onTexts(text:borrowed text that ends with its sender, text:" + std::string("n\0ul", 4) +
                                     ", double:2.5)"));
}

TEST_F(EventTest, NullTextArrivesAsNullText) {
  _CorvelNativeVariant arg;
  cvnplUtil::set(static_cast<const char*>(nullptr), arg, false);

  m_plugin->dispatchEvent("onText", &arg, 1);

  EXPECT_THAT(drained(), ElementsAre("onText(text:(null))"));
}

TEST_F(EventTest, UnfilledArgumentArrivesAsUndefined) {
  _CorvelNativeVariant args[2];
  cvnplUtil::set(1, args[0]);

  m_plugin->dispatchEvent("onTwo", args, 2);

  EXPECT_THAT(drained(), ElementsAre("onTwo(int:1, undefined)"));
}

TEST_F(EventTest, ObjectArgumentIsTheSameObject) {
  const auto ratings = std::make_shared<FakeScriptObject>();
  const _CorvelNativeVariant arg = fake::object(ratings);
  CorvelNativePropertyBase* received = nullptr;

  m_plugin->dispatchEvent("onObject", &arg, 1);
  m_queue.drain([&received](CorvelNativePluginBase&, const Event& event) { received = event.args.at(0).object.object.get(); });

  EXPECT_EQ(received, ratings.get());
}

TEST_F(EventTest, RefusesANullName_AndACountWithoutArguments) {
  EXPECT_FALSE(m_plugin->dispatchEvent(nullptr, nullptr, 0));
  EXPECT_FALSE(m_plugin->dispatchEvent("onThing", nullptr, 2));

  EXPECT_THAT(drained(), IsEmpty());
}

TEST_F(EventTest, WakesOnce_WhenTheQueueTurnsNonEmpty) {
  m_plugin->dispatchEvent("a", nullptr, 0);
  m_plugin->dispatchEvent("b", nullptr, 0);
  EXPECT_EQ(m_wakes, 1);

  drained();
  m_plugin->dispatchEvent("c", nullptr, 0);

  EXPECT_EQ(m_wakes, 2);
}

TEST_F(EventTest, EventsRaisedByAHandlerWaitForTheNextDrain) {
  std::vector<std::string> first;
  m_plugin->dispatchEvent("a", nullptr, 0);
  m_plugin->dispatchEvent("b", nullptr, 0);

  m_queue.drain([&](CorvelNativePluginBase& object, const Event& event) {
    first.push_back(event.name);
    object.dispatchEvent("later", nullptr, 0);
  });

  EXPECT_THAT(first, ElementsAre("a", "b"));
  EXPECT_EQ(m_wakes, 2);
  EXPECT_THAT(drained(), ElementsAre("later()", "later()"));
}

// A handler may run a nested main loop, which is woken and drains. Newer events must not overtake those of the outer batch.
TEST_F(EventTest, NestedDrainKeepsTheOrder) {
  std::vector<std::string> order;
  m_plugin->dispatchEvent("a", nullptr, 0);
  m_plugin->dispatchEvent("b", nullptr, 0);

  m_queue.drain([&](CorvelNativePluginBase& object, const Event& event) {
    order.push_back(event.name);
    if (event.name != "a") return;
    object.dispatchEvent("c", nullptr, 0);
    m_queue.drain([&](CorvelNativePluginBase&, const Event& nested) { order.push_back("nested " + nested.name); });
  });

  EXPECT_THAT(order, ElementsAre("a", "b"));
  EXPECT_EQ(m_wakes, 3) << "the wake that the nested drain used up is made good";
  EXPECT_THAT(drained(), ElementsAre("c()"));
}

TEST_F(EventTest, HandlerThatThrowsLosesNoLaterEvent) {
  m_plugin->dispatchEvent("a", nullptr, 0);
  m_plugin->dispatchEvent("b", nullptr, 0);

  EXPECT_THROW(m_queue.drain([](CorvelNativePluginBase&, const Event&) { throw std::runtime_error("handler"); }),
               std::runtime_error);

  EXPECT_THAT(drained(), ElementsAre("b()"));
}

TEST_F(EventTest, StillWorksOnADeinitialisedPlugin) {
  m_plugin->willBeDestroyed();

  EXPECT_TRUE(m_plugin->dispatchEvent("onLate", nullptr, 0));

  EXPECT_THAT(drained(), ElementsAre("onLate()"));
}

TEST_F(EventTest, NothingIsDelivered_AfterDestruction) {
  FakePlugin other;
  m_plugin->dispatchEvent("gone", nullptr, 0);
  other.dispatchEvent("stays", nullptr, 0);

  m_plugin.reset();

  EXPECT_THAT(drained(), ElementsAre("stays()"));
}

TEST_F(EventTest, ObjectThatAHandlerDestroysGetsNoMoreOfItsEvents) {
  std::vector<std::string> names;
  m_plugin->dispatchEvent("a", nullptr, 0);
  m_plugin->dispatchEvent("b", nullptr, 0);
  auto kept = m_plugin.get();

  m_queue.drain([&](CorvelNativePluginBase& object, const Event& event) {
    EXPECT_EQ(&object, kept);
    names.push_back(event.name);
    m_plugin.reset();
  });

  EXPECT_THAT(names, ElementsAre("a"));
}

TEST_F(EventTest, HandlerMayCallTheHost) {
  m_plugin->dispatchEvent("a", nullptr, 0);
  std::string seen;

  m_queue.drain([&](CorvelNativePluginBase& object, const Event&) {
    object.setProperty("count", 8);
    seen = fake::read(object, "count");
    const FakePlugin madeInHandler;
    EXPECT_TRUE(m_queue.empty());
  });

  EXPECT_EQ(seen, "int:8");
}

TEST_F(EventTest, OrderIsKeptPerThread) {
  constexpr int kThreads = 4;
  constexpr int kEvents = 2000;
  std::vector<std::thread> threads;

  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([this, t] {
      for (int i = 0; i < kEvents; ++i) {
        const _CorvelNativeVariant args[] = {fake::integer(t), fake::integer(i)};
        m_plugin->dispatchEvent("onCount", args, 2);
      }
    });
  }
  std::vector<int> next(kThreads, 0);
  int received = 0;
  bool ordered = true;
  const auto take = [&](CorvelNativePluginBase&, const Event& event) {
    ordered = ordered && event.args[1].integer == next[event.args[0].integer]++;
    ++received;
  };
  while (received < kThreads * kEvents / 2) m_queue.drain(take);
  for (auto& thread : threads) thread.join();
  m_queue.drain(take);

  EXPECT_TRUE(ordered);
  EXPECT_EQ(received, kThreads * kEvents);
}

// The script thread may be busy for seconds; senders go on. The drain below cannot come before both events are in.
TEST_F(EventTest, SendersNeverWaitForTheScriptThread) {
  m_plugin->dispatchEvent("a", nullptr, 0);
  std::vector<std::string> names;

  m_queue.drain([&](CorvelNativePluginBase& object, const Event& event) {
    names.push_back(event.name);
    std::thread sender([&object] {
      object.dispatchEvent("b", nullptr, 0);
      object.dispatchEvent("c", nullptr, 0);
    });
    sender.join();
  });

  EXPECT_THAT(names, ElementsAre("a"));
  EXPECT_THAT(drained(), ElementsAre("b()", "c()"));
}

TEST(EventWithoutQueueTest, IsRefused) {
  FakePlugin plugin;

  EXPECT_FALSE(plugin.dispatchEvent("onThing", nullptr, 0));
}

TEST(EventWithoutQueueTest, NewQueueStartsEmpty) {
  FakePlugin plugin;
  {
    EventQueue former([] {});
    plugin.dispatchEvent("old", nullptr, 0);
  }
  plugin.dispatchEvent("between", nullptr, 0);

  EventQueue queue([] {});

  EXPECT_TRUE(queue.empty());
  EXPECT_TRUE(plugin.dispatchEvent("new", nullptr, 0));
  EXPECT_FALSE(queue.empty());
}

}  // namespace
