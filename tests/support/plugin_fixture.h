// SPDX-License-Identifier: Apache-2.0
// A plugin object as a browser holds it: made through the plugin's exported function, driven through its script rows, and watched
// through the host. The media library behind it is fakes::RecordingMediaLibrary.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "host/corvel_native.h"
#include "platform/pluginhost/shell.h"
#include "tests/fakes/recording_media_library.h"

namespace fixture {

using fakes::kDeadline;

// Script values.
_CorvelNativeVariant undefined();
_CorvelNativeVariant noValue();
_CorvelNativeVariant boolean(bool value);
_CorvelNativeVariant integer(int value);
_CorvelNativeVariant number(double value);
/// An owned copy, with the length of @p value: the host does not promise a NUL behind it.
_CorvelNativeVariant text(std::string_view value);
/// Of a borrowed text a copy of its own: it may be kept when the one who lent the text takes it back.
_CorvelNativeVariant ownCopy(const _CorvelNativeVariant& value);
/// Type and value: "int:4", "double:1.5", "bool:true", "string:abc", "string:(null)", "object", "novalue", "undefined".
std::string shown(const _CorvelNativeVariant& value);

/// Something that the plugin did at its host, in the order in which it happened.
struct Entry {
  enum class Kind { kEvent, kPropertyChange };
  Kind kind;
  std::uint64_t objectId;
  std::string name;
  std::vector<_CorvelNativeVariant> args;  ///< of a property change: the one value
  std::thread::id thread;
};
/// "onPlayStateChange(int:4)" for an event, "playState=int:4" for a property change.
std::string shown(const Entry& entry);

/// Records events and property changes of all objects. Thread: any.
class HostLog : public pluginhost::Observer {
 public:
  std::vector<Entry> entries() const;
  /// The first entry that satisfies @p wanted, waiting for it until the deadline.
  std::optional<Entry> waitFor(const std::function<bool(const Entry&)>& wanted, std::chrono::milliseconds deadline = kDeadline);
  void clear();
  /// Runs on the raising thread, after an event or a change was recorded and with no lock of the log held. It may block; it must
  /// not call the host. An empty function removes it.
  void setHook(std::function<void(const Entry&)> hook);

  void propertyChanged(std::uint64_t objectId, std::string_view name, const _CorvelNativeVariant& value) override;
  void eventRaised(std::uint64_t objectId, std::string_view name, const _CorvelNativeVariant* args, unsigned int count) override;
  void propertyRead(std::uint64_t, std::string_view, bool, const _CorvelNativeVariant&) override {}
  void propertyWritten(std::uint64_t, std::string_view, const _CorvelNativeVariant&, bool) override {}
  void methodCalled(std::uint64_t, std::string_view, const _CorvelNativeVariant*, unsigned int, bool,
                    const _CorvelNativeVariant&) override {}

 private:
  void add(Entry entry);

  mutable std::mutex m_mutex;
  std::condition_variable m_changed;
  std::vector<Entry> m_entries;
  std::function<void(const Entry&)> m_hook;
};

/// A plugin object with what a test asks about it.
struct TestPlugin {
  std::shared_ptr<CorvelNativePluginBase> base;
  std::uint64_t id = 0;
  unsigned long handle = 0;  ///< of its first player; 0 when none could be opened

  /// A script access by row name. nullopt (or false): the access failed.
  std::optional<_CorvelNativeVariant> read(std::string_view name) const;
  bool write(std::string_view name, const _CorvelNativeVariant& value) const;
  std::optional<_CorvelNativeVariant> call(std::string_view name, const std::vector<_CorvelNativeVariant>& args = {}) const;
  /// The same, shown; "failed" for a failed access.
  std::string readShown(std::string_view name) const;
  std::string callShown(std::string_view name, const std::vector<_CorvelNativeVariant>& args = {}) const;
};

/// A gate that threads wait at until it is opened. Copies are the same gate: a hook that may outlive the test's body captures one
/// by value.
class Gate {
 public:
  void open() const;
  /// @return false at the deadline.
  bool wait(std::chrono::milliseconds deadline = kDeadline) const;

 private:
  struct State {
    std::mutex mutex;
    std::condition_variable changed;
    bool open = false;
  };
  std::shared_ptr<State> m_state = std::make_shared<State>();
};

/// Base of tests that need plugin objects. It holds a reference to each; at the end it destroys what is left, then checks that
/// every player was closed.
class PluginTest : public ::testing::Test {
 protected:
  PluginTest();
  ~PluginTest() override;
  void TearDown() override;

  TestPlugin makePlugin();
  /// As a browser does it: willBeDestroyed, then the last reference.
  void destroy(TestPlugin& plugin);
  /// Drops the last reference without willBeDestroyed, unless the test holds another.
  void drop(TestPlugin& plugin);
  /// A plugin with an accepted source ("http://media.example/a.mp4"), its "INPUT" sent, and no answer of the library yet.
  TestPlugin makePluginWithSource();
  /// The same with "READY_TO_PLAY" delivered.
  TestPlugin makeReadyPlugin();
  /// Waits until everything queued so far on the plugin's worker has run, by a write of "LOOP" that marks the place in the queue.
  /// The plugin must have a player.
  void drainWorker(const TestPlugin& plugin);

  /// Of one plugin: its events; its events and property changes.
  std::vector<std::string> events(const TestPlugin& plugin) const;
  std::vector<std::string> entries(const TestPlugin& plugin) const;
  bool waitForEvent(const TestPlugin& plugin, const std::string& shownEvent, std::chrono::milliseconds deadline = kDeadline);
  std::optional<Entry> waitForEntry(const TestPlugin& plugin, const std::string& shownEntry,
                                    std::chrono::milliseconds deadline = kDeadline);
  /// What the event queue holds now, delivered on this thread, shown.
  std::vector<std::string> drainEvents();

  fakes::RecordingMediaLibrary& library() { return fakes::RecordingMediaLibrary::instance(); }
  HostLog& log() { return *m_log; }

 private:
  std::unique_ptr<HostLog> m_log;
  std::unique_ptr<pluginhost::EventQueue> m_queue;
  void forget(const TestPlugin& plugin);

  std::vector<std::shared_ptr<CorvelNativePluginBase>> m_made;
  std::deque<std::string> m_marks;  ///< stay where they are
};

}  // namespace fixture
