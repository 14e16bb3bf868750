// SPDX-License-Identifier: Apache-2.0
#include "tests/fakes/recording_media_library.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace fakes {

/// One queued callback.
struct RecordingMediaLibrary::Delivery {
  std::string word;
  bool isTextTrack = false;
  _TextTrackEventType trackType = TEXT_TRACK_ADD;
  void* trackData = nullptr;
  std::optional<_SubtitleSettingsParams> settings;
  bool done = false;
  bool delivered = false;
};

/// One handle, kept after it was closed: late callbacks and finished threads still need it.
struct RecordingMediaLibrary::PlayerRecord {
  unsigned long handle = 0;
  bool open = true;
  bool playing = false;
  MediaMessageCallback message = nullptr;
  MediaTextTrackCallback textTrack = nullptr;
  MediaSubtitleSettingsCallback settings = nullptr;
  std::map<std::string, std::string> properties;
  std::deque<std::shared_ptr<Delivery>> queue;
  bool delivering = false;
  bool ending = false;
  bool ended = false;
  std::thread dispatcher;
  std::thread::id dispatcherId;
};

namespace {

const char* functionName(Function function) {
  switch (function) {
    case Function::kOpenPlayer: return "openPlayer";
    case Function::kClosePlayer: return "closePlayer";
    case Function::kCmdPlayer: return "cmdPlayer";
    case Function::kGetPlayerProperty: return "getPlayerProperty";
    case Function::kSetPlayerProperty: return "setPlayerProperty";
    case Function::kRegisterCallback: return "registerCallback";
    case Function::kRegisterTextTrackCallback: return "registerTextTrackCallback";
    case Function::kRegisterSubtitleSettingsChangedCallback: return "registerSubtitleSettingsChangedCallback";
    case Function::kGetOobPlayerPosition: return "getOOBPlayerPosition";
    case Function::kSelectDefaultAvComponent: return "hbbSelectDefaultAVComponent";
  }
  return "unknown";
}

std::optional<std::string> copied(const char* text) {
  if (text == nullptr) return std::nullopt;
  return std::string(text);
}

Call makeCall(Function function, unsigned long handle) {
  Call call;
  call.function = function;
  call.handle = handle;
  call.thread = std::this_thread::get_id();
  return call;
}

CallMatcher matches(Function function, std::string name, std::optional<std::string> argument) {
  return [=](const Call& call) {
    if (call.function != function || call.name != name) return false;
    return !argument || call.argument == argument;
  };
}

template <typename Value>
void assign(std::map<std::string, Value>& map, const std::string& key, std::optional<Value> value) {
  if (value) {
    map[key] = *value;
  } else {
    map.erase(key);
  }
}

}  // namespace

std::string describe(const Call& call) {
  std::string text = functionName(call.function);
  text += "(" + std::to_string(call.handle);
  if (!call.name.empty()) text += ", " + call.name;
  const bool takesText = call.function == Function::kCmdPlayer || call.function == Function::kSetPlayerProperty;
  if (takesText) text += ", " + call.argument.value_or("(null)");
  return text + ")";
}

CallMatcher isFunction(Function function) {
  return [function](const Call& call) { return call.function == function; };
}

CallMatcher isCommand(std::string command) { return matches(Function::kCmdPlayer, std::move(command), std::nullopt); }

CallMatcher isCommand(std::string command, std::string argument) {
  return matches(Function::kCmdPlayer, std::move(command), std::move(argument));
}

CallMatcher isWrite(std::string key) { return matches(Function::kSetPlayerProperty, std::move(key), std::nullopt); }

CallMatcher isWrite(std::string key, std::string value) {
  return matches(Function::kSetPlayerProperty, std::move(key), std::move(value));
}

CallMatcher isRead(std::string key) { return matches(Function::kGetPlayerProperty, std::move(key), std::nullopt); }

CallMatcher ofHandle(unsigned long handle, CallMatcher matcher) {
  return [handle, matcher = std::move(matcher)](const Call& call) { return call.handle == handle && matcher(call); };
}

