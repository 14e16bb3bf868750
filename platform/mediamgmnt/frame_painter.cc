// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/frame_painter.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "platform/mediamgmnt/media_plane.h"

namespace media {

namespace {

constexpr Rect kPlane{0, 0, kMediaPlaneWidth, kMediaPlaneHeight};
/// Full HD takes about 10 ms to draw; four times that would hold up the other players for longer than a frame.
constexpr int kMostDirectPixels = 1920 * 1088;
/// Source parts start and end at multiples of this: the coarsest chroma grid (4:1:0) stays whole.
constexpr std::int64_t kCropGrid = 4;
/// Above this size a clipped picture is magnified so much that single source pixels fill the plane.
constexpr std::int64_t kLargestScratch = 3072;

bool isDrawable(const GstVideoInfo& info) {
  const GstVideoFormatInfo* const format = info.finfo;
  return format != nullptr && format->unpack_func != nullptr && info.width > 0 && info.height > 0 &&
         GST_VIDEO_INFO_INTERLACE_MODE(&info) != GST_VIDEO_INTERLACE_MODE_ALTERNATE;
}

DisplayAspect aspectOf(const GstVideoInfo& info) {
  const std::int64_t numerator = std::max(info.par_n, 1);
  const std::int64_t denominator = std::max(info.par_d, 1);
  return {info.width * numerator, info.height * denominator};
}

/// value * multiplier / divisor, rounded; the product of a picture's shape and a rectangle's side can pass 64 bits.
std::int64_t scaled(std::int64_t value, std::int64_t multiplier, std::int64_t divisor) {
  return static_cast<std::int64_t>(
      gst_util_uint64_scale_round(static_cast<guint64>(value), static_cast<guint64>(multiplier), static_cast<guint64>(divisor)));
}

GstVideoInfo planeInfo(const GstVideoInfo& input, int width, int height) {
  GstVideoInfo info;
  gst_video_info_set_format(&info, GST_VIDEO_FORMAT_BGRx, static_cast<guint>(width), static_cast<guint>(height));
  info.fps_n = input.fps_n;  // a converter is refused when it would have to change the frame rate
  info.fps_d = input.fps_d;
  return info;
}

GstStructure* converterOptions(const Rect& source) {
  return gst_structure_new("options", GST_VIDEO_CONVERTER_OPT_SRC_X, G_TYPE_INT, source.x, GST_VIDEO_CONVERTER_OPT_SRC_Y,
                           G_TYPE_INT, source.y, GST_VIDEO_CONVERTER_OPT_SRC_WIDTH, G_TYPE_INT, source.width,
                           GST_VIDEO_CONVERTER_OPT_SRC_HEIGHT, G_TYPE_INT, source.height, GST_VIDEO_CONVERTER_OPT_RESAMPLER_METHOD,
                           GST_TYPE_VIDEO_RESAMPLER_METHOD, GST_VIDEO_RESAMPLER_METHOD_LINEAR, nullptr);
}

/// One direction of a clipped drawing: which source pixels are needed, and where on the plane they come to lie.
struct Span {
  int source;
  int sourceLength;
  std::int64_t target;
  std::int64_t targetLength;
};

/// The source pixels behind the visible part, with the neighbours that the filter reads, and exactly their share of the place.
/// Without neighbours and share, so with edges up to a source pixel off, where they would need too much memory.
Span neededSpan(int sourceSize, std::int64_t placeStart, std::int64_t placeLength, int visibleStart, int visibleLength) {
  const std::int64_t margin = 2 + sourceSize / placeLength;
  const std::int64_t from = (visibleStart - placeStart) * sourceSize / placeLength;
  const std::int64_t to = (visibleStart - placeStart + visibleLength - 1) * sourceSize / placeLength + 1;
  const std::int64_t first = std::max<std::int64_t>(from - margin, 0) / kCropGrid * kCropGrid;
  const std::int64_t last = std::min<std::int64_t>((to + margin + kCropGrid - 1) / kCropGrid * kCropGrid, sourceSize);
  const std::int64_t start = placeStart + scaled(first, placeLength, sourceSize);
  const std::int64_t end = placeStart + scaled(last, placeLength, sourceSize);
  if (end - start <= kLargestScratch) return {static_cast<int>(first), static_cast<int>(last - first), start, end - start};
  return {static_cast<int>(from), static_cast<int>(to - from), visibleStart, visibleLength};
}

Rect wholeOf(const Picture& picture) { return {0, 0, picture.width(), picture.height()}; }

void copyRows(const unsigned char* from, std::ptrdiff_t fromStride, unsigned char* to, std::ptrdiff_t toStride, const Rect& size) {
  for (int row = 0; row < size.height; ++row) {
    std::memcpy(to + row * toStride, from + row * fromStride, static_cast<std::size_t>(size.width) * 4);
  }
}

}  // namespace

std::unique_ptr<const Picture> Picture::fromSample(GstSample* sample) {
  if (sample == nullptr) return nullptr;
  const GstCaps* const caps = gst_sample_get_caps(sample);
  GstBuffer* const buffer = gst_sample_get_buffer(sample);
  GstVideoInfo info;
  if (caps == nullptr || buffer == nullptr || !gst_caps_is_fixed(caps) || !gst_video_info_from_caps(&info, caps)) return nullptr;
  if (!isDrawable(info)) return nullptr;
  // What comes with two fields could not be taken apart: both are shown at once, and its rows are scaled as they lie.
  GST_VIDEO_INFO_INTERLACE_MODE(&info) = GST_VIDEO_INTERLACE_MODE_PROGRESSIVE;
  return fromBuffer(buffer, info, aspectOf(info));
}

std::unique_ptr<const Picture> Picture::fromBuffer(GstBuffer* buffer, const GstVideoInfo& info, const DisplayAspect& aspect) {
  GstVideoFrame frame;
  if (!gst_video_frame_map(&frame, &info, buffer, GST_MAP_READ)) return nullptr;
  return std::unique_ptr<const Picture>(new Picture(frame, aspect));
}

Picture::~Picture() { gst_video_frame_unmap(&m_frame); }

Rect Picture::placeIn(const Rect& rect) const {
  if (isEmpty(rect)) return {};
  const std::int64_t fullHeight = scaled(rect.width, m_aspect.height, m_aspect.width);
  const bool barsAboveAndBelow = fullHeight <= rect.height;
  const std::int64_t wanted = barsAboveAndBelow ? fullHeight : scaled(rect.height, m_aspect.width, m_aspect.height);
  const int limit = barsAboveAndBelow ? rect.height : rect.width;
  const int length = static_cast<int>(std::clamp<std::int64_t>(wanted, 1, limit));
  const std::int64_t bar = (limit - length) / 2;
  if (barsAboveAndBelow) return {rect.x, static_cast<int>(rect.y + bar), rect.width, length};
  return {static_cast<int>(rect.x + bar), rect.y, length, rect.height};
}

PixelConverter::~PixelConverter() {
  if (m_converter != nullptr) gst_video_converter_free(m_converter);
}

bool PixelConverter::prepare(const GstVideoInfo& input, const Rect& source, const GstVideoInfo& output) {
  const bool sameTask = source == m_source && gst_video_info_is_equal(&output, &m_output);
  if (m_converter != nullptr && sameTask && gst_video_info_is_equal(&input, &m_input)) return true;
  if (m_converter != nullptr) gst_video_converter_free(m_converter);
  m_input = input;
  m_source = source;
  m_output = output;
  m_converter = gst_video_converter_new(&m_input, &m_output, converterOptions(source));
  return m_converter != nullptr;
}

bool PixelConverter::convert(const Picture& picture, const Rect& source, const Target& target) {
  GstVideoFrame output{};  // made by hand: the pixels are the plane's own, no buffer is needed around them
  output.info = planeInfo(picture.frame().info, target.width, target.height);
  output.info.stride[0] = target.stride;
  output.data[0] = target.pixels;
  if (!prepare(picture.frame().info, source, output.info)) return false;
  gst_video_converter_frame(m_converter, &picture.frame(), &output);
  return true;
}

bool FramePainter::draw(const Picture& picture, const Rect& place, unsigned char* canvas) {
  const Rect visible = intersection(place, kPlane);
  if (isEmpty(visible)) return true;
  if (!(visible == place)) return drawClipped(picture, place, visible, canvas);
  unsigned char* const first = canvas + place.y * kMediaPlaneStride + place.x * 4;
  return m_converter.convert(picture, wholeOf(picture), {first, place.width, place.height, kMediaPlaneStride});
}

bool FramePainter::drawClipped(const Picture& picture, const Rect& place, const Rect& visible, unsigned char* canvas) {
  const Span across = neededSpan(picture.width(), place.x, place.width, visible.x, visible.width);
  const Span down = neededSpan(picture.height(), place.y, place.height, visible.y, visible.height);
  const int width = static_cast<int>(across.targetLength);
  const int height = static_cast<int>(down.targetLength);
  m_scratch.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
  const Rect source{across.source, down.source, across.sourceLength, down.sourceLength};
  if (!m_converter.convert(picture, source, {m_scratch.data(), width, height, width * 4})) return false;
  const std::ptrdiff_t stride = std::ptrdiff_t{width} * 4;
  const unsigned char* const from = m_scratch.data() + (visible.y - down.target) * stride + (visible.x - across.target) * 4;
  copyRows(from, stride, canvas + visible.y * kMediaPlaneStride + visible.x * 4, kMediaPlaneStride, visible);
  return true;
}

std::unique_ptr<const Picture> FrameReducer::reduce(std::unique_ptr<const Picture> picture) {
  if (std::int64_t{picture->width()} * picture->height() <= kMostDirectPixels) return picture;
  const Rect size = picture->placeIn(kPlane);
  const GstVideoInfo info = planeInfo(picture->frame().info, size.width, size.height);
  GstBuffer* const buffer = gst_buffer_new_allocate(nullptr, GST_VIDEO_INFO_SIZE(&info), nullptr);
  GstMapInfo bytes;
  std::unique_ptr<const Picture> small;
  if (buffer != nullptr && gst_buffer_map(buffer, &bytes, GST_MAP_WRITE)) {
    const bool done = m_converter.convert(*picture, wholeOf(*picture), {bytes.data, size.width, size.height, size.width * 4});
    gst_buffer_unmap(buffer, &bytes);
    if (done) small = Picture::fromBuffer(buffer, info, picture->aspect());
  }
  if (buffer != nullptr) gst_buffer_unref(buffer);
  return small != nullptr ? std::move(small) : std::move(picture);
}

}  // namespace media
