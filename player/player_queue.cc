// SPDX-License-Identifier: Apache-2.0
// The bounded queue between the threads that command and the worker.
#include "player/player.h"
#include "support/av_control_lock.h"

int Player::sm_max_commands = 10;

bool Player::pushCommand(_player_thread_command& command) {
  const AVControlLock lock(m_commandMutex);
  if (m_thread == 0) return false;
  if (m_commands.size() >= static_cast<std::size_t>(sm_max_commands)) return false;  // the newest is refused, nothing waits
  m_commands.push_front(command);
  return sem_post(&m_commandSemaphore) == 0;
}

bool Player::popCommand(_player_thread_command& out) {
  const AVControlLock lock(m_commandMutex);
  if (m_thread == 0 || m_commands.empty()) return false;
  out = m_commands.back();
  m_commands.pop_back();
  return true;
}

void Player::resetCommands() {
  const AVControlLock lock(m_commandMutex);
  if (m_thread == 0) return;
  for (_player_thread_command& command : m_commands) {
    releaseCmdData(command);
    command.code = kCancelled;
  }
}

void Player::releaseCmdData(_player_thread_command& command) {
  if (command.code == kPlay || command.code == kSeek) delete static_cast<double*>(command.data);
}