RecordingMediaLibrary& RecordingMediaLibrary::instance() {
  // Never destroyed: a late callback thread of a failing test must not meet a destroyed library.
  static RecordingMediaLibrary* const library = new RecordingMediaLibrary;
  return *library;
}

void RecordingMediaLibrary::reset() {
  std::vector<std::thread> dispatchers;
  {
    Lock lock(m_mutex);
    for (auto& [handle, player] : m_players) {
      player->open = false;
      player->ending = true;
      for (auto& delivery : player->queue) delivery->done = true;
      player->queue.clear();
      if (player->dispatcher.joinable()) dispatchers.push_back(std::move(player->dispatcher));
    }
    m_changed.notify_all();
  }
  for (auto& dispatcher : dispatchers) dispatcher.join();
  Lock lock(m_mutex);
  m_players.clear();
  m_calls.clear();
  m_properties.clear();
  m_commandResults.clear();
  m_writeResults.clear();
  m_hooks.clear();
  m_oobPosition.reset();
  m_lastHandle = 0;
  m_failOpens = 0;
  m_autoAnswer = false;
}

void RecordingMediaLibrary::failOpens(int count) {
  Lock lock(m_mutex);
  m_failOpens = count;
}

void RecordingMediaLibrary::setProperty(const std::string& key, std::optional<std::string> value) {
  Lock lock(m_mutex);
  assign(m_properties, key, std::move(value));
}

void RecordingMediaLibrary::setProperty(unsigned long handle, const std::string& key, std::optional<std::string> value) {
  Lock lock(m_mutex);
  const auto player = findLocked(handle);
  if (player) assign(player->properties, key, std::move(value));
}

void RecordingMediaLibrary::setCommandResult(const std::string& command, int result) {
  Lock lock(m_mutex);
  m_commandResults[command] = result;
}

void RecordingMediaLibrary::setWriteResult(const std::string& key, int result) {
  Lock lock(m_mutex);
  m_writeResults[key] = result;
}

void RecordingMediaLibrary::setOobPosition(std::optional<int> position, int result) {
  Lock lock(m_mutex);
  m_oobPosition = position;
  m_oobResult = result;
}

void RecordingMediaLibrary::addHook(CallMatcher matcher, Hook hook) {
  Lock lock(m_mutex);
  m_hooks.push_back(std::make_shared<const HookEntry>(HookEntry{std::move(matcher), std::move(hook)}));
}

void RecordingMediaLibrary::clearHooks() {
  Lock lock(m_mutex);
  m_hooks.clear();
}

void RecordingMediaLibrary::setAutoAnswer(bool on) {
  Lock lock(m_mutex);
  m_autoAnswer = on;
}

std::vector<Call> RecordingMediaLibrary::calls() const {
  Lock lock(m_mutex);
  return m_calls;
}

std::vector<Call> RecordingMediaLibrary::calls(const CallMatcher& matcher) const {
  Lock lock(m_mutex);
  std::vector<Call> found;
  std::copy_if(m_calls.begin(), m_calls.end(), std::back_inserter(found), matcher);
  return found;
}

std::size_t RecordingMediaLibrary::count(const CallMatcher& matcher) const {
  Lock lock(m_mutex);
  return static_cast<std::size_t>(std::count_if(m_calls.begin(), m_calls.end(), matcher));
}

std::vector<std::string> RecordingMediaLibrary::actions() const {
  std::vector<std::string> words;
  for (const Call& call : calls()) {
    const std::string argument = call.argument.value_or("(null)");
    if (call.function == Function::kCmdPlayer) words.push_back(argument.empty() ? call.name : call.name + " " + argument);
    if (call.function == Function::kSetPlayerProperty) words.push_back(call.name + "=" + argument);
  }
  return words;
}

void RecordingMediaLibrary::clearCalls() {
  Lock lock(m_mutex);
  m_calls.clear();
}

