// SPDX-License-Identifier: Apache-2.0
// A media library for tests: implements the ten functions of host/mediamgmnt.h, remembers every call, answers what the test told it
// to answer, and calls back from threads of its own (or from a thread that the test chooses).
//
// It keeps the promises of a real one: handles are never 0 and never reused; no callback runs on the calling thread from inside
// one of the functions; callbacks of one handle are serial and in order, made with no lock held; closePlayer waits for nothing and
// no callback of that handle starts afterwards; calls with a closed or unknown handle answer 0.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "host/mediamgmnt.h"

namespace fakes {

enum class Function {
  kOpenPlayer,
  kClosePlayer,
  kCmdPlayer,
  kGetPlayerProperty,
  kSetPlayerProperty,
  kRegisterCallback,
  kRegisterTextTrackCallback,
  kRegisterSubtitleSettingsChangedCallback,
  kGetOobPlayerPosition,
  kSelectDefaultAvComponent,
};

/// One call of the plugin, with its own copies of the texts.
struct Call {
  std::uint64_t sequence = 0;  ///< 1 for the first call of the process; grows over all handles, also across reset()
  Function function = Function::kOpenPlayer;
  unsigned long handle = 0;
  std::string name;                     ///< command or key; empty for the other functions
  std::optional<std::string> argument;  ///< command argument or written value; nullopt when a null pointer came
  int number = 0;                       ///< openPlayer: kind; getPlayerProperty: buffer size; default component: type
  std::thread::id thread;
  const void* callback = nullptr;  ///< what a register function was given
};

/// "cmdPlayer(3, PLAY, 1.00)", for messages and for comparing sequences.
std::string describe(const Call& call);

using CallMatcher = std::function<bool(const Call&)>;
/// Runs inside the matching call, on the caller's thread, after it was recorded and with no lock held: it may block, fire
/// callbacks, call the library again, or throw (the exception leaves the library function).
using Hook = std::function<void(const Call&)>;

/// Matchers. Without an argument text any argument matches.
CallMatcher isFunction(Function function);
CallMatcher isCommand(std::string command);
CallMatcher isCommand(std::string command, std::string argument);
CallMatcher isWrite(std::string key);
CallMatcher isWrite(std::string key, std::string value);
CallMatcher isRead(std::string key);
CallMatcher ofHandle(unsigned long handle, CallMatcher matcher);

inline constexpr std::chrono::milliseconds kDeadline{10000};

/// Thread: any, for every member. One instance per process.
class RecordingMediaLibrary {
 public:
  static RecordingMediaLibrary& instance();
  RecordingMediaLibrary(const RecordingMediaLibrary&) = delete;
  RecordingMediaLibrary& operator=(const RecordingMediaLibrary&) = delete;

  /// Back to the first state, but for the handle and sequence counters. Queued callbacks are dropped; waits for the callback that
  /// is running and for all callback threads. Not from a callback or a hook.
  void reset();

  // Answers. Without any: openPlayer succeeds, commands and writes answer 1, reads answer 0.
  /// The next @p count calls of openPlayer answer 0.
  void failOpens(int count);
  /// The answer of getPlayerProperty for every handle; nullopt makes the read fail again.
  void setProperty(const std::string& key, std::optional<std::string> value);
  /// The answer for one handle; it goes before the one for all.
  void setProperty(unsigned long handle, const std::string& key, std::optional<std::string> value);
  void setCommandResult(const std::string& command, int result);
  void setWriteResult(const std::string& key, int result);
  /// getOOBPlayerPosition writes @p position and answers @p result; nullopt: it writes nothing and answers 0.
  void setOobPosition(std::optional<int> position, int result = 1);
  void addHook(CallMatcher matcher, Hook hook);
  void clearHooks();
  /// On: answers by itself, in the order that applications rely on. INPUT: READY_TO_PLAY, CONNECTED. PLAY: BUFFER_READY, PLAYING,
  /// PLAY_SPEED_CHANGED. PAUSE: PAUSED, PLAY_SPEED_CHANGED. STOP: STOPPED, PLAY_POSITION_CHANGED. SEEK while playing: BUFFERING,
  /// BUFFER_READY, PLAY_POSITION_CHANGED, PLAYING; else PLAY_POSITION_CHANGED. PLAY_SPEED and POSITION follow. Refused commands and
  /// writes (result 0) are not answered.
  void setAutoAnswer(bool on);

