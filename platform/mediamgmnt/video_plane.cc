// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/video_plane.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace media {

namespace {

constexpr Rect kPlane{0, 0, kMediaPlaneWidth, kMediaPlaneHeight};
/// Beyond this many pieces, one copy of everything is cheaper than the bookkeeping.
constexpr std::size_t kMostPieces = 32;

std::size_t offsetOf(int x, int y) { return static_cast<std::size_t>(y) * kMediaPlaneStride + static_cast<std::size_t>(x) * 4; }

/// Calls @p handle with the offset and the length of each run of bytes in @p region: one for a part as wide as the plane.
template <typename Handler>
void forEachRun(const Region& region, Handler handle) {
  for (const Rect& rect : region) {
    const bool inOne = rect.width == kMediaPlaneWidth;
    const std::size_t rowBytes = static_cast<std::size_t>(rect.width) * 4;
    if (inOne) handle(offsetOf(0, rect.y), rowBytes * static_cast<std::size_t>(rect.height));
    for (int y = rect.y; !inOne && y < rect.y + rect.height; ++y) handle(offsetOf(rect.x, y), rowBytes);
  }
}

void blacken(unsigned char* canvas, const Region& region) {
  forEachRun(region, [&](std::size_t offset, std::size_t bytes) { std::memset(canvas + offset, 0, bytes); });
}

void copyParts(const unsigned char* from, unsigned char* to, const Region& region) {
  forEachRun(region, [&](std::size_t offset, std::size_t bytes) { std::memcpy(to + offset, from + offset, bytes); });
}

}  // namespace

VideoPlane& VideoPlane::instance() {
  static VideoPlane* const plane = new VideoPlane;
  return *plane;
}

bool VideoPlane::snapshot(unsigned char* pixels, std::size_t size) const {
  if (size < kMediaPlaneBytes) return false;
  const std::lock_guard lock(m_front);
  std::memcpy(pixels, m_memory.buffer(m_memory.front()), kMediaPlaneBytes);
  return true;
}

void VideoPlane::attach(VideoSurface& surface) {
  const std::lock_guard turn(m_turn);
  const auto isHigher = [&](const VideoSurface* other) { return isBelow(&surface, other); };
  m_surfaces.insert(std::find_if(m_surfaces.begin(), m_surfaces.end(), isHigher), &surface);
}

bool VideoPlane::isBelow(const VideoSurface* one, const VideoSurface* other) const {
  const auto placeOf = [&](const VideoSurface* surface) {
    const auto named = m_order.find(surface->m_height);
    return std::pair(named == m_order.end() ? m_order.size() : named->second, surface->m_height);
  };
  return placeOf(one) < placeOf(other);
}

void VideoPlane::arrange(std::span<const unsigned long> heights) {
  const std::lock_guard turn(m_turn);
  m_order.clear();
  for (const unsigned long height : heights) m_order.emplace(height, m_order.size());
  Region changed;
  const auto isBefore = [this](const VideoSurface* one, const VideoSurface* other) { return isBelow(one, other); };
  for (auto upper = m_surfaces.begin(); upper != m_surfaces.end(); ++upper) {
    for (auto lower = m_surfaces.begin(); lower != upper; ++lower) {
      if (isBelow(*upper, *lower)) changed.add(intersection((*lower)->area(), (*upper)->area()));
    }
  }
  std::stable_sort(m_surfaces.begin(), m_surfaces.end(), isBefore);
  compose(changed, Cause::Move);
}

void VideoPlane::detach(VideoSurface& surface) {
  const std::lock_guard turn(m_turn);
  std::erase(m_surfaces, &surface);
}

/// @p part, which is in @p surface, without what surfaces above it cover.
Region VideoPlane::uncovered(const VideoSurface& surface, const Rect& part) const {
  Region region(part);
  const auto own = std::find(m_surfaces.begin(), m_surfaces.end(), &surface);
  std::for_each(std::next(own), m_surfaces.end(), [&](const VideoSurface* above) { region.subtract(above->area()); });
  return region;
}

bool VideoPlane::showsIn(const VideoSurface& surface, const Region& changed) const {
  const Region shown = uncovered(surface, surface.area());
  return std::any_of(shown.begin(), shown.end(), [&](const Rect& rect) { return changed.intersects(rect); });
}

/// Makes and shows the next picture: drawn afresh in @p changed, as the present one elsewhere.
/// A surface is drawn whole; where it spills out of the changed part, the present picture is put back.
void VideoPlane::compose(const Region& changed, Cause cause) {
  if (changed.empty()) return;
  const unsigned front = m_memory.front();
  const unsigned back = (front + 1) % PlaneMemory::kBufferCount;
  unsigned char* const canvas = m_memory.buffer(back);
  Region old = m_behind[back];
  Region black = changed;
  for (VideoSurface* const surface : m_surfaces) {
    if (!showsIn(*surface, changed)) continue;
    const Rect drawn = surface->draw(canvas);
    black.add(changed.within(surface->area()));  // its bars cover the pictures below
    black.subtract(drawn);
    old.add(drawn);
  }
  blacken(canvas, black);
  old.subtract(changed);
  copyParts(m_memory.buffer(front), canvas, old);
  publish(back, changed, cause);
}

void VideoPlane::publish(unsigned index, const Region& changed, Cause cause) {
  for (Region& behind : m_behind) {
    behind.add(changed);
    behind.simplify(kMostPieces);
  }
  m_behind[index].clear();
  {
    const std::lock_guard lock(m_front);
    m_memory.publish(index, cause == Cause::Move);
  }
  m_memory.ring();
}

VideoSurface::VideoSurface(VideoPlane& plane, unsigned long height) : m_plane(plane), m_height(height), m_rect(kPlane) {
  m_plane.attach(*this);
}

VideoSurface::~VideoSurface() {
  clear();
  m_plane.detach(*this);
}

void VideoSurface::setRect(Rect rect) {
  const std::lock_guard turn(m_plane.m_turn);
  if (rect == m_rect) return;
  Region changed = m_plane.uncovered(*this, area());
  m_rect = rect;
  changed.add(m_plane.uncovered(*this, area()));
  m_plane.compose(changed, VideoPlane::Cause::Move);
}

void VideoSurface::paint(GstSample* sample) {
  std::unique_ptr<const Picture> picture = Picture::fromSample(sample);
  if (picture == nullptr) return;
  picture = m_reducer.reduce(std::move(picture));
  const std::lock_guard turn(m_plane.m_turn);
  const Rect place = picture->placeIn(m_rect);
  const bool samePlace = m_picture != nullptr && m_picture->placeIn(m_rect) == place;
  m_picture.swap(picture);
  ++m_frames;
  // The bars of a picture that stays where it is are on the plane already.
  const Region changed = m_plane.uncovered(*this, samePlace ? intersection(place, kPlane) : area());
  if (changed.empty()) return;
  m_plane.compose(changed);
  ++m_plane.m_frames;
}

void VideoSurface::clear() {
  const std::lock_guard turn(m_plane.m_turn);
  const Region changed = m_plane.uncovered(*this, area());
  m_picture.reset();
  m_plane.compose(changed);
}

Rect VideoSurface::area() const { return m_picture == nullptr ? Rect{} : intersection(m_rect, kPlane); }

Rect VideoSurface::draw(unsigned char* canvas) {
  const Rect place = m_picture->placeIn(m_rect);
  return m_painter.draw(*m_picture, place, canvas) ? intersection(place, kPlane) : Rect{};
}

}  // namespace media