std::optional<Call> RecordingMediaLibrary::waitForCall(const CallMatcher& matcher, std::chrono::milliseconds deadline) {
  Lock lock(m_mutex);
  std::optional<Call> found;
  m_changed.wait_for(lock, deadline, [&] {
    const auto call = std::find_if(m_calls.begin(), m_calls.end(), matcher);
    if (call != m_calls.end()) found = *call;
    return found.has_value();
  });
  return found;
}

bool RecordingMediaLibrary::waitForCount(const CallMatcher& matcher, std::size_t wanted, std::chrono::milliseconds deadline) {
  Lock lock(m_mutex);
  return m_changed.wait_for(
      lock, deadline, [&] { return static_cast<std::size_t>(std::count_if(m_calls.begin(), m_calls.end(), matcher)) >= wanted; });
}

unsigned long RecordingMediaLibrary::lastHandle() const {
  Lock lock(m_mutex);
  return m_lastHandle;
}

std::vector<unsigned long> RecordingMediaLibrary::openHandles() const {
  Lock lock(m_mutex);
  std::vector<unsigned long> handles;
  for (const auto& [handle, player] : m_players) {
    if (player->open) handles.push_back(handle);
  }
  return handles;
}

void RecordingMediaLibrary::fire(unsigned long handle, const std::string& word) {
  Lock lock(m_mutex);
  const auto player = findOpenLocked(handle);
  if (player) enqueueWordsLocked(*player, {word});
}

bool RecordingMediaLibrary::fireAndWait(unsigned long handle, const std::string& word, std::chrono::milliseconds deadline) {
  auto delivery = std::make_shared<Delivery>();
  delivery->word = word;
  return enqueueAndWait(handle, std::move(delivery), deadline);
}

bool RecordingMediaLibrary::fireTextTrackAndWait(unsigned long handle, _TextTrackEventType type, void* data,
                                                 std::chrono::milliseconds deadline) {
  auto delivery = std::make_shared<Delivery>();
  delivery->isTextTrack = true;
  delivery->trackType = type;
  delivery->trackData = data;
  return enqueueAndWait(handle, std::move(delivery), deadline);
}

bool RecordingMediaLibrary::fireSettingsAndWait(unsigned long handle, const _SubtitleSettingsParams& params,
                                                std::chrono::milliseconds deadline) {
  auto delivery = std::make_shared<Delivery>();
  delivery->settings = params;
  return enqueueAndWait(handle, std::move(delivery), deadline);
}

bool RecordingMediaLibrary::invoke(unsigned long handle, const std::string& word) {
  Lock lock(m_mutex);
  const auto player = findLocked(handle);
  if (!player || player->message == nullptr) return false;
  const auto callback = player->message;
  lock.unlock();
  callback(handle, word.c_str(), nullptr);
  return true;
}

bool RecordingMediaLibrary::invokeTextTrack(unsigned long handle, _TextTrackEventType type, void* data) {
  Lock lock(m_mutex);
  const auto player = findLocked(handle);
  if (!player || player->textTrack == nullptr) return false;
  const auto callback = player->textTrack;
  lock.unlock();
  callback(handle, type, data);
  return true;
}

bool RecordingMediaLibrary::invokeSettings(unsigned long handle, const _SubtitleSettingsParams& params) {
  Lock lock(m_mutex);
  const auto player = findLocked(handle);
  if (!player || player->settings == nullptr) return false;
  const auto callback = player->settings;
  lock.unlock();
  callback(handle, params);
  return true;
}

bool RecordingMediaLibrary::waitIdle(std::chrono::milliseconds deadline) {
  Lock lock(m_mutex);
  return m_changed.wait_for(lock, deadline, [this] {
    return std::none_of(m_players.begin(), m_players.end(),
                        [](const auto& entry) { return entry.second->delivering || !entry.second->queue.empty(); });
  });
}

std::thread::id RecordingMediaLibrary::dispatcherThread(unsigned long handle) const {
  Lock lock(m_mutex);
  const auto player = findLocked(handle);
  return player ? player->dispatcherId : std::thread::id();
}

