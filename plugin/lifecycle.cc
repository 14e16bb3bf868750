// SPDX-License-Identifier: Apache-2.0
// Creation, initialisation, teardown, and the registry from player handle to object.
#include <cstdlib>
#include <cstring>
#include <utility>

#include "components/component_collection_holder.h"
#include "parental/parental_rating_collection.h"
#include "plugin/av_control_plugin.h"
#include "support/av_control_lock.h"

std::shared_ptr<AVControlPlugin> AVControlPlugin::create() {
  std::shared_ptr<AVControlPlugin> plugin;  // before the lock: after an exception, the object's end takes the lock itself
  const AVControlLock lock(the_mutex);
  plugin = std::make_shared<AVControlPlugin>();
  plugin->install();
  plugin->init();
  return plugin;
}

AVControlPlugin* AVControlPlugin::cast(CorvelNativePluginBase* object) {
  if (object == nullptr || object->pluginType() != kPluginType) return nullptr;
  return static_cast<AVControlPlugin*>(object);
}

AVControlPlugin::AVControlPlugin() : CorvelNativePluginBase(nullptr), m_stateMachine(this) {}

AVControlPlugin::~AVControlPlugin() {
  m_ending = true;
  if (!unregisterHandle()) {
    // Deinitialised already, or its player could never be opened; what it owns goes either way.
    if (!m_deinitialised) deinit();
    return;
  }
  const AVControlLock lock(the_mutex);
  if (!m_deinitialised) deinit();
}

int AVControlPlugin::type() { return 0; }

int AVControlPlugin::pluginType() { return kPluginType; }

bool AVControlPlugin::install() {
  return CorvelNativePropertyBase::install(sm_properties, sm_prop_length, sm_methods, sm_met_length);
}

bool AVControlPlugin::init() {
  setProperty("width", m_widthText);
  setProperty("height", m_heightText);
  setProperty("type", m_typeText);
  setProperty("loop", m_loopText);
  delete std::exchange(m_componentHolder, new hbbtv_avc::HbbTVComponentCollectionHolderClass(this));
  setProperty("COMPONENT_TYPE_VIDEO", 0);
  setProperty("COMPONENT_TYPE_AUDIO", 1);
  setProperty("COMPONENT_TYPE_SUBTITLE", 2);
  auto ratings = HbbTVParentalRatingCollectionAVClass::create(this);
  {
    const AVControlLock lock(m_playerMutex);
    m_parentalRatings.swap(ratings);
  }
  return initializePlayer();
}

bool AVControlPlugin::initPlugin() { return !m_deinitialised && init(); }

bool AVControlPlugin::initializePlayer() {
  const AVControlLock lock(m_resetMutex);
  return initializePlayerLocked();
}

bool AVControlPlugin::initializePlayerLocked() {
  if (m_deinitialised) return false;  // an object does not come back to life
  if (hasPlayer()) return true;
  const unsigned long handle = openPlayer(1);
  if (handle == 0) return false;
  if (!registerHandle(handle)) {
    closePlayer(handle);
    return false;
  }
  try {
    registerCallback(handle, msgReceivedWrapper);
    registerTextTrackCallback(handle, subtitleReceivedWrapper);
    registerSubtitleSettingsChangedCallback(handle, subtitleSettingsChanged);
    auto player = std::make_shared<Player>(handle, this);
    player->resetCommands();
    setPlayer(std::move(player));
  } catch (...) {
    unregisterHandle();
    closePlayer(handle);
    throw;
  }
  resetPlayerState();
  return true;
}

void AVControlPlugin::resetPlayerState() {
  {
    const AVControlLock lock(m_textMutex);
    m_dataUrl[0] = '\0';
  }
  // "data" shows the source of this player; one that was set reads as empty until the next, one that never was stays null.
  char* data = nullptr;
  if (getProperty("data", data) && data != nullptr) setProperty("data", const_cast<char*>(m_dataTexts.keep("")));
  m_cachedTime = 0.0;
  m_pendingSeek = kNoPendingSeek;
  m_seeking = false;
  m_readyToPlay = false;
  m_deferredPlay = false;
  m_deferredSpeed = 0.0;
}

bool AVControlPlugin::resetPlayer() {
  const AVControlLock lock(m_resetMutex);
  if (m_deinitialised) return false;
  closePlayerLocked();
  unregisterHandle();
  return initializePlayerLocked();
}

