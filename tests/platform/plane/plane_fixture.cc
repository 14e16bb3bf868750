// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/plane/plane_fixture.h"

#include <algorithm>
#include <bit>
#include <cstdlib>

namespace media {
void PrintTo(const Rect& rect, std::ostream* out) {
  *out << rect.x << "|" << rect.y << "|" << rect.width << "|" << rect.height << "|";
}
}  // namespace media

namespace plane_test {

namespace {

constexpr media::Rect kPlane{0, 0, kMediaPlaneWidth, kMediaPlaneHeight};

using BufferPtr = std::unique_ptr<GstBuffer, void (*)(GstBuffer*)>;

GstVideoInfo infoOf(const Shape& shape, GstVideoFormat format) {
  GstVideoInfo info;
  gst_video_info_set_format(&info, format, static_cast<guint>(shape.width), static_cast<guint>(shape.height));
  info.fps_n = 25;
  info.fps_d = 1;
  info.par_n = shape.parNumerator;
  info.par_d = shape.parDenominator;
  return info;
}

BufferPtr newBuffer(const GstVideoInfo& info) {
  return {gst_buffer_new_allocate(nullptr, GST_VIDEO_INFO_SIZE(&info), nullptr), gst_buffer_unref};
}

void fill(GstBuffer* buffer, const GstVideoInfo& info, const ColourAt& colourAt) {
  GstVideoFrame frame;
  ASSERT_TRUE(gst_video_frame_map(&frame, &info, buffer, GST_MAP_WRITE));
  for (int y = 0; y < info.height; ++y) {
    auto* row = static_cast<unsigned char*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0)) + y * GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 0);
    for (int x = 0; x < info.width; ++x, row += 4) {
      const Colour colour = colourAt(x, y);
      row[0] = static_cast<unsigned char>(colour);
      row[1] = static_cast<unsigned char>(colour >> 8);
      row[2] = static_cast<unsigned char>(colour >> 16);
      row[3] = 0xff;
    }
  }
  gst_video_frame_unmap(&frame);
}

void convert(GstBuffer* from, const GstVideoInfo& fromInfo, GstBuffer* to, const GstVideoInfo& toInfo) {
  GstVideoFrame in;
  GstVideoFrame out;
  ASSERT_TRUE(gst_video_frame_map(&in, &fromInfo, from, GST_MAP_READ));
  ASSERT_TRUE(gst_video_frame_map(&out, &toInfo, to, GST_MAP_WRITE));
  GstVideoConverter* const converter = gst_video_converter_new(&fromInfo, &toInfo, nullptr);
  ASSERT_NE(converter, nullptr);
  gst_video_converter_frame(converter, &in, &out);
  gst_video_converter_free(converter);
  gst_video_frame_unmap(&in);
  gst_video_frame_unmap(&out);
}

SamplePtr sampleOf(GstBuffer* buffer, GstCaps* caps) {
  SamplePtr sample(gst_sample_new(buffer, caps, nullptr, nullptr), gst_sample_unref);
  if (caps != nullptr) gst_caps_unref(caps);
  return sample;
}

int part(Colour colour, int shift) { return static_cast<int>(colour >> shift & 0xff); }

}  // namespace

SamplePtr makePicture(const Shape& shape, const ColourAt& colourAt) {
  const GstVideoInfo plain = infoOf(shape, GST_VIDEO_FORMAT_BGRx);
  BufferPtr buffer = newBuffer(plain);
  fill(buffer.get(), plain, colourAt);
  const GstVideoInfo info = infoOf(shape, shape.format);
  if (shape.format != GST_VIDEO_FORMAT_BGRx) {
    BufferPtr converted = newBuffer(info);
    convert(buffer.get(), plain, converted.get(), info);
    buffer.swap(converted);
  }
  return sampleOf(buffer.get(), gst_video_info_to_caps(&info));
}

SamplePtr makeSolid(const Shape& shape, Colour colour) {
  return makePicture(shape, [colour](int, int) { return colour; });
}

