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
  if (m_memory != nullptr) munmap(std::exchange(m_memory, nullptr), m_bytes);
}

gboolean PlaneView::onTick(gint fd, GIOCondition, gpointer self) {
  std::uint64_t count = 0;
  if (::read(fd, &count, sizeof count) == sizeof count) static_cast<PlaneView*>(self)->m_changed();
  return G_SOURCE_CONTINUE;
}

void PlaneView::paint(cairo_t* cairo, int width, int height) {
  cairo_save(cairo);
  cairo_set_operator(cairo, CAIRO_OPERATOR_SOURCE);
  cairo_set_source_rgb(cairo, 0, 0, 0);
  cairo_rectangle(cairo, 0, 0, width, height);
  cairo_fill(cairo);
  if (m_memory != nullptr) {
    const std::uint32_t front = read(&MediaPlaneHeader::front);
    const std::uint32_t index = front < m_bufferCount ? front : 0;
    unsigned char* const pixels = m_memory + m_firstBuffer + std::size_t{index} * kMediaPlaneBytes;
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
