// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <latch>
#include <string>
#include <thread>
#include <vector>

#include "tests/unit/pluginhost/fake_plugin.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class LineObserver : public pluginhost::Observer {
 public:
  void propertyChanged(std::uint64_t id, std::string_view name, const _CorvelNativeVariant& value) override {
    add(id, "changed", name, fake::shown(value));
  }
  void eventRaised(std::uint64_t id, std::string_view name, const _CorvelNativeVariant* args, unsigned int count) override {
    add(id, "event", name, list(args, count));
  }
  void propertyRead(std::uint64_t id, std::string_view name, bool ok, const _CorvelNativeVariant& value) override {
    add(id, ok ? "read" : "read failed", name, fake::shown(value));
  }
  void propertyWritten(std::uint64_t id, std::string_view name, const _CorvelNativeVariant& value, bool ok) override {
    add(id, ok ? "written" : "write refused", name, fake::shown(value));
  }
  void methodCalled(std::uint64_t id, std::string_view name, const _CorvelNativeVariant* args, unsigned int argc, bool ok,
                    const _CorvelNativeVariant& result) override {
    add(id, ok ? "called" : "call failed", name, list(args, argc) + " -> " + fake::shown(result));
  }

  std::vector<std::string> lines;
  std::uint64_t lastId = 0;

 private:
  static std::string list(const _CorvelNativeVariant* values, unsigned int count) {
    std::string text = "[";
    for (unsigned int i = 0; i < count; ++i) text += (i == 0 ? "" : ", ") + fake::shown(values[i]);
    return text + "]";
  }
  void add(std::uint64_t id, const char* kind, std::string_view name, const std::string& what) {
    lastId = id;
    lines.push_back(std::string(kind) + " " + std::string(name) + " " + what);
  }
};

class ObserverTest : public testing::Test {
 protected:
  void SetUp() override {
    pluginhost::setObserver(&m_observer);
    ASSERT_TRUE(m_plugin.install());
  }
  void TearDown() override { pluginhost::setObserver(nullptr); }

  LineObserver m_observer;
  FakePlugin m_plugin;
};

TEST_F(ObserverTest, SeesWhatThePluginStores) {
  char buffer[] = "bound";

  m_plugin.setProperty("count", 3);
  m_plugin.setProperty("flag", true);
  m_plugin.setProperty("ratio", 1.5);
  m_plugin.setProperty("title", buffer);
  m_plugin.setProperty("title", static_cast<char*>(nullptr));
  m_plugin.setProperty("absent", 1);

  EXPECT_THAT(m_observer.lines, ElementsAre("changed count int:3", "changed flag bool:1", "changed ratio double:1.5",
                                            "changed title text:bound", "changed title text:(null)"));
  EXPECT_EQ(m_observer.lastId, pluginhost::objectId(m_plugin));
}

TEST_F(ObserverTest, SeesEvents) {
  const _CorvelNativeVariant args[] = {fake::integer(1), fake::text("x")};

  m_plugin.dispatchEvent("onThing", args, 2);
  m_plugin.dispatchEvent("onNothing", nullptr, 0);

  EXPECT_THAT(m_observer.lines, ElementsAre("event onThing [int:1, text:x]", "event onNothing []"));
}

TEST_F(ObserverTest, SeesEveryScriptAccessWithItsResult) {
  _CorvelNativeVariant value;
  const _CorvelNativeVariant arg = fake::integer(1);

  pluginhost::readProperty(m_plugin, "count", value);
  pluginhost::readProperty(m_plugin, "broken", value);
  pluginhost::writeProperty(m_plugin, "level", arg);
  pluginhost::writeProperty(m_plugin, "count", arg);
  pluginhost::callMethod(m_plugin, "echo", &arg, 1, value);
  pluginhost::callMethod(m_plugin, "fail", nullptr, 0, value);

  EXPECT_THAT(m_observer.lines,
              ElementsAre("read count int:7", "read failed broken undefined", "written level int:1", "write refused count int:1",
                          "called echo [int:1] -> int:1", "call failed fail [] -> undefined"));
}

TEST_F(ObserverTest, SeesNothing_OnceRemoved) {
  pluginhost::setObserver(nullptr);

  m_plugin.setProperty("count", 3);
  m_plugin.dispatchEvent("onThing", nullptr, 0);

  EXPECT_THAT(m_observer.lines, IsEmpty());
}

/// Stays in the call for "count" until it may go on.
class SlowObserver : public LineObserver {
 public:
  void propertyChanged(std::uint64_t id, std::string_view name, const _CorvelNativeVariant& value) override {
    if (name == "count") {
      entered.count_down();
      goOn.wait();
    }
    LineObserver::propertyChanged(id, name, value);
  }

  std::latch entered{1};
  std::latch goOn{1};
};

TEST_F(ObserverTest, IsInNoCall_OnceRemoved) {
  SlowObserver slow;
  pluginhost::setObserver(&slow);
  std::jthread storing([this] { m_plugin.setProperty("count", 3); });
  slow.entered.wait();

  auto linesAtRemoval = std::async(std::launch::async, [&slow] {
    pluginhost::setObserver(nullptr);
    return slow.lines.size();
  });
  std::size_t lines = 0;
  do {
    lines = slow.lines.size();
    m_plugin.setProperty("flag", true);
  } while (slow.lines.size() != lines);
  slow.goOn.count_down();

  EXPECT_EQ(linesAtRemoval.get(), lines + 1);
}

}  // namespace
