// SPDX-License-Identifier: Apache-2.0
// One media-library player: carries playback commands, in order, from any thread to a worker thread, and asks the library directly.
#pragma once

#include <pthread.h>
#include <semaphore.h>

#include <atomic>
#include <list>
#include <memory>

#include "support/av_control_mutex.h"

class AVControlPlugin;
struct AVAudioComponent;
struct AVDrmRightsError;
struct AVParentalRating;
struct AVParentalRatingChange;
struct AVParentalRatingError;
struct AVSubtitleComponent;
struct AVVideoComponent;

/// One queued command. The codes are fixed, gaps and order included.
struct _player_thread_command {
  int code;
  void* data;  ///< a heap double for kPlay and kSeek, a borrowed text for the setters, else null
};

/// The public commands only queue: they return true when the command was taken, never wait and say nothing about its outcome.
/// Texts handed to them are borrowed until the command has run. Queries ask the media library on the caller's thread.
///
/// Threads: any, save construction and close() (the owner's). Events reach the owner on the worker thread.
class Player {
 public:
  enum CommandCode : int {
    kPlay = 0,
    kStop = 1,
    kPause = 2,
    kSeek = 3,
    kResize = 4,
    kSetInput = 5,
    kSetForcedFormat = 6,
    kSetUserAgent = 7,
    kSetLoopParam = 8,
    kSetCacheParam = 9,
    kDispatchError = 10,
    kDispatchPlayPositionChanged = 11,
    kDispatchPlaySpeedChanged = 12,
    kDispatchDrmRightsError = 13,
    kCancelled = 14,
    kExit = 15,
    kSetNativeWindowSize = 16,
    kDispatchParentalRatingChange = 17,
    kDispatchParentalRatingError = 18,
    kStopBroadcast = 19,
  };

  /// Capacity of the queue; a further command is refused, those in the queue stay.
  static int sm_max_commands;

  /// @p handle comes from openPlayer and is closed here. @p owner may be null: then events are dropped.
  Player(unsigned long handle, AVControlPlugin* owner);
  Player(const Player&) = delete;
  Player& operator=(const Player&) = delete;
  ~Player();

  /// Ends the worker after the commands queued so far, then stops and closes the library's player on the calling thread.
  /// Later commands are refused. Once done, calling it again does nothing; a caller that comes meanwhile waits for the first.
  void close();

  /// While one lives, commands are taken and not carried out. For a caller that has more to do before the library may answer; it
  /// must not wait for anything meanwhile.
  class Hold {
   public:
    /// @p player may be null.
    explicit Hold(std::shared_ptr<Player> player);
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;
    ~Hold();

   private:
    const std::shared_ptr<Player> m_player;
  };

  // Commands.
  bool play(double speed);
  bool stop();
  bool pause();
  bool seek(double position);  ///< milliseconds
  bool resize();
  bool stopBroadcast();
  bool setInput(const char* url);
  bool setForcedFormat(const char* mimeType);
  bool setUserAgent(const char* text);
  bool setNativeWindowSize(const char* text);
  bool setLoopParam(const char* text);
  bool setCacheParam(const char* text);
  /// @return false for any text but the six status words that need data from the library.
  bool handleDispatchEvent(const char* name);
  /// Stores the window rectangle and queues a resize; ignored when width or height is below 1.
  void setCoordinates(int x, int y, int width, int height);

  // State.
  bool positionChanged(int x, int y, int width, int height) const;
  bool valid() const { return m_valid; }
  bool is_used() const { return m_inputSet; }
  unsigned long getNativePlayerHandle() const { return m_handle; }

  // Queries. False leaves the output alone.
  bool getDuration(double& out);
  bool getPosition(double& out);
  bool getPlaySpeed(double& out);
  bool getLastErrorCode(int& out);

