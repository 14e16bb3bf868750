// SPDX-License-Identifier: Apache-2.0
// A media library without media: it answers as the contract says, from a thread of its own, for sources that say in their query
// what they are: http://any/clip?ms=300 lasts 300 ms, &error=5 ends in that error when played, &mute never gets ready, &late=50
// connects 50 ms after it got ready, &audio=3 lists three audio components of which the first is selected. Its plane shows one grey
// box for each player that was placed.
#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>

#include "host/mediamgmnt.h"
#include "platform/mediamgmnt/media_plane.h"

namespace {

using Clock = std::chrono::steady_clock;

/// Milliseconds. No library is connected or has its first picture before the call that asked for it has returned to the page.
constexpr double kOpening = 30;
constexpr double kConnecting = 10;

struct Box {
  int x = 0, y = 0, width = 0, height = 0;
};

struct Player {
  MediaMessageCallback callback = nullptr;
  std::string input;
  Box box;
  double speed = 0;
  double position = 0;  ///< milliseconds, at `since`
  Clock::time_point since;
  bool played = false;
  int audio = 0;             ///< the selected component, -1 for none
  unsigned long source = 0;  ///< what was planned for an older one is not said
  unsigned long run = 0;     ///< the end that was planned for an older one does not come
};

class Library {
 public:
  ~Library() {
    {
      const std::lock_guard lock(m_mutex);
      m_ended = true;
    }
    m_wake.notify_one();
    if (m_thread.joinable()) m_thread.join();
  }

  unsigned long open() {
    const std::lock_guard lock(m_mutex);
    if (!m_thread.joinable()) m_thread = std::thread([this] { run(); });
    m_players[++m_lastHandle];
    return m_lastHandle;
  }

  bool close(unsigned long handle) {
    const std::lock_guard lock(m_mutex);
    return m_players.erase(handle) != 0;
  }

  bool setCallback(unsigned long handle, MediaMessageCallback callback) {
    return with(handle, [&](Player& player) {
      player.callback = callback;
      return true;
    });
  }

  bool command(unsigned long handle, const std::string& command, const std::string& argument) {
    return with(handle, [&](Player& player) { return runCommand(handle, player, command, argument); });
  }

  bool write(unsigned long handle, const std::string& key, const std::string& value) {
    return with(handle, [&](Player& player) {
      if (key == mediamgmnt::property::kInput) setInput(handle, player, value);
      return true;
    });
  }

  bool read(unsigned long handle, const std::string& key, char* buffer, int size) {
    return with(handle, [&](Player& player) {
      const std::string value = valueOf(player, key);
      if (!value.empty()) std::snprintf(buffer, static_cast<std::size_t>(size), "%s", value.c_str());
      return !value.empty();
    });
  }

  bool position(unsigned long handle, int* out) {
    return with(handle, [&](Player& player) {
      *out = static_cast<int>(positionOf(player));
      return true;
    });
  }

  bool waitIdle(std::chrono::milliseconds limit) {
    std::unique_lock lock(m_mutex);
    return m_atRest.wait_for(lock, limit, [this] { return m_players.empty() && !m_calling; });
  }

  void draw(unsigned char* pixels) {
    const std::lock_guard lock(m_mutex);
    std::memset(pixels, 0, kMediaPlaneBytes);
    for (const auto& [handle, player] : m_players) fill(pixels, player.box);
  }

 private:
  struct Planned {
    unsigned long handle;
    unsigned long source;
    unsigned long run;  ///< 0: any
    std::string word;
    std::function<void(Player&)> before;
  };

  template <typename Work>
  bool with(unsigned long handle, Work work) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_players.find(handle);
    return found != m_players.end() && work(found->second);
  }

  static double option(const Player& player, const char* name, double otherwise) {
    const std::size_t at = player.input.find(name);
    return at == std::string::npos ? otherwise : std::strtod(player.input.c_str() + at + std::strlen(name), nullptr);
  }

  static double duration(const Player& player) { return option(player, "ms=", 1000); }

  static double positionOf(const Player& player) {
    const double run = std::chrono::duration<double, std::milli>(Clock::now() - player.since).count() * player.speed;
    return std::clamp(player.position + run, 0.0, duration(player));
  }

  static void setSpeed(Player& player, double speed) {
    player.position = positionOf(player);
    player.since = Clock::now();
    player.speed = speed;
  }

