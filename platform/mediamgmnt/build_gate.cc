// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/build_gate.h"

namespace mediamgmnt {

void BuildGate::watch(GstElement* element) {
  const bool findsTypes = g_signal_lookup("have-type", G_OBJECT_TYPE(element)) != 0;
  if (findsTypes) {
    g_signal_connect(element, "have-type", G_CALLBACK(&BuildGate::onType), this);
    g_signal_connect_after(element, "have-type", G_CALLBACK(&BuildGate::onTypeHandled), this);
  }
  g_signal_connect(element, "pad-added", G_CALLBACK(&BuildGate::onPad), this);
  g_signal_connect_after(element, "pad-added", G_CALLBACK(&BuildGate::onPadHandled), this);
}

void BuildGate::close(std::chrono::milliseconds patience) {
  std::unique_lock lock(m_mutex);
  m_closed = true;
  m_left.wait_for(lock, patience, [this] { return m_building == 0; });
}

bool BuildGate::enter() {
  const std::lock_guard lock(m_mutex);
  if (!m_closed) ++m_building;
  return !m_closed;
}

void BuildGate::leave() {
  {
    const std::lock_guard lock(m_mutex);
    --m_building;
  }
  m_left.notify_all();
}

void BuildGate::onType(GstElement* typefind, guint, GstCaps*, gpointer self) {
  if (!static_cast<BuildGate*>(self)->enter()) g_signal_stop_emission_by_name(typefind, "have-type");
}

void BuildGate::onTypeHandled(GstElement*, guint, GstCaps*, gpointer self) { static_cast<BuildGate*>(self)->leave(); }

void BuildGate::onPad(GstElement* element, GstPad*, gpointer self) {
  if (!static_cast<BuildGate*>(self)->enter()) g_signal_stop_emission_by_name(element, "pad-added");
}

void BuildGate::onPadHandled(GstElement*, GstPad*, gpointer self) { static_cast<BuildGate*>(self)->leave(); }

}  // namespace mediamgmnt
