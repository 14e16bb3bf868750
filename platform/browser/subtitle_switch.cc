// SPDX-License-Identifier: Apache-2.0
#include "platform/browser/subtitle_switch.h"

#include "platform/shell/subtitle_settings.h"

namespace browser {

SubtitleSwitch::SubtitleSwitch(const std::string& start) : m_text(":"), m_value("1") {
  _SubtitleSettingsParams settings;
  if (!shell::parseSubtitleSettings(start, settings)) return;
  m_told = true;
  m_on = settings.value != 0;
  m_text = start.substr(start.find(':'));
  if (m_on) m_value = std::to_string(settings.value);
}

void SubtitleSwitch::toggle() {
  m_told = true;
  m_on = !m_on;
}

std::string SubtitleSwitch::settings() const { return m_told ? (m_on ? m_value : "0") + m_text : ""; }

}  // namespace browser
