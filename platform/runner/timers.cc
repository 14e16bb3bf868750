// SPDX-License-Identifier: Apache-2.0
#include "platform/runner/timers.h"

#include <cmath>
#include <utility>

namespace runner {

struct Timers::Timer {
  Timers* owner;
  int id;
  JSObjectRef function;
  bool repeats;
  guint source;
};

Timers::Timers(JSGlobalContextRef context, std::function<void(JSObjectRef)> run) : m_context(context), m_run(std::move(run)) {}

Timers::~Timers() { clearAll(); }

int Timers::start(JSObjectRef function, double milliseconds, bool repeats) {
  const int id = m_next++;
  auto timer = std::make_unique<Timer>(Timer{this, id, function, repeats, 0});
  JSValueProtect(m_context, function);
  // A repeating timer without a pause would leave the main loop nothing else to do.
  const double least = repeats ? 1 : 0;
  const double most = 0x7FFFFFFF;
  timer->source = g_timeout_add(static_cast<guint>(std::fmin(std::fmax(std::ceil(milliseconds), least), most)), fire, timer.get());
  m_timers.emplace(id, std::move(timer));
  return id;
}

void Timers::clear(int id) {
  const auto found = m_timers.find(id);
  if (found == m_timers.end()) return;
  g_source_remove(found->second->source);
  JSValueUnprotect(m_context, found->second->function);
  m_timers.erase(found);
}

void Timers::clearAll() {
  while (!m_timers.empty()) clear(m_timers.begin()->first);
}

gboolean Timers::fire(gpointer data) {
  auto* const timer = static_cast<Timer*>(data);
  Timers& timers = *timer->owner;
  const int id = timer->id;
  JSObjectRef function = timer->function;
  JSValueProtect(timers.m_context, function);  // the script may clear this timer, or end it by running once
  if (!timer->repeats) timers.clear(id);
  timers.m_run(function);
  JSValueUnprotect(timers.m_context, function);
  return timers.m_timers.count(id) != 0 ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
}

}  // namespace runner