unsigned long RecordingMediaLibrary::openPlayer(int kind) {
  Call call = makeCall(Function::kOpenPlayer, 0);
  call.number = kind;
  record(std::move(call));
  joinFinishedDispatchers();
  Lock lock(m_mutex);
  if (m_failOpens > 0) {
    --m_failOpens;
    return 0;
  }
  auto player = std::make_shared<PlayerRecord>();
  player->handle = m_nextHandle++;
  m_lastHandle = player->handle;
  m_players[player->handle] = player;
  return player->handle;
}

int RecordingMediaLibrary::closePlayer(unsigned long handle) {
  record(makeCall(Function::kClosePlayer, handle));
  Lock lock(m_mutex);
  const auto player = findOpenLocked(handle);
  if (!player) return 0;
  player->open = false;
  player->ending = true;
  for (auto& delivery : player->queue) delivery->done = true;
  player->queue.clear();
  m_changed.notify_all();
  return 1;
}

int RecordingMediaLibrary::cmdPlayer(unsigned long handle, const char* command, const char* argument) {
  Call call = makeCall(Function::kCmdPlayer, handle);
  call.name = copied(command).value_or("");
  call.argument = copied(argument);
  const std::string name = call.name;
  const std::string text = call.argument.value_or("");
  record(std::move(call));
  Lock lock(m_mutex);
  const auto player = findOpenLocked(handle);
  if (!player) return 0;
  const int result = resultLocked(m_commandResults, name);
  if (m_autoAnswer && result != 0) answerCommandLocked(*player, name, text);
  return result;
}

int RecordingMediaLibrary::getPlayerProperty(unsigned long handle, const char* key, char* buffer, int size) {
  Call call = makeCall(Function::kGetPlayerProperty, handle);
  call.name = copied(key).value_or("");
  call.number = size;
  const std::string name = call.name;
  record(std::move(call));
  Lock lock(m_mutex);
  const auto value = valueLocked(handle, name);
  if (!value || buffer == nullptr || size <= 0) return 0;
  const std::size_t length = std::min(value->size(), static_cast<std::size_t>(size - 1));
  std::memcpy(buffer, value->data(), length);
  buffer[length] = '\0';
  return 1;
}

int RecordingMediaLibrary::setPlayerProperty(unsigned long handle, const char* key, const char* value) {
  Call call = makeCall(Function::kSetPlayerProperty, handle);
  call.name = copied(key).value_or("");
  call.argument = copied(value);
  const std::string name = call.name;
  record(std::move(call));
  Lock lock(m_mutex);
  const auto player = findOpenLocked(handle);
  if (!player) return 0;
  const int result = resultLocked(m_writeResults, name);
  const bool answers = m_autoAnswer && result != 0 && name == mediamgmnt::property::kInput;
  if (answers) enqueueWordsLocked(*player, {mediamgmnt::status::kReadyToPlay, mediamgmnt::status::kConnected});
  return result;
}

int RecordingMediaLibrary::registerMessage(unsigned long handle, MediaMessageCallback callback) {
  return registerWith(Function::kRegisterCallback, handle, reinterpret_cast<const void*>(callback),
                      [callback](PlayerRecord& player) { player.message = callback; });
}

int RecordingMediaLibrary::registerTextTrack(unsigned long handle, MediaTextTrackCallback callback) {
  return registerWith(Function::kRegisterTextTrackCallback, handle, reinterpret_cast<const void*>(callback),
                      [callback](PlayerRecord& player) { player.textTrack = callback; });
}

int RecordingMediaLibrary::registerSettings(unsigned long handle, MediaSubtitleSettingsCallback callback) {
  return registerWith(Function::kRegisterSubtitleSettingsChangedCallback, handle, reinterpret_cast<const void*>(callback),
                      [callback](PlayerRecord& player) { player.settings = callback; });
}

int RecordingMediaLibrary::getOobPlayerPosition(unsigned long handle, int* position) {
  record(makeCall(Function::kGetOobPlayerPosition, handle));
  Lock lock(m_mutex);
  if (!findOpenLocked(handle) || !m_oobPosition || position == nullptr) return 0;
  *position = *m_oobPosition;
  return m_oobResult;
}

