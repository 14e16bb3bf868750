// SPDX-License-Identifier: Apache-2.0
#include "platform/browser/deferred.h"

#include <utility>

namespace browser {

Deferred::Deferred(std::function<void()> action)
    : m_action(std::move(action)),
      m_functions{nullptr, nullptr, &Deferred::dispatch, nullptr, nullptr, nullptr},
      m_source(g_source_new(&m_functions, sizeof(GSource))) {
  g_source_set_priority(m_source, G_PRIORITY_DEFAULT);  // an idle source would starve behind a page's timers
  g_source_set_callback(
      m_source, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, this, nullptr);
  g_source_attach(m_source, nullptr);
}

Deferred::~Deferred() {
  g_source_destroy(m_source);
  g_source_unref(m_source);
}

void Deferred::schedule() { g_source_set_ready_time(m_source, 0); }

gboolean Deferred::dispatch(GSource* source, GSourceFunc, gpointer data) {
  g_source_set_ready_time(source, -1);
  static_cast<Deferred*>(data)->m_action();
  return G_SOURCE_CONTINUE;
}

}  // namespace browser
