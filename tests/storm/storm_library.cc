// SPDX-License-Identifier: Apache-2.0
#include "tests/storm/storm_library.h"

#include <cstdio>
#include <cstring>
#include <iterator>
#include <random>
#include <utility>

namespace storm {
namespace {

constexpr std::chrono::microseconds kPause{100};  // between two words of one attacker, so that the others get a turn
constexpr unsigned long kReach = 4;               // attackers aim at the newest handles, some of them closed already

std::vector<const char*> answerTo(const std::string& command) {
  using namespace mediamgmnt;
  if (command == command::kPlay) {
    return {status::kBufferReady, status::kPlaying, status::kPlaySpeedChanged};
  }
  if (command == command::kPause) {
    return {status::kPaused, status::kPlaySpeedChanged};
  }
  if (command == command::kStop) {
    return {status::kStopped, status::kPlayPositionChanged};
  }
  if (command == command::kSeek) {
    return {status::kPlayPositionChanged};
  }
  return {};
}

const char* valueOf(const char* key) {
  using namespace mediamgmnt;
  if (std::strcmp(key, property::kDuration) == 0) {
    return "60000.00";
  }
  if (std::strcmp(key, property::kPosition) == 0) {
    return "1500.00";
  }
  if (std::strcmp(key, property::kPlaySpeed) == 0) {
    return "1.00";
  }
  return std::strcmp(key, property::kLastErrorCode) == 0 ? "1" : nullptr;
}

}  // namespace

std::vector<std::string> everyWord() {
  using namespace mediamgmnt;
  return {status::kFinished,
          status::kStopped,
          status::kError,
          status::kPlaying,
          status::kPaused,
          status::kBuffering,
          status::kBufferReady,
          status::kPlayPositionChanged,
          status::kPlaySpeedChanged,
          status::kReadyToPlay,
          status::kConnected,
          status::kDrmRightsError,
          status::kParentalRatingChange,
          status::kParentalRatingError,
          status::kSelectedVideoChanged,
          status::kSelectedAudioChanged,
          status::kSelectedSubtitleChanged,
          "",
          "playing"};
}

StormLibrary& StormLibrary::instance() {
  static StormLibrary* const library = new StormLibrary;  // outlives every thread that may still call it at exit
  return *library;
}

void StormLibrary::start(const Manners& manners) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_manners = manners;
  m_lines.clear();
  m_commands.clear();
  m_words.clear();
  m_opened = m_closed = m_deliveries = 0;
  m_running = true;
  m_threads.emplace_back([this] { answerLoop(); });
}

void StormLibrary::attack(unsigned int threads, const std::vector<std::string>& words) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  for (unsigned int i = 0; i < threads; ++i) {
    m_threads.emplace_back([this, i, words] { attackLoop(i + 1, words); });
  }
}

void StormLibrary::finish() {
  std::vector<std::thread> threads;
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_running = false;
    threads.swap(m_threads);
  }
  m_changed.notify_all();
  for (std::thread& thread : threads) {
    thread.join();
  }
}

void StormLibrary::say(unsigned long handle, const std::string& word) { deliver(handle, word); }

bool StormLibrary::waitUntilAllClosed(std::chrono::seconds limit) {
  std::unique_lock<std::mutex> lock(m_mutex);
  return m_changed.wait_for(lock, limit, [this] { return m_opened == m_closed; });
}

bool StormLibrary::waitForDeliveries(std::size_t count, std::chrono::seconds limit) {
  std::unique_lock<std::mutex> lock(m_mutex);
  return m_changed.wait_for(lock, limit, [this, count] { return m_deliveries >= count; });
}

unsigned long StormLibrary::lastHandle() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_lastHandle;
}

std::size_t StormLibrary::opened() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_opened;
}

std::size_t StormLibrary::closed() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_closed;
}

std::size_t StormLibrary::deliveries() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_deliveries;
}

std::size_t StormLibrary::commands(const std::string& name) const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  const auto found = m_commands.find(name);
  return found == m_commands.end() ? 0 : found->second;
}

unsigned long StormLibrary::open() {
  takeTime();
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (!m_manners.opens) {
    return 0;
  }
  ++m_opened;
  m_lines.emplace(++m_lastHandle, std::make_shared<Line>());
  if (m_lines.size() > 2 * kReach) {  // keep some closed ones, not thousands
    const auto oldest = m_lines.begin();
    if (!oldest->second->open) {
      m_lines.erase(oldest);
    }
  }
  return m_lastHandle;
}

int StormLibrary::close(unsigned long handle) {
  takeTime();
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_lines.find(handle);
    if (found == m_lines.end() || !found->second->open) {
      return 0;
    }
    found->second->open = false;
    ++m_closed;
  }
  m_changed.notify_all();
  return 1;
}

int StormLibrary::command(unsigned long handle, const char* name) {
  takeTime();
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    ++m_commands[name];
    const auto found = m_lines.find(handle);
    if (found == m_lines.end() || !found->second->open || !m_manners.accepts) {
      return 0;
    }
    if (!m_manners.answersStop && std::strcmp(name, mediamgmnt::command::kStop) == 0) {
      return 1;
    }
  }
  answer(handle, answerTo(name));
  return 1;
}

