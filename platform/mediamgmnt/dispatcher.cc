// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/dispatcher.h"

#include <utility>

namespace mediamgmnt {

Dispatcher::Dispatcher(unsigned long handle) : m_handle(handle) {}

void Dispatcher::setMessageCallback(MediaMessageCallback callback) { m_message = callback; }

void Dispatcher::setTextTrackCallback(MediaTextTrackCallback callback) { m_textTrack = callback; }

void Dispatcher::setSettingsCallback(MediaSubtitleSettingsCallback callback) { m_settings = callback; }

void Dispatcher::enqueue(const char* word) { push(word); }

void Dispatcher::enqueue(TextTrackNotice notice) { push(std::move(notice)); }

void Dispatcher::enqueue(const _SubtitleSettingsParams& settings) { push(settings); }

void Dispatcher::push(Delivery delivery) {
  std::lock_guard lock(m_mutex);
  if (m_closed) return;
  m_queue.push_back(std::move(delivery));
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
  m_queue.clear();
  m_wake.notify_all();
}

void Dispatcher::run() {
  Delivery next;
  Alarm alarm;
  while (takeNext(next, alarm)) {
    if (alarm) {
      alarm();
      alarm = nullptr;
    } else {
      std::visit([this](const auto& what) { deliver(what); }, next);
    }
  }
}

bool Dispatcher::takeNext(Delivery& next, Alarm& alarm) {
  std::unique_lock lock(m_mutex);
  while (!m_closed) {
    if (!m_queue.empty()) {
      next = std::move(m_queue.front());
      m_queue.pop_front();
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

void Dispatcher::deliver(const TextTrackNotice& notice) const {
  const MediaTextTrackCallback callback = m_textTrack;
  if (callback == nullptr) return;
  const auto text = [](const SharedText& from) {
    return from != nullptr ? _TextTrackText{from->data(), static_cast<std::int32_t>(from->size())} : _TextTrackText{"", 0};
  };
  _TextTrackText texts[] = {text(notice.first), text(notice.second)};
  callback(m_handle, notice.type, notice.first != nullptr ? texts : nullptr);
}

void Dispatcher::deliver(const _SubtitleSettingsParams& settings) const {
  const MediaSubtitleSettingsCallback callback = m_settings;
  if (callback != nullptr) callback(m_handle, settings);
}

}  // namespace mediamgmnt
