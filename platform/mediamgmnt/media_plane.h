// SPDX-License-Identifier: Apache-2.0
// What the reference media library offers a shell beside the ten functions. A shell looks these names up at run time (dlsym) and
// does without where another media library lacks them. Thread: any.
#pragma once

#include "host/mediamgmnt.h"

/// The video plane is 1280x720 pixels, BGRx (bytes blue, green, red, unused), rows of 5120 bytes, black where nothing is presented.
inline constexpr int kMediaPlaneWidth = 1280;
inline constexpr int kMediaPlaneHeight = 720;
inline constexpr int kMediaPlaneStride = kMediaPlaneWidth * 4;
inline constexpr int kMediaPlaneBytes = kMediaPlaneStride * kMediaPlaneHeight;

/// How another process shows the plane: map `memoryFd` read-only (a MediaPlaneHeader, then `bufferCount` pictures, each at
/// `firstBufferOffset + i * kMediaPlaneBytes`) and wait on `tickFd`. The file descriptors stay the library's; duplicate to keep
/// them.
struct MediaPlaneExport {
  int memoryFd;
  int tickFd;  ///< eventfd, written after each new picture
  unsigned int memoryBytes;
};

struct MediaPlaneHeader {
  static constexpr std::uint32_t kMagic = 0x31564341;  ///< "ACV1"
  std::uint32_t magic;
  std::uint32_t width, height, stride;
  std::uint32_t bufferCount;
  std::uint32_t firstBufferOffset;
  std::uint32_t front;     ///< index of the newest complete picture; atomic access
  std::uint32_t sequence;  ///< counts pictures; atomic access; a reader that sees it unchanged after its copy has a whole picture
                           ///< unless it advanced by bufferCount - 1 or more
  std::uint32_t moved;  ///< the sequence of the newest picture in which a player's rectangle or place among the others is another
                        ///< one; atomic access, set before that picture is the front one
};

extern "C" {
/// Copies the present picture into @p pixels, @p size bytes. @return 0 when size is less than kMediaPlaneBytes.
MEDIAMGMNT_API int mediaPlaneSnapshot(unsigned char* pixels, unsigned int size);
/// @return 0 when the plane cannot be shared on this system.
MEDIAMGMNT_API int mediaPlaneExport(MediaPlaneExport* out);
/// Number of video frames drawn on the plane since the process started, all players together.
MEDIAMGMNT_API unsigned long mediaPlaneFrames();
/// Stacks the players on the plane as @p players names their handles, the lowest first; what is covered otherwise then is on the
/// plane when this returns. Players that are not named lie above those that are, in the order of their handles. A player may be
/// named before it exists. A null @p players, or a @p count of 0, stacks all by their handles, as it is without this call.
/// Waits for a picture that is just being drawn, a few milliseconds.
MEDIAMGMNT_API void mediaPlaneArrange(const unsigned long* players, unsigned int count);
/// Sets the viewer's parental limit, for all players, present and future: content for an age above @p age is blocked. A negative
/// age ends the limit. @p country is two letters, or empty or null for none: the country whose ratings count.
/// @return 0, and nothing changes, for another country text.
MEDIAMGMNT_API int mediaSetParentalLimit(int age, const char* country);
/// Gives a key for content that is protected with clear keys, for all players, present and future. Both texts are 32 hexadecimal
/// digits.
/// @return 0 for other texts.
MEDIAMGMNT_API int mediaAddClearKey(const char* keyId, const char* key);
/// Waits until no thread of a closed player is left, at most @p timeoutMs. @return 0 when some are. For tests and orderly ends.
MEDIAMGMNT_API int mediaLibraryWaitIdle(int timeoutMs);
}