int RecordingMediaLibrary::selectDefaultAvComponent(AVComponentType type) {
  Call call = makeCall(Function::kSelectDefaultAvComponent, 0);
  call.number = type;
  record(std::move(call));
  return 1;
}

void RecordingMediaLibrary::record(Call call) {
  std::vector<std::shared_ptr<const HookEntry>> hooks;
  {
    Lock lock(m_mutex);
    call.sequence = ++m_sequence;
    m_calls.push_back(call);
    hooks = m_hooks;
    m_changed.notify_all();
  }
  for (const auto& entry : hooks) {
    if (entry->matcher(call)) entry->hook(call);
  }
}

int RecordingMediaLibrary::registerWith(Function function, unsigned long handle, const void* callback,
                                        const std::function<void(PlayerRecord&)>& store) {
  Call call = makeCall(function, handle);
  call.callback = callback;
  record(std::move(call));
  Lock lock(m_mutex);
  const auto player = findOpenLocked(handle);
  if (!player) return 0;
  store(*player);
  return 1;
}

std::shared_ptr<RecordingMediaLibrary::PlayerRecord> RecordingMediaLibrary::findLocked(unsigned long handle) const {
  const auto found = m_players.find(handle);
  return found == m_players.end() ? nullptr : found->second;
}

std::shared_ptr<RecordingMediaLibrary::PlayerRecord> RecordingMediaLibrary::findOpenLocked(unsigned long handle) const {
  auto player = findLocked(handle);
  return player && player->open ? player : nullptr;
}

std::optional<std::string> RecordingMediaLibrary::valueLocked(unsigned long handle, const std::string& key) const {
  const auto player = findOpenLocked(handle);
  if (!player) return std::nullopt;
  const auto own = player->properties.find(key);
  if (own != player->properties.end()) return own->second;
  const auto common = m_properties.find(key);
  return common == m_properties.end() ? std::nullopt : std::optional(common->second);
}

int RecordingMediaLibrary::resultLocked(const std::map<std::string, int>& results, const std::string& name) const {
  const auto found = results.find(name);
  return found == results.end() ? 1 : found->second;
}

void RecordingMediaLibrary::answerCommandLocked(PlayerRecord& player, const std::string& command, const std::string& argument) {
  namespace command_word = mediamgmnt::command;
  namespace status = mediamgmnt::status;
  namespace property = mediamgmnt::property;
  if (command == command_word::kPlay) {
    player.playing = true;
    player.properties[property::kPlaySpeed] = argument;
    enqueueWordsLocked(player, {status::kBufferReady, status::kPlaying, status::kPlaySpeedChanged});
  } else if (command == command_word::kPause) {
    player.playing = false;
    player.properties[property::kPlaySpeed] = "0.00";
    enqueueWordsLocked(player, {status::kPaused, status::kPlaySpeedChanged});
  } else if (command == command_word::kStop) {
    player.playing = false;
    player.properties[property::kPlaySpeed] = "0.00";
    player.properties[property::kPosition] = "0.00";
    enqueueWordsLocked(player, {status::kStopped, status::kPlayPositionChanged});
  } else if (command == command_word::kSeek) {
    answerSeekLocked(player, argument);
  }
}

void RecordingMediaLibrary::answerSeekLocked(PlayerRecord& player, const std::string& position) {
  namespace status = mediamgmnt::status;
  player.properties[mediamgmnt::property::kPosition] = position;
  if (!player.playing) return enqueueWordsLocked(player, {status::kPlayPositionChanged});
  enqueueWordsLocked(player, {status::kBuffering, status::kBufferReady, status::kPlayPositionChanged, status::kPlaying});
}

void RecordingMediaLibrary::enqueueWordsLocked(PlayerRecord& player, const std::vector<std::string>& words) {
  for (const auto& word : words) {
    auto delivery = std::make_shared<Delivery>();
    delivery->word = word;
    enqueueLocked(player, std::move(delivery));
  }
}

