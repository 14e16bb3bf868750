// SPDX-License-Identifier: Apache-2.0
// The ten media functions that the plugin is linked against at load time. Each forwards to the loaded library; with an observer
// each is reported, callbacks too: those are then registered as ours and passed on.
#include <map>
#include <mutex>
#include <string>

#include "platform/shell/media_seam.h"

namespace {

using shell::isSeamWatched;
using shell::mediaFunctions;
using shell::SeamWatch;

// The plugin's callbacks of one player, kept only while somebody watches.
struct Callbacks {
  MediaMessageCallback message = nullptr;
  MediaTextTrackCallback textTrack = nullptr;
  MediaSubtitleSettingsCallback settings = nullptr;
};

// Not destroyed: a library thread may be in a callback while the process ends.
struct WatchedPlayers {
  std::mutex mutex;  ///< a leaf: nothing is called while it is held
  std::map<unsigned long, Callbacks> players;
};

WatchedPlayers& watched() {
  static auto* const instance = new WatchedPlayers;
  return *instance;
}

Callbacks callbacksOf(unsigned long handle) {
  const std::lock_guard lock(watched().mutex);
  const auto found = watched().players.find(handle);
  return found == watched().players.end() ? Callbacks{} : found->second;
}

template <typename Member, typename Callback>
void watchCallback(unsigned long handle, Member member, Callback callback) {
  const std::lock_guard lock(watched().mutex);
  watched().players[handle].*member = callback;
}

constexpr const char* kTextTrackNames[] = {"TEXT_TRACK_ADD",     "TEXT_TRACK_REMOVE",   "TEXT_TRACK_CUE",
                                           "TTML_SUBTITLE",      "TTML_SUBTITLE_FONT",  "TTML_SUBTITLE_SHOW",
                                           "TTML_SUBTITLE_HIDE", "TTML_SUBTITLE_CHANGE"};

std::string_view textTrackName(_TextTrackEventType type) {
  const auto index = static_cast<std::size_t>(type);
  return index < std::size(kTextTrackNames) ? kTextTrackNames[index] : "unknown";
}

void onMessage(unsigned long handle, const char* message, void* user) {
  const MediaMessageCallback callback = callbacksOf(handle).message;
  if (const SeamWatch watch; watch) watch->mediaCallback(handle, "callback", message == nullptr ? "" : message);
  if (callback != nullptr) callback(handle, message, user);
}

void onTextTrack(unsigned long handle, _TextTrackEventType type, void* data) {
  const MediaTextTrackCallback callback = callbacksOf(handle).textTrack;
  if (const SeamWatch watch; watch) watch->mediaCallback(handle, "text-track", textTrackName(type));
  if (callback != nullptr) callback(handle, type, data);
}

void onSettings(unsigned long handle, _SubtitleSettingsParams params) {
  const MediaSubtitleSettingsCallback callback = callbacksOf(handle).settings;
  const std::string value = std::to_string(params.value);
  if (const SeamWatch watch; watch) watch->mediaCallback(handle, "subtitle-settings", value);
  if (callback != nullptr) callback(handle, params);
}

void report(unsigned long handle, std::string_view kind, std::string_view name, const char* argument, int result) {
  if (const SeamWatch watch; watch) watch->mediaCall(handle, kind, name, argument, result != 0, nullptr);
}

std::string_view orEmpty(const char* text) { return text == nullptr ? std::string_view() : text; }

}  // namespace

unsigned long openPlayer(int kind) {
  const auto* library = mediaFunctions();
  const unsigned long handle = library == nullptr ? 0 : library->openPlayer(kind);
  report(handle, "open", "openPlayer", std::to_string(kind).c_str(), handle != 0 ? 1 : 0);
  return handle;
}

int closePlayer(unsigned long handle) {
  const auto* library = mediaFunctions();
  const int result = library == nullptr ? 0 : library->closePlayer(handle);
  report(handle, "close", "closePlayer", nullptr, result);
  if (!isSeamWatched()) return result;
  const std::lock_guard lock(watched().mutex);
  watched().players.erase(handle);
  return result;
}

int cmdPlayer(unsigned long handle, const char* command, const char* argument) {
  const auto* library = mediaFunctions();
  const int result = library == nullptr ? 0 : library->cmdPlayer(handle, command, argument);
  report(handle, "command", orEmpty(command), argument, result);
  return result;
}

int getPlayerProperty(unsigned long handle, const char* key, char* buffer, int size) {
  const auto* library = mediaFunctions();
  const int result = library == nullptr ? 0 : library->getPlayerProperty(handle, key, buffer, size);
  if (const SeamWatch watch; watch) {
    watch->mediaCall(handle, "property-read", orEmpty(key), nullptr, result != 0, result != 0 ? buffer : nullptr);
  }
  return result;
}

int setPlayerProperty(unsigned long handle, const char* key, const char* value) {
  const auto* library = mediaFunctions();
  const int result = library == nullptr ? 0 : library->setPlayerProperty(handle, key, value);
  report(handle, "property-write", orEmpty(key), value, result);
  return result;
}

int registerCallback(unsigned long handle, MediaMessageCallback callback) {
  const auto* library = mediaFunctions();
  if (library == nullptr) return 0;
  if (!isSeamWatched()) return library->registerCallback(handle, callback);
  watchCallback(handle, &Callbacks::message, callback);
  return library->registerCallback(handle, callback == nullptr ? nullptr : onMessage);
}

int registerTextTrackCallback(unsigned long handle, MediaTextTrackCallback callback) {
  const auto* library = mediaFunctions();
  if (library == nullptr) return 0;
  if (!isSeamWatched()) return library->registerTextTrackCallback(handle, callback);
  watchCallback(handle, &Callbacks::textTrack, callback);
  return library->registerTextTrackCallback(handle, callback == nullptr ? nullptr : onTextTrack);
}

int registerSubtitleSettingsChangedCallback(unsigned long handle, MediaSubtitleSettingsCallback callback) {
  const auto* library = mediaFunctions();
  if (library == nullptr) return 0;
  if (!isSeamWatched()) return library->registerSubtitleSettingsChangedCallback(handle, callback);
  watchCallback(handle, &Callbacks::settings, callback);
  return library->registerSubtitleSettingsChangedCallback(handle, callback == nullptr ? nullptr : onSettings);
}

int getOOBPlayerPosition(unsigned long handle, int* position) {
  const auto* library = mediaFunctions();
  const int result = library == nullptr ? 0 : library->getOOBPlayerPosition(handle, position);
  if (const SeamWatch watch; watch) {
    const std::string text = position == nullptr ? "" : std::to_string(*position);
    watch->mediaCall(handle, "property-read", "getOOBPlayerPosition", nullptr, result != 0, text.c_str());
  }
  return result;
}

int hbbSelectDefaultAVComponent(AVComponentType type) {
  const auto* library = mediaFunctions();
  const int result = library == nullptr ? 0 : library->hbbSelectDefaultAVComponent(type);
  report(0, "command", "hbbSelectDefaultAVComponent", std::to_string(static_cast<int>(type)).c_str(), result);
  return result;
}
