// SPDX-License-Identifier: Apache-2.0
// One player as the ten functions see it: takes commands from any thread and keeps the two threads that do the work.
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "platform/mediamgmnt/components.h"
#include "platform/mediamgmnt/dispatcher.h"
#include "platform/mediamgmnt/playback.h"
#include "platform/mediamgmnt/playback_facts.h"
#include "platform/mediamgmnt/protection_facts.h"
#include "platform/mediamgmnt/stream_report.h"
#include "platform/mediamgmnt/task_loop.h"
#include "platform/mediamgmnt/voice.h"

namespace mediamgmnt {

/// A player from openPlayer to closePlayer.
///
/// Threads: all public functions any. The control thread (Playback and its pipeline) and the dispatcher thread (callbacks) start
/// with the first command that needs them (the latter also with the viewer's settings), so an idle player costs nothing; each holds
/// a shared pointer to the player. close() joins neither: a callback may be waiting for a lock that the closing thread holds.
class PlayerCore : public std::enable_shared_from_this<PlayerCore> {
 public:
  explicit PlayerCore(unsigned long handle);
  PlayerCore(const PlayerCore&) = delete;
  PlayerCore& operator=(const PlayerCore&) = delete;

  /// The three return false for a refusal: an unknown name, an argument that makes no sense, a closed player.
  bool command(std::string_view name, std::string_view argument);
  bool setProperty(std::string_view key, std::string_view value);
  bool property(std::string_view key, std::string& value);

  /// The viewer's parental limit is another one.
  void judgeRatings();

  Dispatcher& dispatcher() { return m_dispatcher; }
  const PlaybackFacts& facts() const { return m_facts; }
  /// Delivers it by the settings callback; starts no more than the thread that this takes.
  void tell(const _SubtitleSettingsParams& settings);

  /// No callback starts after this has returned.
  void close();

 private:
  template <typename Work>
  bool onControlThread(Work work);
  bool ensureThreads();
  void ensureDispatcherLocked();
  void runControlThread();
  bool play(std::string_view argument);
  bool seek(std::string_view argument);
  bool stop();
  bool setWindow(std::string_view argument);
  void applyWindow();
  bool selection(std::string_view name, std::string_view argument);
  bool reportProperty(std::string_view key, std::string& value);
  bool componentProperty(std::string_view key, std::string& value);

  const unsigned long m_handle;
  PlaybackFacts m_facts;
  Components m_components;
  ProtectionFacts m_protection;
  StreamReportStore m_report;
  Dispatcher m_dispatcher;
  Voice m_voice;
  TaskLoop m_loop;
  std::unique_ptr<Playback> m_playback;  ///< the control thread's own
  std::mutex m_mutex;
  bool m_started = false;               // guarded by m_mutex
  bool m_dispatching = false;           // guarded by m_mutex
  bool m_closed = false;                // guarded by m_mutex
  std::optional<media::Rect> m_window;  // guarded by m_mutex
  std::string m_windowAsked;            // guarded by m_mutex
  std::string m_windowInForce;          // guarded by m_mutex
};

}  // namespace mediamgmnt
