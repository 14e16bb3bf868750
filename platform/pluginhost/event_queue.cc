// SPDX-License-Identifier: Apache-2.0
#include <deque>
#include <mutex>
#include <utility>

#include "platform/pluginhost/event_sink.h"
#include "platform/pluginhost/object_registry.h"

namespace pluginhost {
namespace {

/// The part of the queue that senders share. A sender keeps it alive for its call, so that a late one meets no destroyed lock.
class Channel {
 public:
  explicit Channel(std::function<void()> wake) : m_wake(std::move(wake)) {}

  void push(Event event) {
    bool first;
    {
      const std::lock_guard lock(m_mutex);
      first = m_events.empty();
      m_events.push_back(std::move(event));
    }
    if (first) m_wake();
  }

  std::deque<Event> takeAll() {
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_events, {});
  }

  bool empty() const {
    const std::lock_guard lock(m_mutex);
    return m_events.empty();
  }

  void wake() const { m_wake(); }

 private:
  const std::function<void()> m_wake;
  mutable std::mutex m_mutex;  ///< a leaf
  std::deque<Event> m_events;  ///< guarded by m_mutex
};

struct Current {
  std::mutex mutex;
  std::shared_ptr<Channel> channel;
};

/// Never destroyed: threads of a media library may raise events while the process ends.
Current& current() {
  static auto* const instance = new Current;
  return *instance;
}

std::shared_ptr<Channel> currentChannel() {
  const std::lock_guard lock(current().mutex);
  return current().channel;
}

void setCurrentChannel(std::shared_ptr<Channel> channel) {
  const std::lock_guard lock(current().mutex);
  current().channel.swap(channel);
}

}  // namespace

bool enqueueEvent(Event event) {
  const auto channel = currentChannel();
  if (!channel) return false;
  channel->push(std::move(event));
  return true;
}

/// Everything but the channel belongs to the script thread.
struct EventQueue::Impl {
  explicit Impl(std::function<void()> wake) : channel(std::make_shared<Channel>(std::move(wake))) {}

  using Handler = std::function<void(CorvelNativePluginBase&, const Event&)>;
  void handOutBatch(const Handler& handler);

  const std::shared_ptr<Channel> channel;
  std::deque<Event> batch;  ///< kept here, so that a handler that throws loses no later event
  bool draining = false;
  bool refusedNested = false;
};

void EventQueue::Impl::handOutBatch(const Handler& handler) {
  struct DrainMark {
    bool& draining;
    ~DrainMark() { draining = false; }
  } const mark{draining};
  draining = true;
  while (!batch.empty()) {
    const Event event = std::move(batch.front());
    batch.pop_front();
    const PinnedObject found = ObjectRegistry::find(event.objectId);
    if (found.object != nullptr) handler(*found.object, event);
  }
}

EventQueue::EventQueue(std::function<void()> wake) : m_impl(std::make_unique<Impl>(std::move(wake))) {
  setCurrentChannel(m_impl->channel);
}

EventQueue::~EventQueue() {
  if (currentChannel() == m_impl->channel) setCurrentChannel(nullptr);
}

void EventQueue::drain(const std::function<void(CorvelNativePluginBase& object, const Event& event)>& handler) {
  if (m_impl->draining) {  // a handler that runs a nested main loop: newer events must not overtake those of this batch
    m_impl->refusedNested = true;
    return;
  }
  for (Event& event : m_impl->channel->takeAll()) m_impl->batch.push_back(std::move(event));
  m_impl->handOutBatch(handler);
  const bool oweWake = std::exchange(m_impl->refusedNested, false) && !m_impl->channel->empty();
  if (oweWake) m_impl->channel->wake();
}

bool EventQueue::empty() const { return m_impl->channel->empty(); }

}  // namespace pluginhost
