// SPDX-License-Identifier: Apache-2.0
#include "platform/browser/plane_view.h"

#include <fcntl.h>
#include <glib-unix.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <utility>

namespace browser {

namespace {

constexpr guint kMostWaitMilliseconds = 60;      // what moves without the page changing goes on then
constexpr gint64 kPageRestMicroseconds = 25000;  // a page that paints all the time is not waited for: which frame would it be?

}  // namespace

PlaneView::PlaneView(std::function<void()> changed) : m_changed(std::move(changed)) {}

PlaneView::~PlaneView() { close(); }

bool PlaneView::open(GUnixFDList* descriptors, unsigned memoryBytes) {
  close();
  if (descriptors == nullptr || g_unix_fd_list_get_length(descriptors) != 2 || memoryBytes < sizeof(MediaPlaneHeader)) return false;
  const int memory = g_unix_fd_list_get(descriptors, 0, nullptr);
  m_tickFd = g_unix_fd_list_get(descriptors, 1, nullptr);
  struct stat facts = {};
  // What can shrink could take pictures away while they are painted.
  const bool steady = memory >= 0 && (fcntl(memory, F_GET_SEALS) & F_SEAL_SHRINK) != 0;
  const bool whole = steady && fstat(memory, &facts) == 0 && facts.st_size >= static_cast<off_t>(memoryBytes);
  void* const mapped = whole ? mmap(nullptr, memoryBytes, PROT_READ, MAP_SHARED, memory, 0) : MAP_FAILED;
  if (memory >= 0) ::close(memory);
  if (mapped != MAP_FAILED) m_memory = static_cast<unsigned char*>(mapped);
  m_bytes = memoryBytes;
  if (m_memory == nullptr || m_tickFd < 0 || !readLayout()) {
    close();
    return false;
  }
  m_source = g_unix_fd_add(m_tickFd, G_IO_IN, onTick, this);
  return true;
}

std::uint32_t PlaneView::read(std::uint32_t MediaPlaneHeader::*field) const {
  auto& plane = *reinterpret_cast<MediaPlaneHeader*>(m_memory);  // the memory is read-only, and only read
  return std::atomic_ref(plane.*field).load(std::memory_order_acquire);
}

// The page's process can write to the header at any time: what was checked once is kept.
bool PlaneView::readLayout() {
  m_bufferCount = read(&MediaPlaneHeader::bufferCount);
  m_firstBuffer = read(&MediaPlaneHeader::firstBufferOffset);
  const bool known = read(&MediaPlaneHeader::magic) == MediaPlaneHeader::kMagic &&
                     read(&MediaPlaneHeader::width) == kMediaPlaneWidth && read(&MediaPlaneHeader::height) == kMediaPlaneHeight &&
                     read(&MediaPlaneHeader::stride) == kMediaPlaneStride;
  return known && m_bufferCount > 0 && m_bufferCount <= 16 && m_firstBuffer % 4 == 0 &&
         m_firstBuffer + std::uint64_t{m_bufferCount} * kMediaPlaneBytes <= m_bytes;
}

void PlaneView::close() {
  if (m_source != 0) g_source_remove(std::exchange(m_source, 0));
  if (m_tickFd >= 0) ::close(std::exchange(m_tickFd, -1));
  stopWaiting();
  m_painted = false;
  if (m_memory != nullptr) munmap(std::exchange(m_memory, nullptr), m_bytes);
}

gboolean PlaneView::onTick(gint fd, GIOCondition, gpointer self) {
  std::uint64_t count = 0;
  if (::read(fd, &count, sizeof count) == sizeof count) static_cast<PlaneView*>(self)->takeTick();
  return G_SOURCE_CONTINUE;
}

bool PlaneView::mayWait() const { return m_painted && !m_pageDue && g_get_monotonic_time() - m_pageAt > kPageRestMicroseconds; }

// The shown picture is whole until all other buffers have been written.
void PlaneView::takeTick() {
  const bool waits = m_waiting != 0;
  if (waits && read(&MediaPlaneHeader::sequence) - m_shownSequence < m_bufferCount - 1) return;
  if (!waits && read(&MediaPlaneHeader::moved) != m_shownMoved && mayWait()) {
    const auto enough = [](gpointer self) -> gboolean {
      auto& view = *static_cast<PlaneView*>(self);
      view.m_waiting = 0;
      view.m_changed();
      return G_SOURCE_REMOVE;
    };
    m_waiting = g_timeout_add(kMostWaitMilliseconds, enough, this);
    return;
  }
  stopWaiting();
  m_changed();
}

void PlaneView::stopWaiting() {
  if (m_waiting != 0) g_source_remove(std::exchange(m_waiting, 0));
}

void PlaneView::pageChanges() {
  m_pageDue = true;
  m_pageAt = g_get_monotonic_time();
  stopWaiting();
}

const unsigned char* PlaneView::pictureToPaint() {
  if (m_waiting == 0) {
    m_shownMoved = read(&MediaPlaneHeader::moved);  // before what it may tell of
    m_shownSequence = read(&MediaPlaneHeader::sequence);
    const std::uint32_t front = read(&MediaPlaneHeader::front);
    m_shown = front < m_bufferCount ? front : 0;
    m_painted = true;
  }
  return m_memory + m_firstBuffer + std::size_t{m_shown} * kMediaPlaneBytes;
}

void PlaneView::paint(cairo_t* cairo, int width, int height) {
  m_pageDue = false;
  cairo_save(cairo);
  cairo_set_operator(cairo, CAIRO_OPERATOR_SOURCE);
  cairo_set_source_rgb(cairo, 0, 0, 0);
  cairo_rectangle(cairo, 0, 0, width, height);
  cairo_fill(cairo);
  if (m_memory != nullptr) {
    auto* const pixels = const_cast<unsigned char*>(pictureToPaint());  // it is only read
    cairo_surface_t* const picture =
        cairo_image_surface_create_for_data(pixels, CAIRO_FORMAT_RGB24, kMediaPlaneWidth, kMediaPlaneHeight, kMediaPlaneStride);
    cairo_scale(cairo, static_cast<double>(width) / kMediaPlaneWidth, static_cast<double>(height) / kMediaPlaneHeight);
    cairo_set_source_surface(cairo, picture, 0, 0);
    cairo_pattern_set_filter(cairo_get_source(cairo), width == kMediaPlaneWidth ? CAIRO_FILTER_FAST : CAIRO_FILTER_BILINEAR);
    cairo_rectangle(cairo, 0, 0, kMediaPlaneWidth, kMediaPlaneHeight);
    cairo_fill(cairo);
    cairo_surface_destroy(picture);
  }
  cairo_restore(cairo);
}

}  // namespace browser