void RecordingMediaLibrary::enqueueLocked(PlayerRecord& player, std::shared_ptr<Delivery> delivery) {
  player.queue.push_back(std::move(delivery));
  if (!player.dispatcher.joinable()) {
    player.dispatcher = std::thread([this, record = findLocked(player.handle)] { dispatch(record); });
    player.dispatcherId = player.dispatcher.get_id();
  }
  m_changed.notify_all();
}

bool RecordingMediaLibrary::enqueueAndWait(unsigned long handle, std::shared_ptr<Delivery> delivery,
                                           std::chrono::milliseconds deadline) {
  Lock lock(m_mutex);
  const auto player = findOpenLocked(handle);
  if (!player) return false;
  enqueueLocked(*player, delivery);
  m_changed.wait_for(lock, deadline, [&] { return delivery->done; });
  return delivery->delivered;
}

void RecordingMediaLibrary::dispatch(const std::shared_ptr<PlayerRecord>& player) {
  Lock lock(m_mutex);
  while (true) {
    m_changed.wait(lock, [&] { return player->ending || !player->queue.empty(); });
    if (player->queue.empty()) break;
    const auto delivery = player->queue.front();
    player->queue.pop_front();
    player->delivering = true;
    const auto message = player->message;
    const auto textTrack = player->textTrack;
    const auto settings = player->settings;
    lock.unlock();
    bool delivered = true;
    if (delivery->settings) {
      delivered = settings != nullptr;
      if (delivered) settings(player->handle, *delivery->settings);
    } else if (delivery->isTextTrack) {
      delivered = textTrack != nullptr;
      if (delivered) textTrack(player->handle, delivery->trackType, delivery->trackData);
    } else {
      delivered = message != nullptr;
      if (delivered) message(player->handle, delivery->word.c_str(), nullptr);
    }
    lock.lock();
    player->delivering = false;
    delivery->delivered = delivered;
    delivery->done = true;
    m_changed.notify_all();
  }
  player->ended = true;
}

void RecordingMediaLibrary::joinFinishedDispatchers() {
  std::vector<std::thread> finished;
  {
    Lock lock(m_mutex);
    for (auto& [handle, player] : m_players) {
      if (player->ended && player->dispatcher.joinable()) finished.push_back(std::move(player->dispatcher));
    }
  }
  for (auto& dispatcher : finished) dispatcher.join();
}

}  // namespace fakes

using fakes::RecordingMediaLibrary;

unsigned long openPlayer(int kind) { return RecordingMediaLibrary::instance().openPlayer(kind); }

int closePlayer(unsigned long handle) { return RecordingMediaLibrary::instance().closePlayer(handle); }

int cmdPlayer(unsigned long handle, const char* command, const char* argument) {
  return RecordingMediaLibrary::instance().cmdPlayer(handle, command, argument);
}

int getPlayerProperty(unsigned long handle, const char* key, char* buffer, int size) {
  return RecordingMediaLibrary::instance().getPlayerProperty(handle, key, buffer, size);
}

int setPlayerProperty(unsigned long handle, const char* key, const char* value) {
  return RecordingMediaLibrary::instance().setPlayerProperty(handle, key, value);
}

int registerCallback(unsigned long handle, MediaMessageCallback callback) {
  return RecordingMediaLibrary::instance().registerMessage(handle, callback);
}

int registerTextTrackCallback(unsigned long handle, MediaTextTrackCallback callback) {
  return RecordingMediaLibrary::instance().registerTextTrack(handle, callback);
}

int registerSubtitleSettingsChangedCallback(unsigned long handle, MediaSubtitleSettingsCallback callback) {
  return RecordingMediaLibrary::instance().registerSettings(handle, callback);
}

int getOOBPlayerPosition(unsigned long handle, int* position) {
  return RecordingMediaLibrary::instance().getOobPlayerPosition(handle, position);
}

int hbbSelectDefaultAVComponent(AVComponentType type) { return RecordingMediaLibrary::instance().selectDefaultAvComponent(type); }
