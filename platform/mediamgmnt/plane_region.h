// SPDX-License-Identifier: Apache-2.0
// Rectangles of the video plane and sets of pixels made of them. Plain values in plane pixels: no threads, no failures.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace media {

struct Rect {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  bool operator==(const Rect&) const = default;
};

inline bool isEmpty(const Rect& rect) { return rect.width < 1 || rect.height < 1; }

/// What two rectangles share; empty when they share nothing. Edges are worked out in 64 bits: any int is a legal coordinate.
inline Rect intersection(const Rect& a, const Rect& b) {
  if (isEmpty(a) || isEmpty(b)) return {};
  const auto right = std::min(std::int64_t{a.x} + a.width, std::int64_t{b.x} + b.width);
  const auto bottom = std::min(std::int64_t{a.y} + a.height, std::int64_t{b.y} + b.height);
  const std::int64_t left = std::max(a.x, b.x);
  const std::int64_t top = std::max(a.y, b.y);
  if (right <= left || bottom <= top) return {};
  return {static_cast<int>(left), static_cast<int>(top), static_cast<int>(right - left), static_cast<int>(bottom - top)};
}

/// A set of pixels, kept as rectangles that do not overlap. Made for rectangles on the plane, whose edges fit an int.
class Region {
 public:
  Region() = default;
  explicit Region(const Rect& rect) { add(rect); }

  bool empty() const { return m_rects.empty(); }
  std::size_t size() const { return m_rects.size(); }
  auto begin() const { return m_rects.begin(); }
  auto end() const { return m_rects.end(); }
  void clear() { m_rects.clear(); }

  void add(const Rect& rect) {
    if (isEmpty(rect)) return;
    Region fresh;
    fresh.m_rects.push_back(rect);
    fresh.subtract(*this);
    m_rects.insert(m_rects.end(), fresh.begin(), fresh.end());
  }
  void add(const Region& other) {
    for (const Rect& rect : other) add(rect);
  }

  void subtract(const Rect& hole) {
    std::vector<Rect> left;
    for (const Rect& rect : m_rects) appendOutside(rect, intersection(rect, hole), left);
    m_rects.swap(left);
  }
  void subtract(const Region& other) {
    for (const Rect& rect : other) subtract(rect);
  }

  /// The part of this region that lies in @p frame.
  Region within(const Rect& frame) const {
    Region part;
    for (const Rect& rect : m_rects) part.add(intersection(rect, frame));
    return part;
  }

  bool intersects(const Rect& other) const {
    return std::any_of(begin(), end(), [&](const Rect& rect) { return !isEmpty(intersection(rect, other)); });
  }

  /// Gives up exactness for brevity: more than @p limit rectangles become the one around them all.
  void simplify(std::size_t limit) {
    if (m_rects.size() <= limit) return;
    Rect all = m_rects.front();
    for (const Rect& rect : m_rects) all = bounds(all, rect);
    m_rects.assign(1, all);
  }

 private:
  /// The parts of @p rect above, below, left and right of @p hole, which lies in it.
  static void appendOutside(const Rect& rect, const Rect& hole, std::vector<Rect>& out) {
    if (isEmpty(hole)) {
      out.push_back(rect);
      return;
    }
    const int holeRight = hole.x + hole.width;
    const int holeBottom = hole.y + hole.height;
    const Rect parts[] = {{rect.x, rect.y, rect.width, hole.y - rect.y},
                          {rect.x, holeBottom, rect.width, rect.y + rect.height - holeBottom},
                          {rect.x, hole.y, hole.x - rect.x, hole.height},
                          {holeRight, hole.y, rect.x + rect.width - holeRight, hole.height}};
    for (const Rect& part : parts) {
      if (!isEmpty(part)) out.push_back(part);
    }
  }

  static Rect bounds(const Rect& a, const Rect& b) {
    const int x = std::min(a.x, b.x);
    const int y = std::min(a.y, b.y);
    return {x, y, std::max(a.x + a.width, b.x + b.width) - x, std::max(a.y + a.height, b.y + b.height) - y};
  }

  std::vector<Rect> m_rects;
};

}  // namespace media
