// SPDX-License-Identifier: Apache-2.0
// What script's playback calls and properties do.
#include <string_view>

#include "plugin/av_control_plugin.h"
#include "statemachine/play_states.h"

namespace {

constexpr int kVolumeBound = 102;  ///< one past the highest volume that is accepted; deliberate
constexpr int kPlaneWidth = 1280;
constexpr int kPlaneHeight = 720;
constexpr int kSmallestWindowWidth = 150;
constexpr int kSmallestWindowHeight = 80;

}  // namespace

bool AVControlPlugin::JS_Play(double speed) {
  if (speed == 0.0 && m_stateMachine.isCurrentState(AVControlStoppedState::id())) stopActiveAVComp();
  if (std::string_view(m_playerTypeText) == "application/ttml+xml") return playSubtitlesOnly(speed);
  m_speedSetByPlay = speed;
  if (!initializePlayer()) return false;
  resizePlayer();
  if (speed != 0.0) m_stateMachine.TransitToConnecting();
  if (m_connected && speed != 0.0) m_stateMachine.onConnectionEstablished();
  if (!m_readyToPlay && speed != 0.0) {
    m_deferredSpeed = speed;
    m_deferredPlay = true;
    // The library may have become ready since the question; whoever takes the flag back plays.
    if (m_readyToPlay && m_deferredPlay.exchange(false)) m_stateMachine.onPlay(speed);
    return true;
  }
  m_stateMachine.onPlay(speed);
  return true;
}

/// A subtitle-only element plays no media: its state follows the speed at once, past the state machine.
bool AVControlPlugin::playSubtitlesOnly(double speed) {
  const int state = speed > 0.0   ? AVControlPlayingState::id()
                    : speed < 0.0 ? AVControlErrorState::id()
                                  : AVControlPausedState::id();
  setPlayStateProperty(state);
  _CorvelNativeVariant argument;
  cvnplUtil::set(state, argument);
  dispatch("onPlayStateChange", &argument, 1);
  return true;
}

bool AVControlPlugin::JS_Stop() {
  m_stopRequested = true;
  const bool stopped = m_stateMachine.onStop();
  m_stopRequested = false;
  m_deferredPlay = false;
  m_deferredSpeed = 0.0;
  return stopped;
}

bool AVControlPlugin::JS_Seek(double position) {
  double duration = 0.0;
  if (const auto current = player(); current != nullptr) current->getDuration(duration);
  if (position > duration && duration != 0.0) {
    callbackFromMiddleware(mediamgmnt::status::kPlayPositionChanged);  // the page still hears where it is
    return false;
  }
  if (!initializePlayer()) return false;
  m_cachedTime = position;
  if (m_pendingSeek != kNoPendingSeek) {
    m_pendingSeek = position;
    return false;
  }
  const bool wasSeeking = m_seeking.exchange(true);  // before the command: its answer may come at once, and clears the flag
  if (m_stateMachine.onSeek(position)) return true;
  m_seeking = wasSeeking;
  return false;
}

/// Says only whether the volume is one; nothing changes.
bool AVControlPlugin::JS_SetVolume(int volume) { return volume >= 0 && volume < kVolumeBound; }

void AVControlPlugin::JS_Focus() { dispatch("onFocus", nullptr, 0); }

void AVControlPlugin::JS_SetFullScreen(bool on) {
  bool fullScreen = false;
  if (!getProperty("fullScreen", fullScreen) || fullScreen == on) return;
  if (const auto current = player(); current != nullptr) {
    // setCoordinates queues a resize of its own; the second one is deliberate.
    if (on) {
      current->setCoordinates(0, 0, kPlaneWidth, kPlaneHeight);
    } else {
      current->setCoordinates(m_windowX, m_windowY, m_windowWidth, m_windowHeight);
    }
    current->resize();
  }
  setProperty("fullScreen", on);
  dispatch("onFullScreenChange", nullptr, 0);
}

bool AVControlPlugin::setWindowProperties(int x, int y, int width, int height) {
  if (width < kSmallestWindowWidth || height < kSmallestWindowHeight) return true;
  m_windowX = x;
  m_windowY = y;
  m_windowWidth = width;
  m_windowHeight = height;
  if (const auto current = player(); current != nullptr) current->setCoordinates(x, y, width, height);
  return true;
}

bool AVControlPlugin::JS_GetPlayPositionProp(double& position) {
  int state = 0;
  if (!getProperty("playState", state) || !hasPlayer()) return false;
  return m_stateMachine.getCurrentPosition(&position);
}

bool AVControlPlugin::JS_GetPlayTimeProp(double& duration) {
  const auto current = player();
  return current != nullptr && current->getDuration(duration);
}

bool AVControlPlugin::JS_GetSpeedProp(double& speed) {
  const auto current = player();
  if (current == nullptr || !current->getPlaySpeed(speed)) return false;
  setSpeedProperty(speed);
  return true;
}

bool AVControlPlugin::JS_GetErrorProp(int& code) {
  code = m_errorCode;
  return true;
}
