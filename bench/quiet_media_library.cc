// SPDX-License-Identifier: Apache-2.0
// A media library that costs nothing: what the benchmarks of the plugin itself are linked with.
#include "bench/quiet_media_library.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace {

std::atomic<unsigned long> g_nextHandle{1};
std::atomic<MediaMessageCallback> g_callback{nullptr};
std::atomic<void (*)()> g_onSeek{nullptr};
std::atomic<unsigned long> g_reads{0};
std::string g_audioLength;
std::vector<std::string> g_audio;

constexpr std::string_view kNumber = "1234.50";

std::string_view answerTo(const char* key) {
  if (g_audio.empty() || std::strstr(key, "_COMPONENT.") == nullptr) return kNumber;
  if (std::strcmp(key, mediamgmnt::property::kAudioLength) == 0) return g_audioLength;
  const std::size_t prefix = std::strlen(mediamgmnt::property::kAudioItemPrefix);
  if (std::strncmp(key, mediamgmnt::property::kAudioItemPrefix, prefix) != 0) return "0";
  const auto index = static_cast<std::size_t>(std::atoi(key + prefix));
  return index < g_audio.size() ? std::string_view(g_audio[index]) : mediamgmnt::kNotAvailable;
}

}  // namespace

void quiet::sendWord(unsigned long handle, const char* word) {
  if (const MediaMessageCallback callback = g_callback) callback(handle, word, nullptr);
}

void quiet::onSeek(void (*function)()) { g_onSeek = function; }

void quiet::listAudio(int count) {
  g_audioLength = std::to_string(count);
  g_audio.clear();
  for (int i = 0; i < count; ++i) {
    g_audio.push_back("1|mp4a.40.2|0|" + std::to_string(i) + '|' + std::to_string(256 + i) + "|||0||Stereo|eng|0|2|");
  }
}

unsigned long quiet::reads() { return g_reads; }

unsigned long openPlayer(int) { return g_nextHandle++; }
int closePlayer(unsigned long) { return 1; }

int cmdPlayer(unsigned long, const char* command, const char*) {
  if (std::strcmp(command, mediamgmnt::command::kSeek) == 0) {
    if (const auto function = g_onSeek.load()) function();
  }
  return 1;
}

int getPlayerProperty(unsigned long, const char* key, char* buffer, int size) {
  g_reads.fetch_add(1, std::memory_order_relaxed);
  const std::string_view answer = answerTo(key);
  const std::size_t length = std::min(answer.size(), static_cast<std::size_t>(size) - 1);
  std::memcpy(buffer, answer.data(), length);
  buffer[length] = '\0';
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