  static std::string valueOf(const Player& player, const std::string& key) {
    namespace property = mediamgmnt::property;
    if (key == property::kDuration) return std::to_string(static_cast<long>(duration(player)));
    if (key == property::kPosition) return std::to_string(static_cast<long>(positionOf(player)));
    if (key == property::kPlaySpeed) return std::to_string(static_cast<long>(player.speed));
    if (key == property::kLastErrorCode) return std::to_string(static_cast<long>(option(player, "error=", 2)));
    return audioValueOf(player, key);
  }

  static std::string audioRecord(int index) {
    static constexpr const char* kLanguages[] = {"deu", "eng", "fra"};
    const std::string language = kLanguages[index % 3];
    return "1|mp4a.40.2|0|" + std::to_string(index) + '|' + std::to_string(256 + index) + "|||0|||" + language + "|0|2|";
  }

  static std::string audioValueOf(const Player& player, const std::string& key) {
    namespace property = mediamgmnt::property;
    const auto count = static_cast<int>(option(player, "audio=", 0));
    const bool active = player.audio >= 0 && player.audio < count;
    if (key == property::kAudioLength) return std::to_string(count);
    if (key == property::kActiveAudioLength) return active ? "1" : "0";
    if (key == std::string(property::kActiveAudioItemPrefix) + '0') return active ? audioRecord(player.audio) : "";
    const std::string prefix = property::kAudioItemPrefix;
    if (key.rfind(prefix, 0) != 0) return "";
    const int index = std::atoi(key.c_str() + prefix.size());
    return index < count ? audioRecord(index) : mediamgmnt::kNotAvailable;
  }

  bool selectAudio(unsigned long handle, Player& player, int index) {
    player.audio = index;
    plan(handle, player, 0, mediamgmnt::status::kSelectedAudioChanged);
    return true;
  }

  static Clock::time_point in(double milliseconds) {
    return Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double, std::milli>(milliseconds));
  }

  /// A word that is said whatever is commanded meanwhile.
  void plan(unsigned long handle, const Player& player, double milliseconds, const char* word) {
    m_planned.emplace(in(milliseconds), Planned{handle, player.source, 0, word, nullptr});
    m_wake.notify_one();
  }

  void planInRun(unsigned long handle, const Player& player, double milliseconds, const char* word,
                 std::function<void(Player&)> before = nullptr) {
    m_planned.emplace(in(milliseconds), Planned{handle, player.source, player.run, word, std::move(before)});
    m_wake.notify_one();
  }

  void setInput(unsigned long handle, Player& player, const std::string& value) {
    ++player.source;
    ++player.run;
    player.input = value;
    player.position = player.speed = 0;
    player.played = false;
    player.audio = 0;
    if (value.find("mute") != std::string::npos) return;
    plan(handle, player, 0, mediamgmnt::status::kReadyToPlay);
    plan(handle, player, option(player, "late=", kConnecting), mediamgmnt::status::kConnected);
  }

  bool runCommand(unsigned long handle, Player& player, const std::string& name, const std::string& argument) {
    namespace command = mediamgmnt::command;
    if (name == command::kPlay) return play(handle, player, std::strtod(argument.c_str(), nullptr));
    if (name == command::kPause) return pause(handle, player);
    if (name == command::kStop) return stop(handle, player);
    if (name == command::kSeek) return seek(handle, player, std::strtod(argument.c_str(), nullptr));
    if (name == command::kSelectAudioComponent) return selectAudio(handle, player, std::atoi(argument.c_str()));
    if (name == command::kUnselectAudioComponent) return selectAudio(handle, player, -1);
    if (name == command::kSelectDefaultComponent && argument == "1") return selectAudio(handle, player, 0);
    if (name == command::kSetWindowProperties) {
      Box& box = player.box;
      return std::sscanf(argument.c_str(), "%d|%d|%d|%d|", &box.x, &box.y, &box.width, &box.height) == 4;
    }
    return false;
  }

  bool play(unsigned long handle, Player& player, double speed) {
    namespace status = mediamgmnt::status;
    ++player.run;
    if (option(player, "error=", -1) >= 0) {
      plan(handle, player, 1, status::kError);
      return true;
    }
    if (positionOf(player) >= duration(player)) player.position = 0;
    setSpeed(player, speed);
    player.played = true;
    plan(handle, player, kOpening, status::kBufferReady);
    plan(handle, player, kOpening, status::kPlaying);
    plan(handle, player, kOpening, status::kPlaySpeedChanged);
    planEnd(handle, player);
    return true;
  }

  void planEnd(unsigned long handle, const Player& player) {
    if (player.speed <= 0) return;
    const double left = kOpening + (duration(player) - positionOf(player)) / player.speed;
    planInRun(handle, player, left, mediamgmnt::status::kFinished, [](Player& ended) {
      ended.position = duration(ended);
      ended.speed = 0;
    });
    planInRun(handle, player, left, mediamgmnt::status::kPlaySpeedChanged);
  }

  bool pause(unsigned long handle, Player& player) {
    ++player.run;
    setSpeed(player, 0);
    plan(handle, player, 0, mediamgmnt::status::kPaused);
    plan(handle, player, 0, mediamgmnt::status::kPlaySpeedChanged);
    return true;
  }

  bool stop(unsigned long handle, Player& player) {
    ++player.run;
    player.position = player.speed = 0;
    player.played = false;
    plan(handle, player, 0, mediamgmnt::status::kStopped);
    return true;
  }

  bool seek(unsigned long handle, Player& player, double position) {
    ++player.run;
    player.position = std::clamp(position, 0.0, duration(player));
    player.since = Clock::now();
    plan(handle, player, 0, mediamgmnt::status::kPlayPositionChanged);
    if (player.speed != 0) plan(handle, player, 0, mediamgmnt::status::kPlaying);
    planEnd(handle, player);
    return true;
  }

  static void fill(unsigned char* pixels, const Box& box) {
    const int right = std::min(box.x + box.width, kMediaPlaneWidth);
    const int bottom = std::min(box.y + box.height, kMediaPlaneHeight);
    for (int y = std::max(box.y, 0); y < bottom; ++y) {
      for (int x = std::max(box.x, 0); x < right; ++x) std::memset(pixels + y * kMediaPlaneStride + x * 4, 0x80, 4);
    }
  }

  // Words go out one after the other, with no lock held.
  void run() {
    std::unique_lock lock(m_mutex);
    while (!m_ended) {
      if (m_planned.empty()) {
        m_wake.wait(lock);
      } else if (const auto at = m_planned.begin()->first; at > Clock::now()) {
        m_wake.wait_until(lock, at);
      } else {
        const Planned planned = m_planned.extract(m_planned.begin()).mapped();
        sendLocked(planned, lock);
      }
    }
  }

  void sendLocked(const Planned& planned, std::unique_lock<std::mutex>& lock) {
    const auto found = m_players.find(planned.handle);
    if (found == m_players.end() || found->second.source != planned.source) return;
    if (planned.run != 0 && planned.run != found->second.run) return;
    if (planned.before) planned.before(found->second);
    const MediaMessageCallback callback = found->second.callback;
    m_calling = true;
    lock.unlock();
    if (callback != nullptr) callback(planned.handle, planned.word.c_str(), nullptr);
    lock.lock();
    m_calling = false;
    m_atRest.notify_all();
  }

  std::mutex m_mutex;
  std::condition_variable m_wake;
  std::condition_variable m_atRest;
  std::thread m_thread;
  std::multimap<Clock::time_point, Planned> m_planned;
  std::map<unsigned long, Player> m_players;
  unsigned long m_lastHandle = 0;
  bool m_calling = false;
  bool m_ended = false;
};