  // Component queries. True with a null record when the library has none at that index.
  bool getAudioComponentLength(bool active, int& out);
  bool getVideoComponentLength(bool active, int& out);
  bool getSubtitleComponentLength(bool active, int& out);
  bool getAudioComponentItem(bool active, int index, AVAudioComponent*& out);
  bool getVideoComponentItem(bool active, int index, AVVideoComponent*& out);
  bool getSubtitleComponentItem(bool active, int index, AVSubtitleComponent*& out);

  // Selection: sent on the caller's thread, past the queue. True when the library accepted.
  bool selectActiveComponentByIndex(int type, int index);
  bool unselectActiveComponentByIndex(int type, int index);
  bool selectDefaultComponent(int type);
  bool unselectDefaultComponent(int type);
  bool selectActiveComponent(AVVideoComponent* component);
  bool selectActiveComponent(AVAudioComponent* component);
  bool selectActiveComponent(AVSubtitleComponent* component);
  bool unselectActiveComponent(AVVideoComponent* component);
  bool unselectActiveComponent(AVAudioComponent* component);
  bool unselectActiveComponent(AVSubtitleComponent* component);

  // Rights and ratings. The records stay the player's, valid until the next call of the same kind; worker thread only.
  AVDrmRightsError* getDrmRightsError();
  AVParentalRatingChange* getParentalRatingChange();
  AVParentalRatingError* getParentalRatingError();
  void freeDrmRightsError();
  void freeParentalRatingChange();
  void freeParentalRatingError();
  int getParentalRatingCollectionLenght();  ///< -1 when the library does not say
  bool getParentalRatingItem(int index, AVParentalRating*& out);

  // Queue primitives.
  bool pushCommand(_player_thread_command& command);
  bool popCommand(_player_thread_command& out);
  /// Cancels what is queued: the records stay as no-ops, so that each posted semaphore unit still finds one.
  void resetCommands();
  static void releaseCmdData(_player_thread_command& command);

 private:
  static void* player_thread(void* self);
  void run();
  void execute(const _player_thread_command& command);
  void endWorker();
  void hold();
  void release();
  void postHeld();
  void postHeldLocked();
  bool pushText(CommandCode code, const char* text);
  bool pushNumber(CommandCode code, double value);
  bool pushPlain(CommandCode code);
  bool setPlayerText(const char* key, const char* value);

  bool playImpl(double speed);
  bool stopImpl();
  bool stopBroadcastImpl();
  bool pauseImpl();
  bool seekImpl(double position);
  bool resizeImpl();
  bool setInputImpl(const char* url);
  bool setForcedFormatImpl(const char* mimeType);
  bool setUserAgentImpl(const char* text);
  bool setNativeWindowSizeImpl(const char* text);
  bool setLoopParamImpl(const char* text);
  bool setCacheParamImpl(const char* text);
  void handleDispatchEventImpl(const char* name);

  const unsigned long m_handle;
  bool m_valid = true;
  // Written by the caller of setCoordinates, read by the worker; a resize is queued after each change.
  std::atomic<int> m_x{0};
  std::atomic<int> m_y{0};
  std::atomic<int> m_width{1280};
  std::atomic<int> m_height{720};
  std::atomic<bool> m_inputSet{false};
  std::atomic<bool> m_stopped{true};  ///< the library is known to be stopped
  AVDrmRightsError* m_drmRightsError = nullptr;
  AVParentalRatingChange* m_parentalRatingChange = nullptr;
  AVParentalRatingError* m_parentalRatingError = nullptr;
  std::atomic<AVControlPlugin*> m_owner;
  std::list<_player_thread_command> m_commands;  ///< newest at the front; under m_commandMutex
  int m_holds = 0;                               ///< under m_commandMutex
  int m_heldPosts = 0;                           ///< commands that the worker has not been told of; under m_commandMutex
  pthread_t m_thread = 0;                        ///< 0: no worker, every command is refused; under m_commandMutex
  AVControlMutex m_commandMutex{"player_cmd_thread"};
  sem_t m_commandSemaphore;
  int m_currentCommand = kCancelled;  ///< worker only
  AVControlMutex m_closeMutex{"player_close"};
  bool m_closed = false;  ///< under m_closeMutex
};
