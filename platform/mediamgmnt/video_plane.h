// SPDX-License-Identifier: Apache-2.0
// The video plane and the surfaces that players put on it. A surface has a rectangle and a last picture; the plane keeps the one
// image in which all of them are seen, one above the other, black where there is none.
#pragma once

#include <gst/gst.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

#include "platform/mediamgmnt/frame_painter.h"
#include "platform/mediamgmnt/plane_memory.h"
#include "platform/mediamgmnt/plane_region.h"

namespace media {

class VideoSurface;

/// Composes the surfaces into pictures of 1280x720 pixels, each complete before anybody can see it.
///
/// A new picture is drawn straight into a buffer that nobody looks at. What that buffer lacks besides the drawn part is copied from
/// the newest picture; with one surface that stays where it is this is nothing.
/// Threads: every public function may be called from any.
/// Locks: m_turn (one composition at a time, held while a picture is drawn, a few milliseconds), then m_front (held for a switch of
/// buffers or a snapshot). Nothing outside the plane is called with either held, save GStreamer's converter.
class VideoPlane {
 public:
  /// The process's plane. Never destroyed: streaming threads may outlive main().
  static VideoPlane& instance();

  VideoPlane() = default;
  VideoPlane(const VideoPlane&) = delete;
  VideoPlane& operator=(const VideoPlane&) = delete;
  /// All surfaces must be gone.
  ~VideoPlane() = default;

  /// Copies the newest picture. Never waits for a drawing. @return false when @p size is less than kMediaPlaneBytes.
  bool snapshot(unsigned char* pixels, std::size_t size) const;
  /// @return false when the plane cannot be shared on this system; @p out is left alone.
  bool exportTo(MediaPlaneExport& out) const { return m_memory.exportTo(out); }
  /// Frames drawn so far. A frame whose whole place is outside the plane or covered is not drawn.
  unsigned long frames() const { return m_frames; }
  /// Stacks the surfaces by their heights as @p heights has them, the lowest first; heights that are not named lie above, in their
  /// own order. Also those of surfaces to come. What that uncovers is redrawn before this returns.
  void arrange(std::span<const unsigned long> heights);

 private:
  friend class VideoSurface;

  void attach(VideoSurface& surface);
  void detach(VideoSurface& surface);
  // The following want m_turn.
  bool isBelow(const VideoSurface* one, const VideoSurface* other) const;
  Region uncovered(const VideoSurface& surface, const Rect& part) const;
  bool showsIn(const VideoSurface& surface, const Region& changed) const;
  enum class Cause { Picture, Move };
  void compose(const Region& changed, Cause cause = Cause::Picture);
  void publish(unsigned index, const Region& changed, Cause cause);

  std::atomic<unsigned long> m_frames = 0;
  mutable std::mutex m_turn;
  std::map<unsigned long, std::size_t> m_order;            ///< under m_turn; places by height, of those that arrange() named
  std::vector<VideoSurface*> m_surfaces;                   ///< under m_turn; lowest first
  std::array<Region, PlaneMemory::kBufferCount> m_behind;  ///< under m_turn; where a buffer differs from the newest picture
  mutable std::mutex m_front;
  PlaneMemory m_memory;  ///< front switched under both locks, so read under either; other buffers under m_turn
};

/// One player's picture on the plane.
///
/// Created with the whole plane as its rectangle and no picture, above all surfaces that are not higher or arranged above it.
/// The picture keeps its display aspect ratio in the rectangle; the rest of the rectangle is black, and covers what is below.
/// Threads: paint() one at a time (the streaming thread); all others any, also at the same time.
class VideoSurface {
 public:
  /// @p height orders the surfaces of a plane: a higher one covers a lower one, unless they are arranged otherwise.
  explicit VideoSurface(unsigned long height = 0) : VideoSurface(VideoPlane::instance(), height) {}
  explicit VideoSurface(VideoPlane& plane, unsigned long height = 0);
  VideoSurface(const VideoSurface&) = delete;
  VideoSurface& operator=(const VideoSurface&) = delete;
  /// Clears its area. paint() must not run any more.
  ~VideoSurface();

  /// In plane pixels; any part of it may lie outside the plane, and an empty one hides the surface. The last picture is redrawn at
  /// the new place before this returns.
  void setRect(Rect rect);
  /// Draws and keeps the sample's picture. A sample without a picture that can be drawn is ignored; the one before stays.
  /// The caller keeps its reference.
  void paint(GstSample* sample);
  /// Forgets the picture: what is below, or black, shows.
  void clear();
  /// Pictures taken by paint() so far, those that are outside the plane or covered too.
  unsigned long frames() const { return m_frames; }

 private:
  friend class VideoPlane;

  /// What it covers of the plane: nothing without a picture.
  Rect area() const;
  /// @return the part of @p canvas that was drawn.
  Rect draw(unsigned char* canvas);

  VideoPlane& m_plane;
  const unsigned long m_height;
  FrameReducer m_reducer;  ///< the streaming thread's
  std::atomic<unsigned long> m_frames = 0;
  // Under the plane's m_turn:
  Rect m_rect;
  std::unique_ptr<const Picture> m_picture;
  FramePainter m_painter;
};

}  // namespace media