SamplePtr makeRaw(const std::string& caps, std::size_t bytes) {
  const BufferPtr buffer(gst_buffer_new_allocate(nullptr, bytes, nullptr), gst_buffer_unref);
  gst_buffer_memset(buffer.get(), 0, 0, bytes);
  return sampleOf(buffer.get(), caps.empty() ? nullptr : gst_caps_from_string(caps.c_str()));
}

Image& Image::fill(const media::Rect& rect, Colour colour) {
  const media::Rect part = media::intersection(rect, kPlane);
  for (int y = part.y; y < part.y + part.height; ++y) {
    std::fill_n(m_colours.begin() + y * kMediaPlaneWidth + part.x, part.width, colour);
  }
  return *this;
}

Image& Image::fill(const media::Rect& rect, const ColourAt& colourAt) {
  const media::Rect part = media::intersection(rect, kPlane);
  for (int y = part.y; y < part.y + part.height; ++y) {
    for (int x = part.x; x < part.x + part.width; ++x) fill({x, y, 1, 1}, colourAt(x, y));
  }
  return *this;
}

Pixels::Pixels(const media::VideoPlane& plane) : m_colours(static_cast<std::size_t>(kMediaPlaneWidth) * kMediaPlaneHeight) {
  static_assert(std::endian::native == std::endian::little, "blue, green, red, unused read as a number of the form 0x..RRGGBB");
  EXPECT_TRUE(plane.snapshot(reinterpret_cast<unsigned char*>(m_colours.data()), kMediaPlaneBytes));
  for (Colour& colour : m_colours) colour &= 0xffffff;
}

Colour Pixels::at(int x, int y) const { return m_colours[static_cast<std::size_t>(y * kMediaPlaneWidth + x)]; }

bool Pixels::isOneColour() const { return std::equal(m_colours.begin(), m_colours.end() - 1, m_colours.begin() + 1); }

bool Pixels::isNear(int x, int y, Colour colour, int tolerance) const {
  const Colour seen = at(x, y);
  return std::abs(part(seen, 0) - part(colour, 0)) <= tolerance && std::abs(part(seen, 8) - part(colour, 8)) <= tolerance &&
         std::abs(part(seen, 16) - part(colour, 16)) <= tolerance;
}

media::Rect Pixels::painted() const {
  int left = kMediaPlaneWidth, top = kMediaPlaneHeight, right = 0, bottom = 0;
  for (int y = 0; y < kMediaPlaneHeight; ++y) {
    for (int x = 0; x < kMediaPlaneWidth; ++x) {
      if (at(x, y) == kBlack) continue;
      left = std::min(left, x);
      top = std::min(top, y);
      right = std::max(right, x + 1);
      bottom = std::max(bottom, y + 1);
    }
  }
  return right == 0 ? media::Rect{} : media::Rect{left, top, right - left, bottom - top};
}

int Pixels::countWrong(const Image& expected, std::string& where) const {
  if (m_colours == expected.colours()) return 0;
  int wrong = 0;
  for (std::size_t i = 0; i < m_colours.size(); ++i) {
    if (m_colours[i] == expected.colours()[i]) continue;
    if (wrong++ == 0) where = std::to_string(i % kMediaPlaneWidth) + "," + std::to_string(i / kMediaPlaneWidth);
  }
  return wrong;
}

::testing::AssertionResult looksLike(const media::VideoPlane& plane, const Image& expected) {
  std::string where;
  const int wrong = Pixels(plane).countWrong(expected, where);
  if (wrong == 0) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << wrong << " pixels are wrong, the first at " << where;
}

::testing::AssertionResult shows(const media::VideoPlane& plane, const media::Rect& rect, Colour colour) {
  return looksLike(plane, Image().fill(rect, colour));
}

}  // namespace plane_test

int main(int argc, char** argv) {
  // Pictures need no elements, and the names of all installed ones would make GLib drop a table that the leak checker then finds.
  setenv("GST_REGISTRY_DISABLE", "yes", 1);
  gst_init(nullptr, nullptr);
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
