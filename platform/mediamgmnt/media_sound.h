// SPDX-License-Identifier: Apache-2.0
// What the reference media library offers a shell about sound and languages. A shell looks these names up at run time (dlsym) and
// does without where another media library lacks them. Thread: any.
#pragma once

#include "host/mediamgmnt.h"

/// A block of what a loudspeaker would play from this moment on. Valid during the call.
struct MediaSound {
  unsigned long player;  ///< its handle
  const std::int16_t* samples;
  std::uint32_t frames;    ///< samples of each channel
  std::uint32_t channels;  ///< interleaved
  std::uint32_t rate;      ///< frames a second
};

/// Called on a thread of the library, one call at a time for each player, which waits meanwhile.
using MediaSoundTap = void (*)(const MediaSound* sound, void* user);

extern "C" {
/// Sources that are opened from now on play to @p tap instead of a device; null ends that. Waits for calls that are running.
MEDIAMGMNT_API void mediaTapSound(MediaSoundTap tap, void* user);
/// The viewer's languages for sound (1) or subtitles (2), most preferred first, "deu,eng"; "" for none. They choose the components
/// that presentations begin with. Subtitles are only shown once a page selects them. @return 0 for another type or no text.
MEDIAMGMNT_API int mediaPreferLanguages(int componentType, const char* languages);
}
