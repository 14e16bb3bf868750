// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <sys/eventfd.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "platform/mediamgmnt/media_plane.h"
#include "platform/mediamgmnt/plane_memory.h"
#include "platform/mediamgmnt/video_plane.h"

namespace media {

PlaneMemory::PlaneMemory() {
  if (!share()) m_bytes = static_cast<unsigned char*>(std::calloc(1, kBytes));
  if (m_bytes == nullptr) throw std::bad_alloc();
  header() = {
      MediaPlaneHeader::kMagic, kMediaPlaneWidth, kMediaPlaneHeight, kMediaPlaneStride, kBufferCount, kFirstBuffer, 0, 0, 0};
}

PlaneMemory::~PlaneMemory() {
  if (m_memoryFd < 0) {
    std::free(m_bytes);
    return;
  }
  munmap(m_bytes, kBytes);
  close(m_memoryFd);
  close(m_tickFd);
}

bool PlaneMemory::share() {
  const int memory = memfd_create("video-plane", MFD_CLOEXEC | MFD_ALLOW_SEALING);
  const int tick = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  void* mapped = MAP_FAILED;
  if (memory >= 0 && tick >= 0 && ftruncate(memory, kBytes) == 0) {
    mapped = mmap(nullptr, kBytes, PROT_READ | PROT_WRITE, MAP_SHARED, memory, 0);
  }
  if (mapped == MAP_FAILED) {
    if (memory >= 0) close(memory);
    if (tick >= 0) close(tick);
    return false;
  }
  // Readers get the very file. Seals keep them from writing or cutting it; a kernel without seals leaves them on their honour.
  fcntl(memory, F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_FUTURE_WRITE);
  m_memoryFd = memory;
  m_tickFd = tick;
  m_bytes = static_cast<unsigned char*>(mapped);
  return true;
}

unsigned PlaneMemory::front() const { return std::atomic_ref(header().front).load(std::memory_order_relaxed); }

void PlaneMemory::publish(unsigned index, bool moved) {
  if (moved) std::atomic_ref(header().moved).store(header().sequence + 1, std::memory_order_release);
  std::atomic_ref(header().front).store(index, std::memory_order_release);
  std::atomic_ref(header().sequence).fetch_add(1, std::memory_order_release);
  // No pixel of the next picture may be seen before this sequence number: that is how a reader knows that its copy was overtaken.
  __sync_synchronize();  // not std::atomic_thread_fence, which GCC refuses to build for ThreadSanitizer
}

void PlaneMemory::ring() const {
  if (m_tickFd < 0) return;
  const std::uint64_t one = 1;
  // Refused only when 2^64-2 rings were not heard: the bell is still ringing then.
  [[maybe_unused]] const ssize_t written = write(m_tickFd, &one, sizeof one);
}

bool PlaneMemory::exportTo(MediaPlaneExport& out) const {
  if (m_memoryFd < 0) return false;
  out = {m_memoryFd, m_tickFd, kBytes};
  return true;
}

}  // namespace media

extern "C" {

int mediaPlaneSnapshot(unsigned char* pixels, unsigned int size) {
  if (pixels == nullptr) return 0;
  return media::VideoPlane::instance().snapshot(pixels, size) ? 1 : 0;
}

int mediaPlaneExport(MediaPlaneExport* out) {
  if (out == nullptr) return 0;
  return media::VideoPlane::instance().exportTo(*out) ? 1 : 0;
}

unsigned long mediaPlaneFrames() { return media::VideoPlane::instance().frames(); }

void mediaPlaneArrange(const unsigned long* players, unsigned int count) {
  media::VideoPlane::instance().arrange({players, players == nullptr ? 0 : count});
}
}
