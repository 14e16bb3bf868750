// SPDX-License-Identifier: Apache-2.0
#include "platform/shell/media_library.h"

#include <dlfcn.h>

#include <cstring>

#include "platform/shell/media_seam.h"

namespace shell {

namespace {

MediaFunctions s_table;

// Looks symbols up in one library and remembers the first that is missing.
class SymbolReader {
 public:
  explicit SymbolReader(void* library) : m_library(library) {}

  template <typename Function>
  void required(const char* name, Function& out) {
    optional(name, out);
    if (out == nullptr && m_missing == nullptr) m_missing = name;
  }

  template <typename Function>
  void optional(const char* name, Function& out) {
    out = reinterpret_cast<Function>(dlsym(m_library, name));
  }

  const char* missing() const { return m_missing; }

 private:
  void* m_library;
  const char* m_missing = nullptr;
};

void readRequired(SymbolReader& reader, MediaFunctions& out) {
  reader.required("openPlayer", out.openPlayer);
  reader.required("closePlayer", out.closePlayer);
  reader.required("cmdPlayer", out.cmdPlayer);
  reader.required("getPlayerProperty", out.getPlayerProperty);
  reader.required("setPlayerProperty", out.setPlayerProperty);
  reader.required("registerCallback", out.registerCallback);
  reader.required("registerTextTrackCallback", out.registerTextTrackCallback);
  reader.required("registerSubtitleSettingsChangedCallback", out.registerSubtitleSettingsChangedCallback);
  reader.required("getOOBPlayerPosition", out.getOOBPlayerPosition);
  reader.required("hbbSelectDefaultAVComponent", out.hbbSelectDefaultAVComponent);
}

void readOptional(SymbolReader& reader, MediaFunctions& out) {
  reader.optional("mediaPlaneSnapshot", out.planeSnapshot);
  reader.optional("mediaPlaneExport", out.planeExport);
  reader.optional("mediaPlaneFrames", out.planeFrames);
  reader.optional("mediaPlaneArrange", out.planeArrange);
  reader.optional("mediaSetParentalLimit", out.setParentalLimit);
  reader.optional("mediaAddClearKey", out.addClearKey);
  reader.optional("mediaLibraryWaitIdle", out.waitIdle);
  reader.optional("mediaTapSound", out.tapSound);
  reader.optional("mediaPreferLanguages", out.preferLanguages);
  reader.optional("mediaChangeSubtitleSettings", out.changeSubtitleSettings);
}

}  // namespace

std::unique_ptr<MediaLibrary> MediaLibrary::load(const std::string& path, std::string& error) {
  // Local: its ten functions must not take the place of ours. Lazy binding would report a missing symbol in the middle of a run.
  void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): glibc keeps the text for each thread
    error = "cannot load the media library: " + std::string(dlerror());
    return nullptr;
  }
  MediaFunctions functions{};
  SymbolReader reader(library);
  readRequired(reader, functions);
  // A library that was linked against this seam finds our function in place of its own missing one.
  if (reader.missing() == nullptr && functions.openPlayer == &::openPlayer) {
    error = path + " is no media library: it has no openPlayer of its own";
  } else if (reader.missing() != nullptr) {
    error = path + " is no media library: it has no function " + reader.missing();
  }
  if (!error.empty()) {
    dlclose(library);
    return nullptr;
  }
  readOptional(reader, functions);
  s_table = functions;
  setMediaFunctions(&s_table);
  return std::unique_ptr<MediaLibrary>(new MediaLibrary);
}

MediaLibrary::~MediaLibrary() { setMediaFunctions(nullptr); }

bool MediaLibrary::hasPlane() const { return s_table.planeSnapshot != nullptr; }

bool MediaLibrary::snapshot(unsigned char* pixels, unsigned int size) const {
  return s_table.planeSnapshot != nullptr && s_table.planeSnapshot(pixels, size) != 0;
}

bool MediaLibrary::exportPlane(MediaPlaneExport& out) const {
  return s_table.planeExport != nullptr && s_table.planeExport(&out) != 0;
}

unsigned long MediaLibrary::planeFrames() const { return s_table.planeFrames == nullptr ? 0 : s_table.planeFrames(); }

bool MediaLibrary::arrangePlane(const std::vector<unsigned long>& players) const {
  if (s_table.planeArrange == nullptr) return false;
  s_table.planeArrange(players.data(), static_cast<unsigned int>(players.size()));
  return true;
}

bool MediaLibrary::setParentalLimit(int age, const std::string& country) const {
  return s_table.setParentalLimit != nullptr && s_table.setParentalLimit(age, country.c_str()) != 0;
}

bool MediaLibrary::addClearKey(const std::string& keyId, const std::string& key) const {
  return s_table.addClearKey != nullptr && s_table.addClearKey(keyId.c_str(), key.c_str()) != 0;
}

bool MediaLibrary::waitIdle(int timeoutMs) const { return s_table.waitIdle == nullptr || s_table.waitIdle(timeoutMs) != 0; }

bool MediaLibrary::tapSound(MediaSoundTap tap, void* user) const {
  if (s_table.tapSound == nullptr) return false;
  s_table.tapSound(tap, user);
  return true;
}

bool MediaLibrary::preferLanguages(const std::string& sound, const std::string& subtitles) const {
  if (s_table.preferLanguages == nullptr) return false;
  constexpr int kAudio = 1;
  constexpr int kSubtitles = 2;
  return s_table.preferLanguages(kAudio, sound.c_str()) != 0 && s_table.preferLanguages(kSubtitles, subtitles.c_str()) != 0;
}

bool MediaLibrary::changeSubtitleSettings(const _SubtitleSettingsParams& settings) const {
  return s_table.changeSubtitleSettings != nullptr && s_table.changeSubtitleSettings(&settings) != 0;
}

}  // namespace shell
