// SPDX-License-Identifier: Apache-2.0
// The states with media in hand: playing, paused, buffering.
#include "plugin/av_control_plugin.h"
#include "statemachine/play_states.h"

// --- playing

void AVControlPlayingState::onPlay(double speed) {
  if (speed != 0.0) {
    if (!m_plugin->startPlayer(speed)) enterError();
    return;
  }
  if (!m_plugin->setPlayPositionFromPlayer() || !m_plugin->pausePlayer()) enterError();
}

bool AVControlPlayingState::onSeek(double position) { return m_plugin->seekPlayer(position); }

void AVControlPlayingState::onBufferUnderrun() {
  m_plugin->setSpeedProperty(0.0);
  transitTo(AVControlBufferingState::id());
}

void AVControlPlayingState::onError() { transitTo(AVControlErrorState::id()); }

void AVControlPlayingState::onRewindToStart() { transitTo(AVControlPausedState::id()); }

void AVControlPlayingState::onReachedEnd() { transitTo(AVControlFinishedState::id()); }

void AVControlPlayingState::toPausedState() { transitTo(AVControlPausedState::id()); }

bool AVControlPlayingState::onGetCurrentPosition(double* out) { return refreshedPosition(out); }

// --- paused

/// The state changes when the library says that it plays.
void AVControlPausedState::onPlay(double speed) {
  if (speed == 0.0 || !m_connected) return;
  if (m_plugin->startPlayer(speed)) {
    m_plugin->resizePlayer();
  } else {
    enterError();
  }
}

bool AVControlPausedState::onSeek(double position) { return m_plugin->seekPlayer(position); }

void AVControlPausedState::onAlreadyPlaying() { transitTo(AVControlPlayingState::id()); }

void AVControlPausedState::onBufferReady() { setBuffered(true); }

void AVControlPausedState::onBufferUnderrun() { setBuffered(false); }

void AVControlPausedState::onConnectionEstablished() { setConnected(true); }

void AVControlPausedState::onConnectionLost() { setConnected(false); }

// --- buffering

void AVControlBufferingState::onPlay(double speed) {
  const bool accepted = speed != 0.0 ? m_plugin->startPlayer(speed) : m_plugin->pausePlayer();
  if (!accepted) enterError();
}

bool AVControlBufferingState::onSeek(double position) { return m_plugin->seekPlayer(position); }

/// While a seek is pending, the library's words are still about the place before it.
void AVControlBufferingState::onAlreadyPlaying() {
  if (!m_plugin->isSeeking()) onBufferReady();
}

void AVControlBufferingState::onBufferReady() {
  m_plugin->restoreSpeedSetByPlay();
  transitTo(AVControlPlayingState::id());
}

void AVControlBufferingState::onConnectionLost() { transitTo(AVControlConnectingState::id()); }

void AVControlBufferingState::onError() { transitTo(AVControlErrorState::id()); }

void AVControlBufferingState::toPausedState() {
  if (!m_plugin->isSeeking()) transitTo(AVControlPausedState::id());
}
