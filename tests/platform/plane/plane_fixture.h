// SPDX-License-Identifier: Apache-2.0
// What the tests of the video plane share: pictures made by hand, and a plane's pixels by name.
#pragma once

#include <gst/gst.h>
#include <gst/video/video.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "platform/mediamgmnt/media_plane.h"
#include "platform/mediamgmnt/video_plane.h"

namespace media {
void PrintTo(const Rect& rect, std::ostream* out);
}

namespace plane_test {

/// 0xRRGGBB
using Colour = std::uint32_t;
inline constexpr Colour kBlack = 0x000000;
inline constexpr Colour kRed = 0xff0000;
inline constexpr Colour kGreen = 0x00ff00;
inline constexpr Colour kBlue = 0x0000ff;
inline constexpr Colour kWhite = 0xffffff;

using SamplePtr = std::unique_ptr<GstSample, void (*)(GstSample*)>;
using ColourAt = std::function<Colour(int x, int y)>;

struct Shape {
  int width;
  int height;
  int parNumerator = 1;
  int parDenominator = 1;
  GstVideoFormat format = GST_VIDEO_FORMAT_BGRx;
};

/// A picture of the given shape and format, painted pixel by pixel.
SamplePtr makePicture(const Shape& shape, const ColourAt& colourAt);
SamplePtr makeSolid(const Shape& shape, Colour colour);
/// A sample of @p bytes zero bytes with caps as written; no caps for an empty text.
SamplePtr makeRaw(const std::string& caps, std::size_t bytes);

/// What a plane should look like: black, and what was filled since.
class Image {
 public:
  Image() : m_colours(static_cast<std::size_t>(kMediaPlaneWidth) * kMediaPlaneHeight, kBlack) {}
  Image& fill(const media::Rect& rect, Colour colour);
  Image& fill(const media::Rect& rect, const ColourAt& colourAt);
  const std::vector<Colour>& colours() const { return m_colours; }

 private:
  std::vector<Colour> m_colours;
};

/// A copy of a plane's newest picture.
class Pixels {
 public:
  explicit Pixels(const media::VideoPlane& plane);
  Colour at(int x, int y) const;
  /// True when each part of each colour is at most @p tolerance off.
  bool isNear(int x, int y, Colour colour, int tolerance) const;
  /// The box around everything that is not black; empty when all is.
  media::Rect painted() const;
  bool isOneColour() const;
  /// Number of pixels that differ from @p expected, with the first one's place in @p where.
  int countWrong(const Image& expected, std::string& where) const;

 private:
  std::vector<Colour> m_colours;
};

/// All of the plane must look as @p expected, exactly.
::testing::AssertionResult looksLike(const media::VideoPlane& plane, const Image& expected);
/// @p colour in @p rect, black elsewhere.
::testing::AssertionResult shows(const media::VideoPlane& plane, const media::Rect& rect, Colour colour);

class PlaneTest : public ::testing::Test {
 protected:
  media::VideoPlane m_plane;
};

}  // namespace plane_test
