// SPDX-License-Identifier: Apache-2.0
// The small operations through which the play states drive the player and publish what script sees.
#include <unistd.h>

#include "plugin/av_control_plugin.h"

namespace {

constexpr int kStopWaits = 50;
constexpr useconds_t kStopWaitMicroseconds = 100000;

}  // namespace

bool AVControlPlugin::getCachedTime(double* out) {
  *out = m_cachedTime;
  return true;
}

bool AVControlPlugin::refreshCachedTime() {
  const auto current = player();
  double position = 0.0;
  if (current == nullptr || !current->getPosition(position)) return false;
  m_cachedTime = position;
  return true;
}

void AVControlPlugin::resetCachedTime() { m_cachedTime = 0.0; }

bool AVControlPlugin::startPlayer(double speed) {
  const auto current = player();
  return current != nullptr && current->play(speed);
}

bool AVControlPlugin::pausePlayer() {
  refreshCachedTime();
  const auto current = player();
  return current != nullptr && current->pause();
}

bool AVControlPlugin::seekPlayer(double position) {
  const auto current = player();
  return current != nullptr && current->seek(position);
}

bool AVControlPlugin::resizePlayer() {
  const auto current = player();
  return current != nullptr && current->resize();
}

/// In a stop that script asked for, waits for the library's "STOPPED", which clears the flag: 5 s at most.
bool AVControlPlugin::stopPlayer() {
  const auto current = player();
  if (current == nullptr || !current->stop()) return false;
  for (int i = 0; i < kStopWaits && m_stopRequested; ++i) usleep(kStopWaitMicroseconds);
  return true;
}

bool AVControlPlugin::setPlayStateProperty(int state) { return setProperty("playState", state); }

bool AVControlPlugin::setSpeedProperty(double speed) { return setProperty("speed", speed); }

void AVControlPlugin::setErrorProperty(int code) { m_errorCode = code; }

bool AVControlPlugin::setPlayPositionFromPlayer() {
  double position = 0.0;
  if (!m_stateMachine.getCurrentPosition(&position)) return false;
  return setProperty("playPosition", position);
}

int AVControlPlugin::getPlayState() {
  int state = 0;
  return getProperty("playState", state) ? state : 0;
}

bool AVControlPlugin::getSpeedProperty(double& speed) { return getProperty("speed", speed); }

void AVControlPlugin::restoreSpeedSetByPlay() { setSpeedProperty(m_speedSetByPlay); }
