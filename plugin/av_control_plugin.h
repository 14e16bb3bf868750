// SPDX-License-Identifier: Apache-2.0
// The A/V Control object: what one element of a page becomes inside the host. One class by design, cut into files by subject.
#pragma once

#include <pthread.h>

#include <atomic>
#include <map>
#include <memory>
#include <string>

#include "host/corvel_native.h"
#include "host/mediamgmnt.h"
#include "player/player.h"
#include "plugin/renew_threads.h"
#include "statemachine/state_machine.h"
#include "support/av_control_mutex.h"
#include "support/stable_texts.h"

class HbbTVParentalRatingCollectionAVClass;
struct AVAudioComponent;
struct AVParentalRating;
struct AVSubtitleComponent;
struct AVVideoComponent;
namespace hbbtv_avc {
class HbbTVComponentCollectionHolderClass;
}

/// Threads: the script thread (rows, creation, willBeDestroyed), the media library's (the three callbacks), the player's worker
/// (handleDispatchEventFromCb) and the renew thread. Lock order: the_mutex, m_resetMutex, plugin_handler_mutex; the player
/// pointer's, the texts' and the command queue's locks (these two in this order) are leaves: nothing is called out of the plugin
/// with one of them held.
///
/// Lifetime: the host owns it by shared pointer. The registry does not; callbacks pin the object while they run.
class AVControlPlugin : public CorvelNativePluginBase, public std::enable_shared_from_this<AVControlPlugin> {
 public:
  static constexpr int kPluginType = 8;
  static constexpr unsigned int kUrlSize = 2048;  ///< bytes of a URL or MIME type, the NUL included

  // --- Lifecycle and registry (lifecycle.cc, renewal.cc)

  /// Makes, installs and initialises an object. Thread: script.
  static std::shared_ptr<AVControlPlugin> create();
  static AVControlPlugin* cast(CorvelNativePluginBase* object);
  AVControlPlugin();
  ~AVControlPlugin() override;

  int type() override;
  bool install() override;
  unsigned long getNativePlayerHandle() override;
  bool getURLForMediaSynchroniser(char*& out) override;
  bool getPlayerType(char*& out) override;
  int getComponentNum() override;
  bool getComponentInfo(int index, char*& out) override;
  void startOOBSubtitlePlayer(bool start) override;
  int pluginType() override;
  bool setWindowProperties(int x, int y, int width, int height) override;
  void willBeDestroyed() override;
  bool initPlugin() override;
  bool setDocumentUrl(const char* url, unsigned int length) override;

  bool init();
  /// Ends the player and frees what the object owns; once and for good. Its callers take the handle out of the registry first.
  void deinit();
  bool deinitialized() const { return m_deinitialised; }
  /// Opens a player when there is none. @return false when the library has none to give.
  bool initializePlayer();
  /// Ends the player and opens a new one.
  bool resetPlayer();
  /// The object that owns a player handle, or null. Thread: any.
  static AVControlPlugin* getPlugin(unsigned long handle);
  StateMachine& stateMachine() { return m_stateMachine; }
  /// The player, or null between two players; a caller may keep it for the length of its call. Thread: any.
  std::shared_ptr<Player> player();
  /// Whether there is one just now, without taking it: a page may ask with every frame. Thread: any.
  bool hasPlayer() const { return m_hasPlayer; }

  /// Makes the queued media the current source, on a thread of its own. @return true when that thread was started.
  bool setDataPropertyFromQueued();
  static void* renewThread(void* self);
  void runRenewThread();

  // --- Script tables (script_tables.cc and the thunk files)

  static CorvelNativeProperty sm_properties[];
  static const unsigned int sm_prop_length;
  static const CorvelNativeMethod sm_methods[];
  static const unsigned int sm_met_length;
  bool dispatch(const char* event, _CorvelNativeVariant* args, unsigned int argc);

  // --- Media source attributes (source_attributes.cc, data_source.cc). Texts are pointer and byte length. True: accepted.

