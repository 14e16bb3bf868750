// SPDX-License-Identifier: Apache-2.0
// The worker: takes commands first in, first out and issues them to the media library.
#include <cerrno>
#include <cstdio>

#include "host/mediamgmnt.h"
#include "player/player.h"
#include "plugin/av_control_plugin.h"
#include "support/number_text.h"

namespace command = mediamgmnt::command;
namespace property = mediamgmnt::property;
namespace status = mediamgmnt::status;

namespace {

const char* text(const _player_thread_command& record) { return static_cast<const char*>(record.data); }

double number(const _player_thread_command& record) { return *static_cast<const double*>(record.data); }

void waitFor(sem_t& semaphore) {
  while (sem_wait(&semaphore) != 0 && errno == EINTR) {
  }
}

}  // namespace

void* Player::player_thread(void* self) {
  static_cast<Player*>(self)->run();
  return nullptr;
}

void Player::run() {
  for (;;) {
    waitFor(m_commandSemaphore);
    _player_thread_command record;
    if (!popCommand(record)) return;
    m_currentCommand = record.code;
    if (record.code == kExit) return;
    execute(record);
    releaseCmdData(record);
  }
}

void Player::execute(const _player_thread_command& record) {
  switch (record.code) {
    case kPlay: playImpl(number(record)); break;
    case kStop: stopImpl(); break;
    case kPause: pauseImpl(); break;
    case kSeek: seekImpl(number(record)); break;
    case kResize: resizeImpl(); break;
    case kSetInput: setInputImpl(text(record)); break;
    case kSetForcedFormat: setForcedFormatImpl(text(record)); break;
    case kSetUserAgent: setUserAgentImpl(text(record)); break;
    case kSetLoopParam: setLoopParamImpl(text(record)); break;
    case kSetCacheParam: setCacheParamImpl(text(record)); break;
    case kDispatchError: handleDispatchEventImpl(status::kError); break;
    case kDispatchPlayPositionChanged: handleDispatchEventImpl(status::kPlayPositionChanged); break;
    case kDispatchPlaySpeedChanged: handleDispatchEventImpl(status::kPlaySpeedChanged); break;
    case kDispatchDrmRightsError: handleDispatchEventImpl(status::kDrmRightsError); break;
    case kSetNativeWindowSize: setNativeWindowSizeImpl(text(record)); break;
    case kDispatchParentalRatingChange: handleDispatchEventImpl(status::kParentalRatingChange); break;
    case kDispatchParentalRatingError: handleDispatchEventImpl(status::kParentalRatingError); break;
    case kStopBroadcast: stopBroadcastImpl(); break;
    default: break;  // cancelled, or a code that nobody queues
  }
}

bool Player::playImpl(double speed) {
  m_stopped = false;  // first, and whatever the library says
  char argument[kFixedTextSize];
  formatFixed(speed, argument);
  return cmdPlayer(m_handle, command::kPlay, argument) != 0;
}

bool Player::stopImpl() {
  if (m_stopped) return true;
  const bool accepted = cmdPlayer(m_handle, command::kStop, "") != 0;
  m_stopped = true;
  return accepted;
}

bool Player::stopBroadcastImpl() { return cmdPlayer(m_handle, command::kStopBroadcast, "") != 0; }

bool Player::pauseImpl() { return cmdPlayer(m_handle, command::kPause, "") != 0; }

bool Player::seekImpl(double position) {
  char argument[kFixedTextSize];
  formatFixed(position, argument);
  return cmdPlayer(m_handle, command::kSeek, argument) != 0;
}

bool Player::resizeImpl() {
  if (m_width < 1 || m_height < 1) return false;
  char argument[64];  // four 32-bit numbers and four bars
  std::snprintf(argument, sizeof argument, "%d%s%d%s%d%s%d%s", m_x.load(), "|", m_y.load(), "|", m_width.load(), "|",
                m_height.load(), "|");
  return cmdPlayer(m_handle, command::kSetWindowProperties, argument) != 0;
}

bool Player::setPlayerText(const char* key, const char* value) { return setPlayerProperty(m_handle, key, value) != 0; }

bool Player::setInputImpl(const char* url) { return setPlayerText(property::kInput, url); }

bool Player::setForcedFormatImpl(const char* mimeType) { return setPlayerText(property::kForcedFormat, mimeType); }

bool Player::setUserAgentImpl(const char* value) { return setPlayerText(property::kUserAgent, value); }

bool Player::setNativeWindowSizeImpl(const char* value) { return setPlayerText(property::kNativeWindowSize, value); }

bool Player::setLoopParamImpl(const char* value) { return setPlayerText(property::kLoop, value); }

bool Player::setCacheParamImpl(const char* value) { return setPlayerText(property::kCached, value); }

void Player::handleDispatchEventImpl(const char* name) {
  AVControlPlugin* const owner = m_owner;
  if (valid() && owner != nullptr) owner->handleDispatchEventFromCb(name);
}
