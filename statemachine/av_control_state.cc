// SPDX-License-Identifier: Apache-2.0
// What the states share.
#include "statemachine/av_control_state.h"

#include <string_view>

#include "plugin/av_control_plugin.h"
#include "statemachine/play_states.h"

namespace {

constexpr int kGenericError = 2;  ///< the A/V Control object's code for an unidentified error

}  // namespace

void AVControlState::transitTo(int id) { m_plugin->stateMachine().transitTo(id); }

void AVControlState::setGenericError() { m_plugin->setErrorProperty(kGenericError); }

void AVControlState::enterError() {
  setGenericError();
  transitTo(AVControlErrorState::id());
}

bool AVControlState::stopPlayerAndSwitchState() {
  if (!m_plugin->stopPlayer()) return false;
  m_plugin->setSpeedProperty(0.0);
  return true;
}

bool AVControlState::onStop() { return stopPlayerAndSwitchState(); }

bool AVControlState::onQueue(const char* url, unsigned int length) {
  if (url == nullptr || length == 0 || std::string_view(url, length) == "null") {
    m_plugin->queueUrl(nullptr, 0);
    return true;
  }
  if (m_plugin->alreadyHasQueuedMedia()) return false;
  m_plugin->queueUrl(url, length);
  return true;
}

bool AVControlState::onDataChanged(const char* url, unsigned int length) {
  transitTo(AVControlStoppedState::id());
  m_plugin->setDataProperty(url, length);
  return stopPlayerAndSwitchState();
}

bool AVControlState::onTypeChanged() { return stopPlayerAndSwitchState(); }

bool AVControlState::onSetSource(const char* url, unsigned int length) { return onDataChanged(url, length); }

bool AVControlState::onGetCurrentPosition(double* out) { return m_plugin->getCachedTime(out); }

/// A failed refresh still gives the last position.
bool AVControlState::refreshedPosition(double* out) {
  m_plugin->refreshCachedTime();
  return m_plugin->getCachedTime(out);
}

/// How play starts in stopped and in connecting.
void AVControlState::startFromIdle(double speed) {
  if (speed == 0.0) {
    m_plugin->setSpeedProperty(0.0);
    if (!m_plugin->pausePlayer()) enterError();
    return;
  }
  const Player::Hold hold(m_plugin->player());  // the machine waits for data before the library can answer
  if (m_plugin->startPlayer(speed) && m_plugin->resizePlayer()) {
    transitTo(AVControlBufferingState::id());
  } else {
    enterError();
  }
}