  // What was called.
  std::vector<Call> calls() const;
  std::vector<Call> calls(const CallMatcher& matcher) const;
  std::size_t count(const CallMatcher& matcher) const;
  /// Commands and writes only, as describe() words without the handle: "PLAY 1.00", "INPUT=http://…"; a null value is "KEY=(null)".
  std::vector<std::string> actions() const;
  void clearCalls();
  /// The first recorded call that matches, waiting for it until the deadline; nullopt when none came.
  std::optional<Call> waitForCall(const CallMatcher& matcher, std::chrono::milliseconds deadline = kDeadline);
  /// Waits until at least @p wanted recorded calls match.
  bool waitForCount(const CallMatcher& matcher, std::size_t wanted, std::chrono::milliseconds deadline = kDeadline);
  /// The handle of the latest successful openPlayer, 0 before any.
  unsigned long lastHandle() const;
  std::vector<unsigned long> openHandles() const;

  // Callbacks. Each handle has its own dispatcher thread, started when first needed.
  /// Queues a status word. Dropped when the handle is closed or has no callback by then.
  void fire(unsigned long handle, const std::string& word);
  /// Queues it and waits until the callback has returned. @return false when it was dropped, or at the deadline.
  /// Not from that handle's own dispatcher thread.
  bool fireAndWait(unsigned long handle, const std::string& word, std::chrono::milliseconds deadline = kDeadline);
  bool fireTextTrackAndWait(unsigned long handle, _TextTrackEventType type, void* data,
                            std::chrono::milliseconds deadline = kDeadline);
  bool fireSettingsAndWait(unsigned long handle, const _SubtitleSettingsParams& params,
                           std::chrono::milliseconds deadline = kDeadline);
  /// Calls the message callback on the calling thread at once, also when the handle is closed: the late callback that a library
  /// had started before closePlayer. @return false when none was ever registered.
  bool invoke(unsigned long handle, const std::string& word);
  /// The same for the two other callbacks.
  bool invokeTextTrack(unsigned long handle, _TextTrackEventType type, void* data);
  bool invokeSettings(unsigned long handle, const _SubtitleSettingsParams& params);
  /// Waits until no callback is queued or running for any handle.
  bool waitIdle(std::chrono::milliseconds deadline = kDeadline);
  /// The id of that handle's dispatcher thread; the default id when it has none yet.
  std::thread::id dispatcherThread(unsigned long handle) const;

  // The ten functions land here.
  unsigned long openPlayer(int kind);
  int closePlayer(unsigned long handle);
  int cmdPlayer(unsigned long handle, const char* command, const char* argument);
  int getPlayerProperty(unsigned long handle, const char* key, char* buffer, int size);
  int setPlayerProperty(unsigned long handle, const char* key, const char* value);
  int registerMessage(unsigned long handle, MediaMessageCallback callback);
  int registerTextTrack(unsigned long handle, MediaTextTrackCallback callback);
  int registerSettings(unsigned long handle, MediaSubtitleSettingsCallback callback);
  int getOobPlayerPosition(unsigned long handle, int* position);
  int selectDefaultAvComponent(AVComponentType type);

 private:
  struct Delivery;
  struct PlayerRecord;
  struct HookEntry {
    CallMatcher matcher;
    Hook hook;
  };
  using Lock = std::unique_lock<std::mutex>;

  RecordingMediaLibrary() = default;
  ~RecordingMediaLibrary() = default;

  void record(Call call);
  int registerWith(Function function, unsigned long handle, const void* callback, const std::function<void(PlayerRecord&)>& store);
  std::shared_ptr<PlayerRecord> findLocked(unsigned long handle) const;
  std::shared_ptr<PlayerRecord> findOpenLocked(unsigned long handle) const;
  std::optional<std::string> valueLocked(unsigned long handle, const std::string& key) const;
  int resultLocked(const std::map<std::string, int>& results, const std::string& name) const;
  void answerCommandLocked(PlayerRecord& player, const std::string& command, const std::string& argument);
  void answerSeekLocked(PlayerRecord& player, const std::string& position);
  void enqueueWordsLocked(PlayerRecord& player, const std::vector<std::string>& words);
  void enqueueLocked(PlayerRecord& player, std::shared_ptr<Delivery> delivery);
  bool enqueueAndWait(unsigned long handle, std::shared_ptr<Delivery> delivery, std::chrono::milliseconds deadline);
  void dispatch(const std::shared_ptr<PlayerRecord>& player);
  void joinFinishedDispatchers();

  mutable std::mutex m_mutex;
  std::condition_variable m_changed;
  std::vector<Call> m_calls;
  std::uint64_t m_sequence = 0;
  unsigned long m_nextHandle = 1001;
  unsigned long m_lastHandle = 0;
  std::map<unsigned long, std::shared_ptr<PlayerRecord>> m_players;
  std::map<std::string, std::string> m_properties;
  std::map<std::string, int> m_commandResults;
  std::map<std::string, int> m_writeResults;
  std::vector<std::shared_ptr<const HookEntry>> m_hooks;
  std::optional<int> m_oobPosition;
  int m_oobResult = 1;
  int m_failOpens = 0;
  bool m_autoAnswer = false;
};

}  // namespace fakes