void AVControlPlugin::closePlayerLocked() {
  const std::shared_ptr<Player> ending = player();
  if (ending == nullptr) return;
  ending->close();  // its last commands still find it as this object's player
  setPlayer(nullptr);
}

std::shared_ptr<Player> AVControlPlugin::player() {
  const AVControlLock lock(m_playerMutex);
  return m_player;
}

void AVControlPlugin::setPlayer(std::shared_ptr<Player> player) {
  const AVControlLock lock(m_playerMutex);
  m_player.swap(player);
  m_hasPlayer = m_player != nullptr;
}

void AVControlPlugin::deinit() {
  if (m_deinitialised.exchange(true)) return;
  const AVControlLock lock(m_resetMutex);
  m_stopRequested = true;
  closePlayerLocked();
  m_stopRequested = false;
  char* cache = nullptr;
  if (getProperty("cache", cache) && cache != nullptr) {
    setProperty("cache", static_cast<char*>(nullptr));  // before its text goes: script may still read the row
    std::free(cache);
  }
  delete std::exchange(m_componentHolder, nullptr);
  std::shared_ptr<HbbTVParentalRatingCollectionAVClass> ratings;
  {
    const AVControlLock pointers(m_playerMutex);
    m_parentalRatings.swap(ratings);
  }
  m_audioIndex.clear();
  m_videoIndex.clear();
  m_subtitleIndex.clear();
  std::free(std::exchange(m_loopCopy, nullptr));
  const AVControlLock texts(m_textMutex);
  std::free(std::exchange(m_userAgent, nullptr));
  std::free(std::exchange(m_nativeWindowSize, nullptr));
  m_handle = 0;
}

void AVControlPlugin::willBeDestroyed() {
  const AVControlLock lock(the_mutex);
  m_ending = true;
  unregisterHandle();
  deinit();
}

bool AVControlPlugin::registerHandle(unsigned long handle) {
  const AVControlLock lock(plugin_handler_mutex);
  if (m_ending) return false;  // its teardown has already looked
  m_handle = handle;
  m_mmlib_player_map.insert({handle, this});
  return true;
}

bool AVControlPlugin::unregisterHandle() {
  const AVControlLock lock(plugin_handler_mutex);
  return m_mmlib_player_map.erase(m_handle) != 0;
}

AVControlPlugin* AVControlPlugin::getPlugin(unsigned long handle) {
  const AVControlLock lock(plugin_handler_mutex);
  const auto entry = m_mmlib_player_map.find(handle);
  return entry != m_mmlib_player_map.end() ? entry->second : nullptr;
}

std::shared_ptr<AVControlPlugin> AVControlPlugin::pinPlugin(unsigned long handle) {
  const AVControlLock lock(plugin_handler_mutex);
  const auto entry = m_mmlib_player_map.find(handle);
  return entry != m_mmlib_player_map.end() ? entry->second->weak_from_this().lock() : nullptr;
}

unsigned long AVControlPlugin::getNativePlayerHandle() {
  const auto current = player();
  return current != nullptr ? current->getNativePlayerHandle() : 0;
}

bool AVControlPlugin::getURLForMediaSynchroniser(char*& out) {
  char* data = nullptr;
  if (!getProperty("data", data) || data == nullptr) return false;
  out = static_cast<char*>(std::calloc(std::strlen(data) + 1, 1));
  if (out == nullptr) return false;
  std::strcpy(out, data);
  return true;
}

bool AVControlPlugin::getPlayerType(char*& out) {
  out = static_cast<char*>(std::calloc(std::strlen(m_playerTypeText) + 1, 1));
  if (out != nullptr) std::strcpy(out, m_playerTypeText);
  return true;
}

bool AVControlPlugin::setDocumentUrl(const char* url, unsigned int length) {
  if (url == nullptr || length < 4 || length >= kUrlSize) return false;
  unsigned int slash = length;  // the byte behind the text counts too: the host hands over NUL-terminated texts
  while (slash > 0 && url[slash] != '/') --slash;
  if (url[slash] != '/') return false;
  const unsigned int kept = slash < length ? slash + 1 : length;
  std::memcpy(m_documentBaseUrl, url, kept);
  m_documentBaseUrl[kept] = '\0';
  return true;
}
