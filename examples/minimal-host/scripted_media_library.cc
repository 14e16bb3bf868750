// SPDX-License-Identifier: Apache-2.0
// The smallest media library that the plugin can play with. It shows nothing: it answers each command with the status words that a
// real one would report, in the order that the plugin and its pages rely on.
//
// One thread calls back. The ten functions only note what has to be reported, so that none of them waits, and none calls back on
// its caller's thread.
#include "examples/minimal-host/scripted_media_library.h"

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

#include "host/mediamgmnt.h"

namespace {

namespace command = mediamgmnt::command;
namespace property = mediamgmnt::property;
namespace status = mediamgmnt::status;

constexpr char kDurationMs[] = "2000.00";
constexpr std::chrono::milliseconds kAtOnce(0);
constexpr std::chrono::milliseconds kFilm(50);  ///< a short film is shown fast

struct Player {
  MediaMessageCallback callback = nullptr;
  std::map<std::string, std::string, std::less<>> answers{
      {property::kDuration, kDurationMs}, {property::kPosition, "0.00"}, {property::kPlaySpeed, "0.00"}};
};

/// A status word to report, and the property that changes with it.
struct Report {
  unsigned long handle;
  const char* word;
  const char* property = nullptr;
  std::string value = {};
  std::chrono::milliseconds after = kAtOnce;
};

class Library {
 public:
  static Library& instance() {
    static Library library;
    return library;
  }

  ~Library() {
    {
      const std::lock_guard lock(m_mutex);
      m_ending = true;
    }
    m_changed.notify_one();
    m_thread.join();
  }

  void begin() {
    const std::lock_guard lock(m_mutex);
    m_begun = true;
    m_changed.notify_one();
  }

  unsigned long open() {
    const std::lock_guard lock(m_mutex);
    m_players[++m_lastHandle];
    return m_lastHandle;
  }

  /// Never waits for a callback that is running; none starts for the handle afterwards.
  bool close(unsigned long handle) {
    const std::lock_guard lock(m_mutex);
    return m_players.erase(handle) != 0;
  }

  bool setCallback(unsigned long handle, MediaMessageCallback callback) {
    const std::lock_guard lock(m_mutex);
    const auto player = m_players.find(handle);
    if (player == m_players.end()) return false;
    player->second.callback = callback;
    return true;
  }

  bool answer(unsigned long handle, std::string_view key, char* buffer, int size) {
    const std::lock_guard lock(m_mutex);
    const auto player = m_players.find(handle);
    if (player == m_players.end() || buffer == nullptr || size <= 0) return false;
    const auto value = player->second.answers.find(key);
    if (value == player->second.answers.end()) return false;
    std::snprintf(buffer, static_cast<std::size_t>(size), "%s", value->second.c_str());
    return true;
  }

  /// @return false for an unknown handle.
  bool report(unsigned long handle, std::initializer_list<Report> reports) {
    const std::lock_guard lock(m_mutex);
    if (m_players.find(handle) == m_players.end()) return false;
    m_reports.insert(m_reports.end(), reports);
    m_changed.notify_one();
    return true;
  }

 private:
  Library() : m_thread([this] { callBack(); }) {}

  /// The callback thread: one report after the other, with no lock held while calling back.
  void callBack() {
    std::unique_lock lock(m_mutex);
    while (true) {
      m_changed.wait(lock, [this] { return m_ending || (m_begun && !m_reports.empty()); });
      if (m_ending) return;
      const Report next = m_reports.front();
      m_reports.pop_front();
      if (m_changed.wait_for(lock, next.after, [this] { return m_ending; })) return;
      const MediaMessageCallback callback = takeEffect(next);
      if (callback == nullptr) continue;
      lock.unlock();
      callback(next.handle, next.word, nullptr);
      lock.lock();
    }
  }

  MediaMessageCallback takeEffect(const Report& report) {
    const auto player = m_players.find(report.handle);
    if (player == m_players.end()) return nullptr;  // closed meanwhile
    if (report.property != nullptr) player->second.answers[report.property] = report.value;
    return player->second.callback;
  }

  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::map<unsigned long, Player> m_players;
  std::deque<Report> m_reports;
  unsigned long m_lastHandle = 0;  ///< handles are never 0 and never reused
  bool m_begun = false;
  bool m_ending = false;
  std::thread m_thread;  ///< last: it uses everything above
};

/// A whole playback: it starts, goes on for a while, and ends.
bool play(unsigned long handle, const std::string& speed) {
  return Library::instance().report(handle, {{handle, status::kBufferReady},
                                             {handle, status::kPlaying, property::kPlaySpeed, speed},
                                             {handle, status::kPlaySpeedChanged},
                                             {handle, status::kPlayPositionChanged, property::kPosition, "1000.00"},
                                             {handle, status::kFinished, property::kPosition, kDurationMs, kFilm},
                                             {handle, status::kPlaySpeedChanged, property::kPlaySpeed, "0.00"}});
}

/// A stop is always answered, and at once: the page's stop() waits for it.
bool stop(unsigned long handle) {
  return Library::instance().report(handle, {{handle, status::kStopped, property::kPlaySpeed, "0.00"}});
}

}  // namespace

void scriptedMediaBegin() { Library::instance().begin(); }

unsigned long openPlayer(int) { return Library::instance().open(); }

int closePlayer(unsigned long handle) { return Library::instance().close(handle); }

int cmdPlayer(unsigned long handle, const char* name, const char* argument) {
  if (name == nullptr) return 0;
  const std::string_view wanted(name);
  if (wanted == command::kPlay) return play(handle, argument == nullptr ? "1.00" : argument);
  if (wanted == command::kStop) return stop(handle);
  return Library::instance().report(handle, {});  // accepted without an effect that could be seen
}

int getPlayerProperty(unsigned long handle, const char* key, char* buffer, int size) {
  return key != nullptr && Library::instance().answer(handle, key, buffer, size);
}

int setPlayerProperty(unsigned long handle, const char* key, const char*) {
  if (key == nullptr) return 0;
  if (std::strcmp(key, property::kInput) != 0) return Library::instance().report(handle, {});
  return Library::instance().report(handle, {{handle, status::kReadyToPlay}, {handle, status::kConnected}});
}

int registerCallback(unsigned long handle, MediaMessageCallback callback) {
  return Library::instance().setCallback(handle, callback);
}

int registerTextTrackCallback(unsigned long, MediaTextTrackCallback) { return 1; }

int registerSubtitleSettingsChangedCallback(unsigned long, MediaSubtitleSettingsCallback) { return 1; }

int getOOBPlayerPosition(unsigned long, int*) { return 0; }

int hbbSelectDefaultAVComponent(AVComponentType) { return 1; }
