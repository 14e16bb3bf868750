// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/dispatcher.h"

#include <utility>

namespace mediamgmnt {

Dispatcher::Dispatcher(unsigned long handle) : m_handle(handle) {}

void Dispatcher::setMessageCallback(MediaMessageCallback callback) { m_message = callback; }

void Dispatcher::setTextTrackCallback(MediaTextTrackCallback callback) { m_textTrack = callback; }

void Dispatcher::setSettingsCallback(MediaSubtitleSettingsCallback callback) { m_settings = callback; }

void Dispatcher::enqueue(const char* word) {
  std::lock_guard lock(m_mutex);
  if (m_closed) return;
  m_words.push_back(word);
  m_wake.notify_one();
}

void Dispatcher::enqueueAlarm(Clock::time_point when, Alarm alarm) {
  std::lock_guard lock(m_mutex);
  if (m_closed) return;
  m_alarms.push_back({when, std::move(alarm)});
  m_wake.notify_one();
}

void Dispatcher::close() {
  std::lock_guard lock(m_mutex);
  m_closed = true;
  m_words.clear();
  m_wake.notify_all();
}

void Dispatcher::run() {
  const char* word = nullptr;
  Alarm alarm;
  while (takeNext(word, alarm)) {
    if (alarm) {
      alarm();
      alarm = nullptr;
    } else {
      deliver(word);
    }
  }
}

bool Dispatcher::takeNext(const char*& word, Alarm& alarm) {
  std::unique_lock lock(m_mutex);
  while (!m_closed) {
    if (!m_words.empty()) {
      word = m_words.front();
      m_words.pop_front();
      return true;
    }
    if (m_alarms.empty()) {
      m_wake.wait(lock);
    } else if (m_alarms.front().when <= Clock::now()) {
      alarm = std::move(m_alarms.front().alarm);
      m_alarms.pop_front();
      return true;
    } else {
      m_wake.wait_until(lock, Clock::time_point(m_alarms.front().when));
    }
  }
  return false;
}

void Dispatcher::deliver(const char* word) const {
  const MediaMessageCallback callback = m_message;
  if (callback == nullptr) return;
  callback(m_handle, word, nullptr);
}

}  // namespace mediamgmnt