int StormLibrary::write(unsigned long handle, const char* key) {
  takeTime();
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_lines.find(handle);
    if (found == m_lines.end() || !found->second->open || !m_manners.accepts) {
      return 0;
    }
  }
  if (std::strcmp(key, mediamgmnt::property::kInput) == 0) {
    answer(handle, {mediamgmnt::status::kReadyToPlay, mediamgmnt::status::kConnected});
  }
  return 1;
}

int StormLibrary::read(unsigned long handle, const char* key, char* buffer, int size) {
  takeTime();
  const std::lock_guard<std::mutex> lock(m_mutex);
  const auto found = m_lines.find(handle);
  const char* const value = valueOf(key);
  if (found == m_lines.end() || !found->second->open || !m_manners.accepts || value == nullptr) {
    return 0;
  }
  std::snprintf(buffer, static_cast<std::size_t>(size), "%s", value);
  return 1;
}

int StormLibrary::setCallback(unsigned long handle, MediaMessageCallback callback) {
  takeTime();
  const std::lock_guard<std::mutex> lock(m_mutex);
  const auto found = m_lines.find(handle);
  if (found == m_lines.end()) {
    return 0;
  }
  found->second->callback = callback;
  return 1;
}

void StormLibrary::takeTime() const {
  std::chrono::milliseconds time{};
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    time = m_manners.callTime;
  }
  if (time.count() > 0) {
    std::this_thread::sleep_for(time);  // the library's slowness, not a way to wait for something
  }
}

std::shared_ptr<StormLibrary::Line> StormLibrary::find(unsigned long handle) const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  const auto found = m_lines.find(handle);
  return found == m_lines.end() ? nullptr : found->second;
}

void StormLibrary::answer(unsigned long handle, const std::vector<const char*>& words) {
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const char* word : words) {
      for (int i = 0; i < m_manners.repeats; ++i) {
        m_words.push_back({handle, word});
      }
    }
  }
  m_changed.notify_all();
}

void StormLibrary::answerLoop() {
  while (true) {
    Word word;
    {
      std::unique_lock<std::mutex> lock(m_mutex);
      m_changed.wait(lock, [this] { return !m_words.empty() || !m_running; });
      if (!m_running) {
        return;
      }
      word = std::move(m_words.front());
      m_words.pop_front();
    }
    deliver(word.handle, word.text);
  }
}

void StormLibrary::attackLoop(unsigned int seed, const std::vector<std::string>& words) {
  std::minstd_rand random(seed);
  while (true) {
    unsigned long handle = 0;
    {
      std::unique_lock<std::mutex> lock(m_mutex);
      if (m_changed.wait_for(lock, kPause, [this] { return !m_running; })) {
        return;
      }
      handle = pickHandle(static_cast<std::uint32_t>(random()));
    }
    deliver(handle, words[random() % words.size()]);
  }
}

unsigned long StormLibrary::pickHandle(std::uint32_t random) const {
  if (m_lines.empty()) {
    return 0;
  }
  const auto newest = m_lines.rbegin();
  const std::size_t reach = m_lines.size() < kReach ? m_lines.size() : kReach;
  return std::next(newest, static_cast<std::ptrdiff_t>(random % reach))->first;
}

void StormLibrary::deliver(unsigned long handle, const std::string& word) {
  const std::shared_ptr<Line> line = find(handle);
  if (line == nullptr) {
    return;
  }
  MediaMessageCallback callback = nullptr;
  bool serial = true;
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    callback = line->open || m_manners.callsAfterClose ? line->callback : nullptr;
    serial = m_manners.serial;
  }
  if (callback == nullptr) {
    return;
  }
  {
    std::unique_lock<std::mutex> turn(line->talking, std::defer_lock);
    if (serial) {
      turn.lock();
    }
    callback(handle, word.c_str(), nullptr);
  }
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    ++m_deliveries;
  }
  m_changed.notify_all();
}

}  // namespace storm

extern "C" {

unsigned long openPlayer(int /*kind*/) { return storm::StormLibrary::instance().open(); }

int closePlayer(unsigned long handle) { return storm::StormLibrary::instance().close(handle); }

int cmdPlayer(unsigned long handle, const char* command, const char* /*argument*/) {
  return storm::StormLibrary::instance().command(handle, command);
}

int getPlayerProperty(unsigned long handle, const char* key, char* buffer, int size) {
  return storm::StormLibrary::instance().read(handle, key, buffer, size);
}

int setPlayerProperty(unsigned long handle, const char* key, const char* /*value*/) {
  return storm::StormLibrary::instance().write(handle, key);
}

int registerCallback(unsigned long handle, MediaMessageCallback callback) {
  return storm::StormLibrary::instance().setCallback(handle, callback);
}

int registerTextTrackCallback(unsigned long /*handle*/, MediaTextTrackCallback /*callback*/) {
  storm::StormLibrary::instance().takeTime();
  return 1;
}

int registerSubtitleSettingsChangedCallback(unsigned long /*handle*/, MediaSubtitleSettingsCallback /*callback*/) {
  storm::StormLibrary::instance().takeTime();
  return 1;
}

int getOOBPlayerPosition(unsigned long /*handle*/, int* position) {
  storm::StormLibrary::instance().takeTime();
  *position = 0;
  return 1;
}

int hbbSelectDefaultAVComponent(AVComponentType /*type*/) {
  storm::StormLibrary::instance().takeTime();
  return 1;
}
}
