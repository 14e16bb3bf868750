// SPDX-License-Identifier: Apache-2.0
// The public commands: each puts one record on the queue.
#include <cstring>

#include "host/mediamgmnt.h"
#include "player/player.h"

namespace status = mediamgmnt::status;

bool Player::pushPlain(CommandCode code) {
  _player_thread_command command{code, nullptr};
  return pushCommand(command);
}

bool Player::pushNumber(CommandCode code, double value) {
  _player_thread_command command{code, new double(value)};
  if (pushCommand(command)) return true;
  releaseCmdData(command);
  return false;
}

bool Player::pushText(CommandCode code, const char* text) {
  _player_thread_command command{code, const_cast<char*>(text)};
  return pushCommand(command);
}

bool Player::play(double speed) { return pushNumber(kPlay, speed); }

bool Player::stop() { return pushPlain(kStop); }

bool Player::pause() { return pushPlain(kPause); }

bool Player::seek(double position) { return pushNumber(kSeek, position); }

bool Player::resize() { return pushPlain(kResize); }

bool Player::stopBroadcast() { return pushPlain(kStopBroadcast); }

bool Player::setInput(const char* url) {
  m_inputSet = true;
  return pushText(kSetInput, url);
}

bool Player::setForcedFormat(const char* mimeType) { return pushText(kSetForcedFormat, mimeType); }

bool Player::setUserAgent(const char* text) { return pushText(kSetUserAgent, text); }

bool Player::setNativeWindowSize(const char* text) { return pushText(kSetNativeWindowSize, text); }

bool Player::setLoopParam(const char* text) { return pushText(kSetLoopParam, text); }

bool Player::setCacheParam(const char* text) { return pushText(kSetCacheParam, text); }

bool Player::handleDispatchEvent(const char* name) {
  if (std::strcmp(name, status::kError) == 0) return pushPlain(kDispatchError);
  if (std::strcmp(name, status::kPlayPositionChanged) == 0) return pushPlain(kDispatchPlayPositionChanged);
  if (std::strcmp(name, status::kPlaySpeedChanged) == 0) return pushPlain(kDispatchPlaySpeedChanged);
  if (std::strcmp(name, status::kDrmRightsError) == 0) return pushPlain(kDispatchDrmRightsError);
  if (std::strcmp(name, status::kParentalRatingChange) == 0) return pushPlain(kDispatchParentalRatingChange);
  if (std::strcmp(name, status::kParentalRatingError) == 0) return pushPlain(kDispatchParentalRatingError);
  return false;
}

void Player::setCoordinates(int x, int y, int width, int height) {
  if (width < 1 || height < 1) return;
  m_x = x;
  m_y = y;
  m_width = width;
  m_height = height;
  resize();
}

bool Player::positionChanged(int x, int y, int width, int height) const {
  return x != m_x || y != m_y || width != m_width || height != m_height;
}
