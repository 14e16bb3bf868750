// SPDX-License-Identifier: Apache-2.0
// The viewer's subtitle settings, process-wide: kept for players to come, told to those that there are.
#pragma once

#include <mutex>
#include <optional>

#include "host/mediamgmnt.h"

namespace mediamgmnt {

class PlayerCore;

/// Every player hears of the settings that there are when it registers for them and with each new source, since a page may begin to
/// listen after it has made its object, and of each change. Nothing is told before they
/// have been set once. Thread: any.
class SubtitleSettings {
 public:
  /// Never destroyed: a host may call the library while its static objects go away.
  static SubtitleSettings& instance();

  void change(const _SubtitleSettingsParams& settings);
  /// @p player hears of them from now on.
  void follow(PlayerCore& player, MediaSubtitleSettingsCallback callback);
  void repeat(PlayerCore& player);

 private:
  std::mutex m_mutex;                                 // taken before the players'
  std::optional<_SubtitleSettingsParams> m_settings;  // guarded by m_mutex
};

}  // namespace mediamgmnt