  bool JS_SetDataProp(const char* url, unsigned int length);
  bool JS_SetTypeParam(const char* text, unsigned int length);
  bool JS_SetWidthParam(const char* text, unsigned int length);
  bool JS_SetHeightParam(const char* text, unsigned int length);
  bool JS_SetCacheParam(const char* text, unsigned int length);
  bool JS_SetLoopParam(const char* text, unsigned int length);
  bool JS_SetSubtitleParam(const char* text, unsigned int length);
  bool JS_SetNumOfSubtitle(int count);
  bool JS_PlayerType(const char* text, unsigned int length);
  bool JS_SetUserAgent(const char* text, unsigned int length);
  bool JS_SetNativeWindowSize(const char* text, unsigned int length);
  bool JS_Queue(const char* text, unsigned int length);
  bool setCacheParam();
  void queueUrl(const char* text, unsigned int length);
  bool alreadyHasQueuedMedia();
  bool setDataProperty(const char* text, unsigned int length);
  bool setInput();
  bool forceFormat();
  bool dataChanged(const char* url, unsigned int length);

  // --- Playback (playback.cc, player_operations.cc). Positions are milliseconds.

  bool JS_Play(double speed);
  bool JS_Stop();
  bool JS_Seek(double position);
  bool JS_SetVolume(int volume);
  void JS_Focus();
  void JS_SetFullScreen(bool on);
  bool JS_GetPlayPositionProp(double& position);
  bool JS_GetPlayTimeProp(double& duration);
  bool JS_GetSpeedProp(double& speed);
  bool JS_GetErrorProp(int& code);
  bool JS_GetTtmlXmlPlayPositionProp(int& position);
  bool getCachedTime(double* out);
  bool refreshCachedTime();
  void resetCachedTime();
  bool startPlayer(double speed);
  bool pausePlayer();
  bool seekPlayer(double position);
  bool resizePlayer();
  bool stopPlayer();
  bool isSeeking() const { return m_seeking; }
  bool setPlayStateProperty(int state);
  bool setSpeedProperty(double speed);
  void setErrorProperty(int code);
  bool setPlayPositionFromPlayer();
  int getPlayState();
  bool getSpeedProperty(double& speed);
  void restoreSpeedSetByPlay();

  // --- Media-library callbacks and script events (events/)

  static void msgReceivedWrapper(unsigned long handle, char const* message, void* user);
  void callbackFromMiddleware(char const* message);
  void handleDispatchEventFromCb(char const* message);
  static void subtitleReceivedWrapper(unsigned long handle, _TextTrackEventType type, void* data);
  void handleTextTrackCallback(_TextTrackEventType type, void* data);
  static void subtitleSettingsChanged(unsigned long handle, _SubtitleSettingsParams params);
  void handleSubtitleSettingsChanged(_SubtitleSettingsParams params);

  // --- Components (components/)

  std::shared_ptr<CorvelNativePropertyBase> JS_GetAllComponents();
  std::shared_ptr<CorvelNativePropertyBase> JS_GetComponents(int type);
  std::shared_ptr<CorvelNativePropertyBase> JS_GetCurrentActiveComponents(int type);
  void JS_SelectComponent(CorvelNativePropertyBase* object);
  void JS_UnselectComponent(CorvelNativePropertyBase* object);
  void JS_SelectDefaultComponent(int type);
  void JS_UnselectDefaultComponent(int type);
  bool getAudioComponentLength(bool active, int& out);
  bool getVideoComponentLength(bool active, int& out);
  bool getSubtitleComponentLength(bool active, int& out);
  bool getAudioComponentItem(bool active, int index, AVAudioComponent*& out);
  bool getVideoComponentItem(bool active, int index, AVVideoComponent*& out);
  bool getSubtitleComponentItem(bool active, int index, AVSubtitleComponent*& out);
  void selectDefaultAVcomponent();
  void stopActiveAVComp();

  // --- Parental ratings (parental/)

  int getParentalRatingCollectionLenght();
  bool getParentalRatingItem(int index, AVParentalRating*& out);

  static AVControlMutex the_mutex;             ///< creation against destruction of all objects, and most status words
  static AVControlMutex plugin_handler_mutex;  ///< every access to the registry
  static std::map<unsigned long, AVControlPlugin*> m_mmlib_player_map;
  static RenewThreads sm_renewThreads;  ///< made last: at unload it goes, and waits, before what those threads use

 private:
  static constexpr int kSubtitleParamCount = 10;
  static constexpr unsigned int kSubtitleParamSize = 1024;
  static constexpr unsigned int kSizeTextSize = 19;
  static constexpr double kNoPendingSeek = -1.0;
  using ComponentIndexMap = std::map<std::string, int>;

