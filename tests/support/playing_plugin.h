// SPDX-License-Identifier: Apache-2.0
// A plugin object whose inside a test drives directly: its state machine, its player operations, its worker.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "plugin/av_control_plugin.h"
#include "tests/support/blocked_worker.h"
#include "tests/support/plugin_fixture.h"

namespace fixture {

using Strings = std::vector<std::string>;

inline constexpr char kFirstUrl[] = "http://media.example/first.mp4";
inline constexpr char kNextUrl[] = "http://media.example/next.mp4";

inline unsigned int lengthOf(const std::string& text) { return static_cast<unsigned int>(text.size()); }

/// What one source change sends, in order, with no type, user agent or window size set.
inline Strings inputActions(const std::string& url) {
  return {"FORCED_FORMAT=", "USER_AGENT=(null)", "NATIVE_WINDOW_SIZE=(null)", "INPUT=" + url};
}

inline Strings operator+(Strings first, const Strings& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

class PlayingPluginTest : public PluginTest {
 protected:
  PlayingPluginTest() {
    library().setProperty("DURATION", "60000.00");
    library().setProperty("POSITION", "1500.00");
    library().setProperty("PLAY_SPEED", "1.00");
    plugin = makePlugin();
    av = AVControlPlugin::cast(plugin.base.get());
  }

  StateMachine& machine() { return av->stateMachine(); }

  /// The id of the current state.
  int state() {
    for (int id = 0; id <= 6; ++id) {
      if (machine().isCurrentState(id)) {
        return id;
      }
    }
    return -1;
  }

  int errorCode() {
    int code = 0;
    EXPECT_TRUE(av->JS_GetErrorProp(code));
    return code;
  }

  /// Waits until the worker has run everything queued so far; leaves no trace in the recorded actions of finishedActions().
  void drain() {
    const auto mark = fakes::isCommand("STOPBROADCAST");
    const std::size_t before = library().count(mark);
    const auto deadline = std::chrono::steady_clock::now() + kDeadline;
    while (!av->player()->stopBroadcast()) {  // the queue is full: the worker is making room
      ASSERT_LT(std::chrono::steady_clock::now(), deadline);
      std::this_thread::yield();
    }
    ASSERT_TRUE(library().waitForCount(mark, before + 1));
  }

  void forget() {
    drain();
    library().clearCalls();
    log().clear();
  }

  /// Commands and writes up to now, without the marks of drain().
  Strings finishedActions() {
    drain();
    Strings actions;
    for (const std::string& action : library().actions()) {
      if (action != "STOPBROADCAST") {
        actions.push_back(action);
      }
    }
    return actions;
  }

  /// Enters a state past the rules, then forgets how.
  void enter(int id) {
    machine().transitTo(id);
    forget();
  }

  std::unique_ptr<BlockedWorker> blockWorker() {
    auto blocked = std::make_unique<BlockedWorker>(library(), [this] { av->stopActiveAVComp(); });
    library().clearCalls();
    return blocked;
  }

  /// Fills the queue of the held worker until @p room commands fit.
  void fillQueue(int room = 0) {
    for (int i = room; i < Player::sm_max_commands; ++i) {
      ASSERT_TRUE(av->resizePlayer());
    }
  }

  /// The types given to the library's default-component selection.
  std::vector<int> defaultSelections() {
    std::vector<int> types;
    for (const fakes::Call& call : library().calls(fakes::isFunction(fakes::Function::kSelectDefaultAvComponent))) {
      types.push_back(call.number);
    }
    return types;
  }

  Strings hostEntries() const { return entries(plugin); }

  bool say(const std::string& word) { return library().fireAndWait(av->getNativePlayerHandle(), word); }

  bool setData(const std::string& url) { return av->JS_SetDataProp(url.c_str(), lengthOf(url)); }

  TestPlugin plugin;
  AVControlPlugin* av = nullptr;
};

}  // namespace fixture
