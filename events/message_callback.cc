// SPDX-License-Identifier: Apache-2.0
// The media library's status words: the filter in front, and what each word does.
#include <cstring>
#include <string_view>

#include "plugin/av_control_plugin.h"
#include "statemachine/play_states.h"
#include "support/av_control_lock.h"

namespace status = mediamgmnt::status;

namespace {

constexpr int kVideo = 0;
constexpr int kAudio = 1;
constexpr int kSubtitle = 2;

/// Sent with "onPlayStateChange" when the library is ready to play. No play state has this number and none is entered: deliberate.
constexpr int kReadyToPlayState = 7;

/// Words that need data from the library go to the player's worker, which reads it and raises the event.
constexpr const char* kWorkerWords[] = {status::kPlaySpeedChanged, status::kDrmRightsError, status::kParentalRatingChange,
                                        status::kParentalRatingError};

}  // namespace

void AVControlPlugin::msgReceivedWrapper(unsigned long handle, char const* message, void* /*user*/) {
  const std::shared_ptr<AVControlPlugin> plugin = pinPlugin(handle);  // before the lock: its last release must not run under it
  if (plugin == nullptr || message == nullptr) return;
  const bool stopped = std::strcmp(message, status::kStopped) == 0;
  // The first "STOPPED" of a renewal is the echo of its own stop.
  if (stopped && plugin->m_renewing.exchange(false)) return;
  if (plugin->m_renewing) return;
  if (plugin->m_stopRequested) {
    // The thread that set the flag is waiting for this word, perhaps with the lock held.
    if (stopped) plugin->callbackFromMiddleware(message);
    return;
  }
  const AVControlLock lock(the_mutex);
  if (getPlugin(handle) != plugin.get()) return;  // its player went while this call waited for the lock
  plugin->callbackFromMiddleware(message);
}

void AVControlPlugin::callbackFromMiddleware(char const* message) {
  if (m_deinitialised || message == nullptr) return;
  const std::string_view word = message;
  const auto current = player();
  const auto toWorker = [&current](const char* name) {
    if (current != nullptr) current->handleDispatchEvent(name);
  };

  if (word == status::kFinished) {
    m_deferredPlay = false;
    m_deferredSpeed = 0.0;
    m_stateMachine.onReachedEnd();
  } else if (word == status::kStopped) {
    completeRequestedStop();
  } else if (word == status::kError) {
    m_seeking = false;
    m_pendingSeek = kNoPendingSeek;
    toWorker(status::kError);
  } else if (word == status::kPlaying) {
    m_stateMachine.onAlreadyPlaying();
  } else if (word == status::kPaused) {
    if (!m_stateMachine.isCurrentState(AVControlPausedState::id())) m_stateMachine.toPausedState();
  } else if (word == status::kBuffering) {
    m_stateMachine.onBufferUnderrun();
  } else if (word == status::kBufferReady) {
    m_stateMachine.onBufferReady();
  } else if (word == status::kPlayPositionChanged) {
    if (m_pendingSeek == kNoPendingSeek) m_seeking = false;
    toWorker(status::kPlayPositionChanged);
  } else if (word == status::kReadyToPlay) {
    announceReadyToPlay();
  } else if (word == status::kConnected) {
    m_connected = true;
    if (m_stateMachine.isCurrentState(AVControlConnectingState::id())) m_stateMachine.onConnectionEstablished();
  } else if (word == status::kSelectedVideoChanged) {
    announceSelectedComponent(kVideo);
  } else if (word == status::kSelectedAudioChanged) {
    announceSelectedComponent(kAudio);
  } else if (word == status::kSelectedSubtitleChanged) {
    announceSelectedComponent(kSubtitle);
  } else {
    for (const char* const name : kWorkerWords) {
      if (word == name) return toWorker(name);
    }
  }
}

void AVControlPlugin::completeRequestedStop() {
  m_deferredPlay = false;
  m_deferredSpeed = 0.0;
  m_seeking = false;
  m_pendingSeek = kNoPendingSeek;
  if (!m_stopRequested) return;
  selectDefaultAVcomponent();
  // The machine first: the waiting thread goes on as soon as the flag is down.
  m_stateMachine.transitTo(AVControlStoppedState::id());
  m_stopRequested = false;
}

void AVControlPlugin::announceReadyToPlay() {
  _CorvelNativeVariant argument;
  cvnplUtil::set(m_handle.load(), argument);
  dispatchEvent("onPlayerHandle", &argument, 1);
  cvnplUtil::set(kReadyToPlayState, argument);
  dispatchEvent("onPlayStateChange", &argument, 1);
  m_readyToPlay = true;
  if (m_deferredPlay.exchange(false)) m_stateMachine.onPlay(m_deferredSpeed);
}

void AVControlPlugin::announceSelectedComponent(int type) {
  _CorvelNativeVariant argument;
  cvnplUtil::set(type, argument);
  dispatchEvent("onSelectedComponentChanged", &argument, 1);
}
