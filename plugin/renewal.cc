// SPDX-License-Identifier: Apache-2.0
// Renewal: when the media has ended and more is queued, a short-lived thread opens a new player and makes the queued media its
// source.
#include <cstring>

#include "plugin/av_control_plugin.h"
#include "support/av_control_lock.h"

bool AVControlPlugin::setDataPropertyFromQueued() {
  std::shared_ptr<AVControlPlugin> self = weak_from_this().lock();
  if (self == nullptr) return false;
  // The thread keeps the object alive: it may outlast the element.
  auto* const handedOver = new std::shared_ptr<AVControlPlugin>(std::move(self));
  pthread_attr_t detached;
  pthread_attr_init(&detached);
  pthread_attr_setdetachstate(&detached, PTHREAD_CREATE_DETACHED);
  sm_renewThreads.begin();
  const bool started = pthread_create(&m_renewThread, &detached, renewThread, handedOver) == 0;
  pthread_attr_destroy(&detached);
  if (started) return true;
  sm_renewThreads.end();
  delete handedOver;
  return false;
}

void* AVControlPlugin::renewThread(void* self) {
  auto* const plugin = static_cast<std::shared_ptr<AVControlPlugin>*>(self);
  (*plugin)->runRenewThread();
  delete plugin;  // perhaps the object's end
  sm_renewThreads.end();
  return nullptr;
}

void AVControlPlugin::runRenewThread() {
  if (m_deinitialised) return;
  m_renewing = true;
  resetPlayer();
  m_renewing = false;
  if (m_deinitialised) return;
  // Replayed with the deferred speed, which the new player has set to 0: the queued media waits paused at its start. Deliberate.
  m_deferredPlay = true;
  char url[kUrlSize];
  {
    const AVControlLock lock(m_textMutex);
    std::strcpy(url, m_queuedUrl);
  }
  queueUrl(nullptr, 0);
  m_stateMachine.onDataChanged(url, static_cast<unsigned int>(std::strlen(url)));
}
