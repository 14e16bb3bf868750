// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/subtitle_settings.h"

#include "platform/mediamgmnt/player_core.h"
#include "platform/mediamgmnt/player_registry.h"

namespace mediamgmnt {

SubtitleSettings& SubtitleSettings::instance() {
  static SubtitleSettings* const settings = new SubtitleSettings;
  return *settings;
}

void SubtitleSettings::change(const _SubtitleSettingsParams& settings) {
  std::lock_guard lock(m_mutex);
  m_settings = settings;
  for (const auto& player : PlayerRegistry::instance().all()) {
    if (player->dispatcher().hasSettingsCallback()) player->tell(settings);
  }
}

void SubtitleSettings::follow(PlayerCore& player, MediaSubtitleSettingsCallback callback) {
  std::lock_guard lock(m_mutex);
  player.dispatcher().setSettingsCallback(callback);
  if (callback != nullptr && m_settings) player.tell(*m_settings);
}

void SubtitleSettings::repeat(PlayerCore& player) {
  std::lock_guard lock(m_mutex);
  if (m_settings && player.dispatcher().hasSettingsCallback()) player.tell(*m_settings);
}

}  // namespace mediamgmnt
