// SPDX-License-Identifier: Apache-2.0
// A media library that costs nothing: what the benchmarks of the plugin itself are linked with.
#include "bench/quiet_media_library.h"

#include <atomic>
#include <cstdio>
#include <cstring>

namespace {

std::atomic<unsigned long> g_nextHandle{1};
std::atomic<MediaMessageCallback> g_callback{nullptr};
std::atomic<void (*)()> g_onSeek{nullptr};

}  // namespace

void quiet::sendWord(unsigned long handle, const char* word) {
  if (const MediaMessageCallback callback = g_callback) callback(handle, word, nullptr);
}

void quiet::onSeek(void (*function)()) { g_onSeek = function; }

unsigned long openPlayer(int) { return g_nextHandle++; }
int closePlayer(unsigned long) { return 1; }

int cmdPlayer(unsigned long, const char* command, const char*) {
  if (std::strcmp(command, mediamgmnt::command::kSeek) == 0) {
    if (const auto function = g_onSeek.load()) function();
  }
  return 1;
}

int getPlayerProperty(unsigned long, const char*, char* buffer, int size) {
  std::snprintf(buffer, static_cast<std::size_t>(size), "%s", "1234.50");
  return 1;
}

int setPlayerProperty(unsigned long, const char*, const char*) { return 1; }

int registerCallback(unsigned long, MediaMessageCallback callback) {
  g_callback = callback;
  return 1;
}

int registerTextTrackCallback(unsigned long, MediaTextTrackCallback) { return 1; }
int registerSubtitleSettingsChangedCallback(unsigned long, MediaSubtitleSettingsCallback) { return 1; }
int getOOBPlayerPosition(unsigned long, int*) { return 0; }
int hbbSelectDefaultAVComponent(AVComponentType) { return 1; }
