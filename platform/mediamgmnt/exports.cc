// SPDX-License-Identifier: Apache-2.0
// The ten functions. Nothing is thrown out of them: what the library cannot do for want of memory or threads is a refusal.
#include <algorithm>
#include <cstring>
#include <exception>
#include <memory>
#include <string>
#include <string_view>

#include "host/mediamgmnt.h"
#include "platform/mediamgmnt/audio_tap.h"
#include "platform/mediamgmnt/clear_keys.h"
#include "platform/mediamgmnt/country_codes.h"
#include "platform/mediamgmnt/library_start.h"
#include "platform/mediamgmnt/media_plane.h"
#include "platform/mediamgmnt/media_sound.h"
#include "platform/mediamgmnt/media_subtitles.h"
#include "platform/mediamgmnt/parental_limit.h"
#include "platform/mediamgmnt/player_core.h"
#include "platform/mediamgmnt/player_registry.h"
#include "platform/mediamgmnt/preferences.h"
#include "platform/mediamgmnt/subtitle_settings.h"
#include "platform/mediamgmnt/thread_ledger.h"

namespace {

using mediamgmnt::PlayerCore;
using mediamgmnt::PlayerRegistry;

/// How long the end of the process waits for threads of players that were closed.
constexpr int kEndWaitMs = 2000;

std::string_view textOf(const char* text) { return text != nullptr ? std::string_view(text) : std::string_view(); }

/// Runs @p work with the player. @return 0 for an unknown handle, for work that returns false, and for an exception.
template <typename Work>
int withPlayer(unsigned long handle, Work work) {
  try {
    const std::shared_ptr<PlayerCore> player = PlayerRegistry::instance().find(handle);
    return player != nullptr && work(*player) ? 1 : 0;
  } catch (const std::exception&) {
    return 0;
  }
}

/// @return false when the text had to be cut: half a number is no answer.
bool copyText(const std::string& text, char* buffer, int size) {
  const std::size_t room = static_cast<std::size_t>(size) - 1;
  const std::size_t length = std::min(text.size(), room);
  std::memcpy(buffer, text.data(), length);
  buffer[length] = '\0';
  return text.size() <= room;
}

/// Threads that still run here must not outlive what the process takes down after the library.
__attribute__((destructor)) void waitForThreadsAtExit() {
  mediamgmnt::endLibraryStart();
  mediamgmnt::waitForLeftoverThreads(kEndWaitMs);
}

}  // namespace

unsigned long openPlayer(int) {
  try {
    mediamgmnt::beginLibraryStart();
    return PlayerRegistry::instance().add();
  } catch (const std::exception&) {
    return 0;
  }
}

int closePlayer(unsigned long handle) {
  try {
    const std::shared_ptr<PlayerCore> player = PlayerRegistry::instance().remove(handle);
    if (player == nullptr) return 0;
    player->close();
    return 1;
  } catch (const std::exception&) {
    return 0;
  }
}

int cmdPlayer(unsigned long handle, const char* command, const char* argument) {
  return withPlayer(handle, [=](PlayerCore& player) { return player.command(textOf(command), textOf(argument)); });
}

int getPlayerProperty(unsigned long handle, const char* key, char* buffer, int size) {
  if (buffer == nullptr || size < 1) return 0;
  buffer[0] = '\0';
  return withPlayer(handle, [=](PlayerCore& player) {
    std::string value;
    return player.property(textOf(key), value) && copyText(value, buffer, size);
  });
}

int setPlayerProperty(unsigned long handle, const char* key, const char* value) {
  return withPlayer(handle, [=](PlayerCore& player) { return player.setProperty(textOf(key), textOf(value)); });
}

int registerCallback(unsigned long handle, MediaMessageCallback callback) {
  return withPlayer(handle, [=](PlayerCore& player) {
    player.dispatcher().setMessageCallback(callback);
    return true;
  });
}

int registerTextTrackCallback(unsigned long handle, MediaTextTrackCallback callback) {
  return withPlayer(handle, [=](PlayerCore& player) {
    player.dispatcher().setTextTrackCallback(callback);
    return true;
  });
}

int registerSubtitleSettingsChangedCallback(unsigned long handle, MediaSubtitleSettingsCallback callback) {
  return withPlayer(handle, [=](PlayerCore& player) {
    mediamgmnt::SubtitleSettings::instance().follow(player, callback);
    return true;
  });
}

int getOOBPlayerPosition(unsigned long handle, int* position) {
  if (position == nullptr) return 0;
  return withPlayer(handle, [=](PlayerCore& player) {
    if (!player.facts().positionKnown()) return false;
    *position = static_cast<int>(std::min<long long>(player.facts().position(), INT32_MAX));
    return true;
  });
}

int hbbSelectDefaultAVComponent(AVComponentType type) {
  if (type != AV_COMPONENT_TYPE_VIDEO && type != AV_COMPONENT_TYPE_AUDIO) return 0;
  using mediamgmnt::ComponentKind;
  const bool video = type == AV_COMPONENT_TYPE_VIDEO;
  mediamgmnt::Preferences::instance().selectDefaults(video ? ComponentKind::Video : ComponentKind::Audio);
  return 1;
}

void mediaTapSound(MediaSoundTap tap, void* user) { mediamgmnt::setSoundTap(tap, user); }

int mediaPreferLanguages(int componentType, const char* languages) {
  using mediamgmnt::ComponentKind;
  const bool audio = componentType == static_cast<int>(ComponentKind::Audio);
  const bool subtitle = componentType == static_cast<int>(ComponentKind::Subtitle);
  if (languages == nullptr || (!audio && !subtitle)) return 0;
  try {
    mediamgmnt::Preferences::instance().setLanguages(audio ? ComponentKind::Audio : ComponentKind::Subtitle, languages);
    return 1;
  } catch (const std::exception&) {
    return 0;
  }
}

int mediaChangeSubtitleSettings(const _SubtitleSettingsParams* settings) {
  if (settings == nullptr) return 0;
  try {
    mediamgmnt::SubtitleSettings::instance().change(*settings);
    return 1;
  } catch (const std::exception&) {
    return 0;
  }
}

int mediaSetParentalLimit(int age, const char* country) {
  const std::string region = mediamgmnt::twoLetterCountry(textOf(country));
  if (!region.empty() && region.size() != 2) return 0;
  try {
    mediamgmnt::ParentalLimitStore::instance().set({age < 0 ? std::nullopt : std::optional<int>(age), region});
    for (const std::shared_ptr<PlayerCore>& player : PlayerRegistry::instance().all()) player->judgeRatings();
    return 1;
  } catch (const std::exception&) {
    return 0;
  }
}

int mediaAddClearKey(const char* keyId, const char* key) {
  const auto id = mediamgmnt::parseHexKey(textOf(keyId));
  const auto bytes = mediamgmnt::parseHexKey(textOf(key));
  if (!id || (!bytes && !textOf(key).empty())) return 0;
  try {
    mediamgmnt::ClearKeyStore::instance().set(*id, bytes);
    return 1;
  } catch (const std::exception&) {
    return 0;
  }
}

int mediaLibraryWaitIdle(int timeoutMs) { return mediamgmnt::waitForLeftoverThreads(timeoutMs) ? 1 : 0; }
