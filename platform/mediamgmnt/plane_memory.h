// SPDX-License-Identifier: Apache-2.0
// The memory behind the video plane: four pictures, in a file in memory that other processes can map, with a bell for them.
// Owned by VideoPlane (video_plane.h); defined in plane_export.cc beside the functions that hand it out.
#pragma once

#include <cstdint>

#include "platform/mediamgmnt/media_plane.h"

namespace media {

/// Construction never fails for want of sharing: then the memory is the process's own and exportTo() says no.
/// Threads: buffer() any; publish() one thread at a time; front() the publishing thread, or under the lock that it publishes under.
class PlaneMemory {
 public:
  /// Four, so that a reader can show the newest one for two pictures more before it is written again.
  static constexpr unsigned kBufferCount = 4;

  PlaneMemory();
  PlaneMemory(const PlaneMemory&) = delete;
  PlaneMemory& operator=(const PlaneMemory&) = delete;
  ~PlaneMemory();

  /// kMediaPlaneBytes bytes, black at first.
  unsigned char* buffer(unsigned index) const { return m_bytes + kFirstBuffer + index * kBufferBytes; }
  unsigned front() const;
  /// Makes @p index the newest complete picture for readers everywhere.
  /// @p moved: a player's rectangle, or its place among the others, has changed with it.
  void publish(unsigned index, bool moved);
  /// Rings for the readers of other processes. Apart from publish() so that no lock is held over the system call.
  void ring() const;
  /// @return false when other processes cannot see this memory; @p out is left alone.
  bool exportTo(MediaPlaneExport& out) const;

 private:
  static constexpr unsigned kFirstBuffer = 4096;
  static constexpr unsigned kBufferBytes = kMediaPlaneBytes;
  static constexpr unsigned kBytes = kFirstBuffer + kBufferCount * kBufferBytes;

  bool share();
  MediaPlaneHeader& header() const { return *reinterpret_cast<MediaPlaneHeader*>(m_bytes); }

  int m_memoryFd = -1;
  int m_tickFd = -1;
  unsigned char* m_bytes = nullptr;
};

}  // namespace media
