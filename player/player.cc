// SPDX-License-Identifier: Apache-2.0
// Construction and the end of a player.
#include "player/player.h"

#include "host/mediamgmnt.h"
#include "support/av_control_lock.h"

Player::Player(unsigned long handle, AVControlPlugin* owner) : m_handle(handle), m_owner(owner) {
  sem_init(&m_commandSemaphore, 0, 0);
  const AVControlLock lock(m_commandMutex);
  if (pthread_create(&m_thread, nullptr, player_thread, this) != 0) m_thread = 0;
}

Player::~Player() {
  close();
  for (_player_thread_command& command : m_commands) releaseCmdData(command);
  sem_destroy(&m_commandSemaphore);
}

void Player::close() {
  const AVControlLock lock(m_closeMutex);
  if (m_closed) return;
  m_closed = true;
  endWorker();
  stopImpl();
  closePlayer(m_handle);
  freeDrmRightsError();
  freeParentalRatingChange();
  freeParentalRatingError();
  m_owner = nullptr;
}

void Player::endWorker() {
  pthread_t thread = 0;
  {
    const AVControlLock lock(m_commandMutex);
    thread = m_thread;
  }
  if (thread == 0) return;
  // A full queue refuses the exit command. One more post then lets the worker drain the queue, find it empty and leave.
  if (!pushPlain(kExit)) sem_post(&m_commandSemaphore);
  postHeld();  // whoever holds the player back may be further down this very stack
  pthread_join(thread, nullptr);
  const AVControlLock lock(m_commandMutex);
  m_thread = 0;
}