Library& library() {
  static Library instance;
  return instance;
}

const char* orEmpty(const char* text) { return text == nullptr ? "" : text; }

}  // namespace

unsigned long openPlayer(int) { return library().open(); }
int closePlayer(unsigned long handle) { return library().close(handle) ? 1 : 0; }
int cmdPlayer(unsigned long handle, const char* command, const char* argument) {
  return library().command(handle, orEmpty(command), orEmpty(argument)) ? 1 : 0;
}
int getPlayerProperty(unsigned long handle, const char* key, char* buffer, int size) {
  return library().read(handle, orEmpty(key), buffer, size) ? 1 : 0;
}
int setPlayerProperty(unsigned long handle, const char* key, const char* value) {
  return library().write(handle, orEmpty(key), orEmpty(value)) ? 1 : 0;
}
int registerCallback(unsigned long handle, MediaMessageCallback callback) {
  return library().setCallback(handle, callback) ? 1 : 0;
}
int registerTextTrackCallback(unsigned long, MediaTextTrackCallback) { return 1; }
int registerSubtitleSettingsChangedCallback(unsigned long, MediaSubtitleSettingsCallback) { return 1; }
int getOOBPlayerPosition(unsigned long handle, int* position) { return library().position(handle, position) ? 1 : 0; }
int hbbSelectDefaultAVComponent(AVComponentType) { return 1; }

int mediaPlaneSnapshot(unsigned char* pixels, unsigned int size) {
  if (size < static_cast<unsigned int>(kMediaPlaneBytes)) return 0;
  library().draw(pixels);
  return 1;
}

int mediaLibraryWaitIdle(int timeoutMs) { return library().waitIdle(std::chrono::milliseconds(timeoutMs)) ? 1 : 0; }