  /// The registry's object, kept alive; null when it is gone or going.
  static std::shared_ptr<AVControlPlugin> pinPlugin(unsigned long handle);
  bool initializePlayerLocked();
  bool registerHandle(unsigned long handle);
  bool unregisterHandle();
  void resetPlayerState();
  void closePlayerLocked();
  void setPlayer(std::shared_ptr<Player> player);
  void renewPlayer();
  bool setSource(const char* url, unsigned int length);
  bool setRelativeSource(const char* url, unsigned int length);
  bool applySizeText(char* buffer, int& value, const char* text, unsigned int length);
  bool playSubtitlesOnly(double speed);
  void announceReadyToPlay();
  void announceSelectedComponent(int type);
  void completeRequestedStop();
  void dispatchDrmRightsError();
  void dispatchParentalRatingChange();
  void dispatchParentalRatingError();
  void dispatchOutOfBandSelection(AVSubtitleComponent* component);
  void selectObject(CorvelNativePropertyBase* object, bool select);
  void selectDefault(int type, bool select);
  std::shared_ptr<CorvelNativePropertyBase> ratingCollection();

  StateMachine m_stateMachine;
  pthread_t m_renewThread = 0;       ///< the last one started; nobody joins it
  std::shared_ptr<Player> m_player;  ///< under m_playerMutex
  // Flags that threads share; each says one thing and none is read together with another.
  std::atomic<bool> m_stopRequested{false};
  std::atomic<bool> m_hasPlayer{false};
  std::atomic<bool> m_renewing{false};
  std::atomic<bool> m_readyToPlay{false};
  std::atomic<bool> m_deferredPlay{false};
  std::atomic<double> m_deferredSpeed{0.0};
  char m_dataUrl[kUrlSize] = "";    ///< current source; under m_textMutex
  char m_queuedUrl[kUrlSize] = "";  ///< next source; under m_textMutex
  char m_documentBaseUrl[kUrlSize] = "";
  char m_widthText[kSizeTextSize] = "";
  char m_heightText[kSizeTextSize] = "";
  char m_typeText[kUrlSize] = "";  ///< under m_textMutex: a renewal reads it
  char m_loopText[kUrlSize] = "";
  char m_playerTypeText[258] = "";
  int m_width = 0;
  int m_height = 0;
  std::atomic<unsigned long> m_handle{0};
  hbbtv_avc::HbbTVComponentCollectionHolderClass* m_componentHolder = nullptr;  ///< owned
  std::shared_ptr<HbbTVParentalRatingCollectionAVClass> m_parentalRatings;      ///< under m_playerMutex: the worker copies it
  char* m_loopCopy = nullptr;                                                   ///< owned, as the next two: malloc
  std::atomic<double> m_speedSetByPlay{0.0};
  std::atomic<bool> m_deinitialised{false};
  std::atomic<bool> m_ending{false};  ///< no handle enters the registry any more
  ComponentIndexMap m_audioIndex;     ///< these three: script thread only
  ComponentIndexMap m_videoIndex;
  ComponentIndexMap m_subtitleIndex;
  std::atomic<int> m_errorCode{-1};
  char* m_userAgent = nullptr;         ///< under m_textMutex
  char* m_nativeWindowSize = nullptr;  ///< under m_textMutex
  int m_numOfSubtitles = 0;
  char m_subtitleParams[kSubtitleParamCount][kSubtitleParamSize] = {};
  int m_subtitleParamIndex = -1;  ///< nothing is recorded before a positive "numOfSubtitles"
  std::atomic<double> m_cachedTime{0.0};
  std::atomic<double> m_pendingSeek{kNoPendingSeek};
  std::atomic<bool> m_seeking{false};
  std::atomic<bool> m_connected{false};
  int m_windowX = 0;
  int m_windowY = 0;
  int m_windowWidth = 0;
  int m_windowHeight = 0;
  AVControlMutex m_resetMutex{"player_reset"};
  AVControlMutex m_playerMutex{"player_pointer"};
  AVControlMutex m_textMutex{"source_texts"};
  StableTexts m_playerTexts;  ///< what queued commands borrow
  StableTexts m_dataTexts;    ///< what the script property "data" is bound to
};
