// SPDX-License-Identifier: Apache-2.0
// From a decoded picture to pixels of the video plane: mapping, fitting, scaling, colour conversion and clipping.
// The plane (video_plane.h) decides when and over what a picture is drawn; nothing here locks.
#pragma once

#include <gst/video/video.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/mediamgmnt/plane_region.h"

namespace media {

/// The shape in which a picture is meant to be seen: its size times its pixel aspect ratio. Both parts are above 0.
struct DisplayAspect {
  std::int64_t width;
  std::int64_t height;
};

/// One decoded picture, mapped for reading as long as this object lives. Immutable.
class Picture {
 public:
  /// @return null when the sample holds no raw picture that can be drawn: no caps, no format, no buffer, too few bytes, single
  /// fields. The sample's buffer is kept, the sample is not.
  static std::unique_ptr<const Picture> fromSample(GstSample* sample);
  /// @return null when @p buffer cannot be mapped as @p info says. Keeps a reference of its own.
  static std::unique_ptr<const Picture> fromBuffer(GstBuffer* buffer, const GstVideoInfo& info, const DisplayAspect& aspect);
  Picture(const Picture&) = delete;
  Picture& operator=(const Picture&) = delete;
  ~Picture();

  const GstVideoFrame& frame() const { return m_frame; }
  const DisplayAspect& aspect() const { return m_aspect; }
  int width() const { return GST_VIDEO_FRAME_WIDTH(&m_frame); }
  int height() const { return GST_VIDEO_FRAME_HEIGHT(&m_frame); }
  /// The largest place of this picture's shape in the middle of @p rect; empty in an empty one.
  Rect placeIn(const Rect& rect) const;

 private:
  Picture(const GstVideoFrame& frame, const DisplayAspect& aspect) : m_frame(frame), m_aspect(aspect) {}
  GstVideoFrame m_frame;
  DisplayAspect m_aspect;
};

/// A rectangle of pixels in the plane's format. Borrowed.
struct Target {
  unsigned char* pixels;
  int width;
  int height;
  int stride;
};

/// A GstVideoConverter that is made anew only when what it is asked for changes. One thread at a time.
///
/// It writes exactly the target. (The converter's own destination options would do for some formats only: where no short cut exists
/// for a format, it writes the target's rows from the left edge to the right one, whatever it is told about borders.)
class PixelConverter {
 public:
  PixelConverter() = default;
  PixelConverter(const PixelConverter&) = delete;
  PixelConverter& operator=(const PixelConverter&) = delete;
  ~PixelConverter();

  /// Scales the part @p source of the picture, which lies inside it, to @p target.
  /// @return false when this format cannot be converted; nothing was drawn then.
  bool convert(const Picture& picture, const Rect& source, const Target& target);

 private:
  bool prepare(const GstVideoInfo& input, const Rect& source, const GstVideoInfo& output);

  GstVideoConverter* m_converter = nullptr;
  GstVideoInfo m_input{};
  GstVideoInfo m_output{};
  Rect m_source;
};

/// Draws the pictures of one stream on the plane. One thread at a time.
class FramePainter {
 public:
  /// Draws what lies on the plane of the picture scaled to @p place. @p canvas is a whole plane.
  /// @return false when this format cannot be converted; nothing was drawn then.
  bool draw(const Picture& picture, const Rect& place, unsigned char* canvas);

 private:
  bool drawClipped(const Picture& picture, const Rect& place, const Rect& visible, unsigned char* canvas);

  PixelConverter m_converter;
  std::vector<unsigned char> m_scratch;
};

/// Makes pictures that take longer than a frame to draw (4K) small enough, before anybody waits for them. One thread at a time.
class FrameReducer {
 public:
  /// @return @p picture itself when it is quick to draw, else the same at the plane's resolution.
  std::unique_ptr<const Picture> reduce(std::unique_ptr<const Picture> picture);

 private:
  PixelConverter m_converter;
};

}  // namespace media
