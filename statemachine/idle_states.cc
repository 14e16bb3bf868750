// SPDX-License-Identifier: Apache-2.0
// The states in which nothing plays: stopped, connecting, finished, error.
#include "plugin/av_control_plugin.h"
#include "statemachine/play_states.h"

// --- stopped

void AVControlStoppedState::postTransitAction() { m_plugin->queueUrl(nullptr, 0); }

void AVControlStoppedState::onPlay(double speed) { startFromIdle(speed); }

bool AVControlStoppedState::onStop() { return true; }

bool AVControlStoppedState::onSeek(double position) { return m_plugin->seekPlayer(position); }

/// Queueing while nothing plays starts at once.
bool AVControlStoppedState::onQueue(const char* url, unsigned int length) {
  if (m_plugin->alreadyHasQueuedMedia()) m_plugin->queueUrl(nullptr, 0);
  if (url == nullptr || length == 0) return false;
  m_plugin->setDataProperty(url, length);  // the result does not count here, unlike in finished: deliberate
  double speed = 0.0;
  if (!m_plugin->getSpeedProperty(speed)) return false;
  onPlay(speed);
  return true;
}

bool AVControlStoppedState::onDataChanged(const char* url, unsigned int length) { return m_plugin->setDataProperty(url, length); }

void AVControlStoppedState::onConnectionEstablished() { transitTo(AVControlBufferingState::id()); }

void AVControlStoppedState::onError() { transitTo(AVControlErrorState::id()); }

void AVControlStoppedState::TransitToConnecting() { transitTo(AVControlConnectingState::id()); }

void AVControlStoppedState::toPausedState() { transitTo(AVControlPausedState::id()); }

// --- connecting

void AVControlConnectingState::onPlay(double speed) { startFromIdle(speed); }

/// A page cannot stop while connecting.
bool AVControlConnectingState::onStop() { return false; }

bool AVControlConnectingState::onSeek(double position) { return m_plugin->seekPlayer(position); }

void AVControlConnectingState::onConnectionEstablished() { transitTo(AVControlBufferingState::id()); }

void AVControlConnectingState::onError() { transitTo(AVControlErrorState::id()); }

void AVControlConnectingState::toPausedState() { transitTo(AVControlPausedState::id()); }

// --- finished

void AVControlFinishedState::postTransitAction() {
  double speed = 0.0;
  static_cast<void>(m_plugin->getSpeedProperty(speed));  // read and not used: deliberate
  if (m_plugin->alreadyHasQueuedMedia()) m_plugin->setDataPropertyFromQueued();
}

void AVControlFinishedState::onPlay(double speed) {
  transitTo(AVControlConnectingState::id());
  const Player::Hold hold(m_plugin->player());
  if (speed != 0.0 && m_plugin->setInput() && m_plugin->startPlayer(speed)) {
    transitTo(AVControlBufferingState::id());
    m_plugin->resizePlayer();
    return;
  }
  enterError();
}

bool AVControlFinishedState::onQueue(const char* url, unsigned int length) {
  if (m_plugin->alreadyHasQueuedMedia()) m_plugin->queueUrl(nullptr, 0);
  if (url == nullptr || length == 0) return false;
  if (!m_plugin->setDataProperty(url, length)) return false;
  double speed = 0.0;
  if (!m_plugin->getSpeedProperty(speed)) return false;
  onPlay(speed);
  return true;
}

bool AVControlFinishedState::onDataChanged(const char* url, unsigned int length) {
  transitTo(AVControlStoppedState::id());
  return m_plugin->setDataProperty(url, length);
}

bool AVControlFinishedState::onGetCurrentPosition(double* out) { return refreshedPosition(out); }

// --- error

void AVControlErrorState::postTransitAction() {
  m_plugin->setSpeedProperty(0.0);
  m_plugin->selectDefaultAVcomponent();
}

/// A failed restart stays in connecting with the error set, unlike in finished: deliberate.
void AVControlErrorState::onPlay(double speed) {
  transitTo(AVControlConnectingState::id());
  const Player::Hold hold(m_plugin->player());
  if (speed != 0.0 && m_plugin->setInput() && m_plugin->startPlayer(speed)) {
    transitTo(AVControlBufferingState::id());
    m_plugin->resizePlayer();
    return;
  }
  setGenericError();
}

bool AVControlErrorState::onStop() {
  m_plugin->resetPlayer();
  transitTo(AVControlStoppedState::id());
  return true;
}

bool AVControlErrorState::onQueue(const char* /*url*/, unsigned int /*length*/) { return false; }
