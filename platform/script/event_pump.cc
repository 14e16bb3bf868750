// SPDX-License-Identifier: Apache-2.0
#include "platform/script/event_pump.h"

#include <utility>

namespace script {

EventPump::EventPump(std::function<void(const pluginhost::Event&)> handler)
    : m_handler(std::move(handler)),
      m_functions{nullptr, nullptr, &EventPump::dispatch, nullptr, nullptr, nullptr},
      m_source(g_source_new(&m_functions, sizeof(GSource))) {
  // Default priority: an idle source would starve behind a page's timers.
  g_source_set_priority(m_source, G_PRIORITY_DEFAULT);
  g_source_set_callback(
      m_source, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, this, nullptr);
  g_source_attach(m_source, nullptr);
  m_queue.emplace([this] { g_source_set_ready_time(m_source, 0); });
}

EventPump::~EventPump() {
  m_queue.reset();  // the end of wakes
  g_source_destroy(m_source);
  g_source_unref(m_source);
}

bool EventPump::empty() const { return m_batch.empty() && m_queue->empty(); }

gboolean EventPump::dispatch(GSource* source, GSourceFunc, gpointer data) {
  g_source_set_ready_time(source, -1);  // before the queue is emptied: a wake from now on counts
  static_cast<EventPump*>(data)->deliver();
  return G_SOURCE_CONTINUE;
}

void EventPump::deliver() {
  m_queue->drain([this](CorvelNativePluginBase&, const pluginhost::Event& event) { m_batch.push_back(event); });
  for (std::size_t i = 0; i < m_batch.size(); ++i) m_handler(m_batch[i]);
  m_batch.clear();
}

}  // namespace script
