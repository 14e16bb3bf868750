// SPDX-License-Identifier: Apache-2.0
#include "fuzz/quiet_media_library.h"

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <utility>

#include "host/mediamgmnt.h"

namespace {

struct Library {
  std::mutex mutex;
  std::string answer;
  unsigned long lastHandle = 0;
  MediaMessageCallback callback = nullptr;
};

Library& library() {
  static Library* const instance = new Library;  // outlives the threads that still use it at exit
  return *instance;
}

/// Touches every byte, as a library that copies the text would.
int accept(const char* text) {
  const volatile std::size_t length = text != nullptr ? std::strlen(text) : 0;
  return length != static_cast<std::size_t>(-1) ? 1 : 0;
}

}  // namespace

void fuzz::setAnswer(std::string answer) {
  const std::lock_guard<std::mutex> lock(library().mutex);
  library().answer = std::move(answer);
}

bool fuzz::say(const std::string& word) {
  unsigned long handle = 0;
  MediaMessageCallback callback = nullptr;
  {
    const std::lock_guard<std::mutex> lock(library().mutex);
    handle = library().lastHandle;
    callback = library().callback;
  }
  if (callback == nullptr) {
    return false;
  }
  callback(handle, word.c_str(), nullptr);
  return true;
}

extern "C" {

unsigned long openPlayer(int /*kind*/) {
  const std::lock_guard<std::mutex> lock(library().mutex);
  return ++library().lastHandle;
}

int closePlayer(unsigned long /*handle*/) { return 1; }

int cmdPlayer(unsigned long /*handle*/, const char* command, const char* argument) { return accept(command) & accept(argument); }

int getPlayerProperty(unsigned long /*handle*/, const char* /*key*/, char* buffer, int size) {
  const std::lock_guard<std::mutex> lock(library().mutex);
  std::snprintf(buffer, static_cast<std::size_t>(size), "%s", library().answer.c_str());
  return library().answer.empty() ? 0 : 1;
}

int setPlayerProperty(unsigned long /*handle*/, const char* key, const char* value) { return accept(key) & accept(value); }

int registerCallback(unsigned long /*handle*/, MediaMessageCallback callback) {
  const std::lock_guard<std::mutex> lock(library().mutex);
  library().callback = callback;
  return 1;
}

int registerTextTrackCallback(unsigned long /*handle*/, MediaTextTrackCallback /*callback*/) { return 1; }

int registerSubtitleSettingsChangedCallback(unsigned long /*handle*/, MediaSubtitleSettingsCallback /*callback*/) { return 1; }

int getOOBPlayerPosition(unsigned long /*handle*/, int* /*position*/) { return 0; }

int hbbSelectDefaultAVComponent(AVComponentType /*type*/) { return 1; }
}
