// SPDX-License-Identifier: Apache-2.0
// The one way out of the library: what one player says, delivered one thing after another on a thread of its own.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <variant>

#include "host/mediamgmnt.h"

namespace mediamgmnt {

/// A text that may be large, or still be delivered while its owner goes on.
using SharedText = std::shared_ptr<const std::string>;

/// A notification of the text-track callback, with as many texts as its type has.
struct TextTrackNotice {
  _TextTrackEventType type;
  SharedText first;
  SharedText second;
};

/// Delivers words, text tracks and settings in the order in which they were queued, never with a lock held.
///
/// Threads: run() on the dispatcher thread, all else any.
/// Teardown: after close() has returned no new callback starts; one that runs is not waited for.
class Dispatcher {
 public:
  using Clock = std::chrono::steady_clock;
  using Alarm = std::function<void()>;

  explicit Dispatcher(unsigned long handle);
  Dispatcher(const Dispatcher&) = delete;
  Dispatcher& operator=(const Dispatcher&) = delete;

  void setMessageCallback(MediaMessageCallback callback);
  void setTextTrackCallback(MediaTextTrackCallback callback);
  void setSettingsCallback(MediaSubtitleSettingsCallback callback);
  bool hasSettingsCallback() const { return m_settings != nullptr; }

  /// @p word is one of the constants of status::, it is not copied.
  void enqueue(const char* word);
  void enqueue(TextTrackNotice notice);
  void enqueue(const _SubtitleSettingsParams& settings);

  /// Runs @p alarm on the dispatcher thread at @p when, between two words.
  void enqueueAlarm(Clock::time_point when, Alarm alarm);

  void close();
  void run();

 private:
  struct TimedAlarm {
    Clock::time_point when;
    Alarm alarm;
  };

  using Delivery = std::variant<const char*, TextTrackNotice, _SubtitleSettingsParams>;

  void push(Delivery delivery);
  bool takeNext(Delivery& next, Alarm& alarm);
  void deliver(const char* word) const;
  void deliver(const TextTrackNotice& notice) const;
  void deliver(const _SubtitleSettingsParams& settings) const;

  const unsigned long m_handle;
  std::atomic<MediaMessageCallback> m_message{nullptr};
  std::atomic<MediaTextTrackCallback> m_textTrack{nullptr};
  std::atomic<MediaSubtitleSettingsCallback> m_settings{nullptr};
  std::mutex m_mutex;
  std::condition_variable m_wake;
  std::deque<Delivery> m_queue;     // guarded by m_mutex
  std::deque<TimedAlarm> m_alarms;  // guarded by m_mutex; all have the same delay, so the first is the next
  bool m_closed = false;            // guarded by m_mutex
};

}  // namespace mediamgmnt
