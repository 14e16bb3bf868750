// SPDX-License-Identifier: Apache-2.0
// The bounded queue between the threads that command and the worker.
#include "player/player.h"

#include <utility>

#include "support/av_control_lock.h"

int Player::sm_max_commands = 10;

bool Player::pushCommand(_player_thread_command& command) {
  const AVControlLock lock(m_commandMutex);
  if (m_thread == 0) return false;
  if (m_commands.size() >= static_cast<std::size_t>(sm_max_commands)) return false;  // the newest is refused, nothing waits
  m_commands.push_front(command);
  if (m_holds > 0) {
    ++m_heldPosts;
    return true;
  }
  return sem_post(&m_commandSemaphore) == 0;
}

Player::Hold::Hold(std::shared_ptr<Player> player) : m_player(std::move(player)) {
  if (m_player != nullptr) m_player->hold();
}

Player::Hold::~Hold() {
  if (m_player != nullptr) m_player->release();
}

void Player::hold() {
  const AVControlLock lock(m_commandMutex);
  ++m_holds;
}

void Player::release() {
  const AVControlLock lock(m_commandMutex);
  if (--m_holds == 0) postHeldLocked();
}

void Player::postHeld() {
  const AVControlLock lock(m_commandMutex);
  postHeldLocked();
}

void Player::postHeldLocked() {
  for (; m_heldPosts > 0; --m_heldPosts) sem_post(&m_commandSemaphore);
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
