// SPDX-License-Identifier: Apache-2.0
// Loads a media library and puts it behind the ten media functions of this process, which the plugin finds as ordinary symbols.
// Beside them a library may offer a video plane and an orderly end (media_plane.h), its sound and a choice of languages
// (media_sound.h).
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/mediamgmnt.h"
#include "platform/mediamgmnt/media_plane.h"
#include "platform/mediamgmnt/media_sound.h"

#define AVCSHELL_API __attribute__((visibility("default")))

namespace shell {

/// One per process at a time. While there is none, the ten functions answer as a library without resources would: 0.
/// Made before the first player and destroyed after the last; the library's code stays loaded until the process ends, because its
/// threads may still run out of it. Threads: construction and destruction on the main thread, the rest any.
class AVCSHELL_API MediaLibrary {
 public:
  /// @return null, with one line in @p error that says what is wrong, when the file cannot be loaded or lacks one of the ten.
  static std::unique_ptr<MediaLibrary> load(const std::string& path, std::string& error);
  MediaLibrary(const MediaLibrary&) = delete;
  MediaLibrary& operator=(const MediaLibrary&) = delete;
  ~MediaLibrary();

  bool hasPlane() const;
  /// Copies the present picture (kMediaPlaneBytes bytes, BGRx). @return false when there is no plane.
  bool snapshot(unsigned char* pixels, unsigned int size) const;
  bool exportPlane(MediaPlaneExport& out) const;
  unsigned long planeFrames() const;
  /// Stacks the players on the plane, the lowest first; see mediaPlaneArrange(). @return false where the library cannot.
  bool arrangePlane(const std::vector<unsigned long>& players) const;
  /// Content for an age above @p age is blocked from now on; a negative age ends that. @p country may be empty. @return false when
  /// the library has no such limit.
  bool setParentalLimit(int age, const std::string& country) const;
  /// Both are 32 hexadecimal digits. @return false when the library takes no keys.
  bool addClearKey(const std::string& keyId, const std::string& key) const;
  /// @return false when threads of closed players are left after @p timeoutMs. True at once where the library cannot tell.
  bool waitIdle(int timeoutMs) const;
  /// See mediaTapSound(). @return false where the library lets nobody listen.
  bool tapSound(MediaSoundTap tap, void* user) const;
  /// The viewer's languages for sound and subtitles, most preferred first, "deu,eng". @return false where the library does not ask.
  bool preferLanguages(const std::string& languages) const { return preferLanguages(languages, languages); }
  bool preferLanguages(const std::string& sound, const std::string& subtitles) const;
  /// Tells every player, and those to come. @return false where the library does not take them.
  bool changeSubtitleSettings(const _SubtitleSettingsParams& settings) const;

 private:
  MediaLibrary() = default;
};

}  // namespace shell
