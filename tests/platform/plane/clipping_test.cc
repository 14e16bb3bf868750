// SPDX-License-Identifier: Apache-2.0
// Rectangles that lie partly or wholly outside the plane.
#include <climits>

#include "tests/platform/plane/plane_fixture.h"

namespace {

using media::Rect;
using namespace plane_test;

constexpr Rect kPlane{0, 0, kMediaPlaneWidth, kMediaPlaneHeight};

/// Red grows to the right, green downwards: a pixel's colour tells its place in the picture.
Colour slope(int x, int y, int width, int height) {
  return static_cast<Colour>(x * 255 / width) << 16 | static_cast<Colour>(y * 255 / height) << 8 | 0x40;
}

SamplePtr makeSlope(int width, int height, GstVideoFormat format = GST_VIDEO_FORMAT_BGRx) {
  return makePicture({width, height, 1, 1, format}, [=](int x, int y) { return slope(x, y, width, height); });
}

struct ClipCase {
  const char* name;
  Rect rect;
};

class ClipTest : public PlaneTest, public ::testing::WithParamInterface<ClipCase> {};

TEST_P(ClipTest, ShowsThePartThatIsOnThePlane_AtItsPlace) {
  const Rect rect = GetParam().rect;
  media::VideoSurface surface(m_plane);
  surface.setRect(rect);

  surface.paint(makeSlope(640, 360).get());

  const Rect visible = media::intersection(rect, kPlane);
  const Pixels pixels(m_plane);
  EXPECT_EQ(pixels.painted(), visible);
  for (const auto& [x, y] : {std::pair(0.02, 0.03), std::pair(0.5, 0.5), std::pair(0.97, 0.96), std::pair(0.96, 0.04)}) {
    const int column = visible.x + static_cast<int>(x * visible.width);
    const int row = visible.y + static_cast<int>(y * visible.height);
    const auto inX = static_cast<int>(std::int64_t{column - rect.x} * 640 / rect.width);
    const auto inY = static_cast<int>(std::int64_t{row - rect.y} * 360 / rect.height);
    EXPECT_TRUE(pixels.isNear(column, row, slope(inX, inY, 640, 360), 2))
        << column << "," << row << ": " << std::hex << pixels.at(column, row) << " for " << slope(inX, inY, 640, 360);
  }
}

INSTANTIATE_TEST_SUITE_P(Sides, ClipTest,
                         ::testing::Values(ClipCase{"Left", {-101, 100, 640, 360}}, ClipCase{"Above", {100, -33, 640, 360}},
                                           ClipCase{"Right", {1001, 100, 640, 360}}, ClipCase{"Below", {100, 555, 640, 360}},
                                           ClipCase{"ScaledLeft", {-301, 100, 960, 540}},
                                           ClipCase{"ScaledDownCorner", {-41, -17, 160, 90}},
                                           ClipCase{"AllSides", {-320, -180, 1920, 1080}},
                                           ClipCase{"FarLarger", {-3200, -1800, 16000, 9000}},
                                           ClipCase{"Magnified", {-32000, -18000, 160000, 90000}},
                                           ClipCase{"HugeFromTheCorner", {0, 0, 2000000000, 1125000000}}),
                         [](const auto& info) { return info.param.name; });

TEST_F(PlaneTest, ClipsPixelForPixel_AtNormalSize) {
  const auto pattern = [](int x, int y) { return static_cast<Colour>(1 + (x % 251) + 256 * (y % 251)); };
  media::VideoSurface surface(m_plane);
  surface.setRect({-77, -55, 400, 300});

  surface.paint(makePicture({400, 300}, pattern).get());

  const Image expected = Image().fill({0, 0, 323, 245}, [&](int x, int y) { return pattern(x + 77, y + 55); });
  EXPECT_TRUE(looksLike(m_plane, expected));
}

TEST_F(PlaneTest, ClipsTheBarsToo) {
  media::VideoSurface below(m_plane);
  below.paint(makeSolid({64, 36}, kWhite).get());
  media::VideoSurface surface(m_plane);
  surface.setRect({-100, 100, 400, 400});

  surface.paint(makeSolid({400, 200}, kRed).get());

  const Image expected = Image().fill(kPlane, kWhite).fill({0, 100, 300, 400}, kBlack).fill({0, 200, 300, 200}, kRed);
  EXPECT_TRUE(looksLike(m_plane, expected));
}

TEST_F(PlaneTest, ShowsNothing_OutsideThePlane) {
  media::VideoSurface surface(m_plane);
  for (const Rect rect : {Rect{-640, 0, 640, 360}, Rect{1280, 0, 640, 360}, Rect{0, 720, 640, 360}, Rect{0, -360, 640, 360},
                          Rect{INT_MIN, INT_MIN, 100, 100}, Rect{INT_MAX, INT_MAX, INT_MAX, INT_MAX}, Rect{10, 10, 0, 0},
                          Rect{10, 10, -5, 20}, Rect{10, 10, INT_MIN, INT_MIN}}) {
    surface.setRect(rect);
    surface.paint(makeSolid({64, 36}, kRed).get());
    EXPECT_TRUE(shows(m_plane, {}, kBlack));
  }
  EXPECT_EQ(surface.frames(), 9u);
  EXPECT_EQ(m_plane.frames(), 0u);

  surface.setRect({0, 0, 64, 36});

  EXPECT_TRUE(shows(m_plane, {0, 0, 64, 36}, kRed));
}

TEST_F(PlaneTest, SurvivesAnyRectangle) {
  media::VideoSurface surface(m_plane);
  const SamplePtr sample = makeSlope(33, 17, GST_VIDEO_FORMAT_I420);
  for (const int x : {INT_MIN, -100000, -1, 0, 1279, INT_MAX}) {
    for (const int size : {1, 2, 3, 1281, 100000, INT_MAX}) {
      surface.setRect({x, -1, size, size});
      surface.paint(sample.get());
      const Rect visible = media::intersection({x, -1, size, size}, kPlane);
      EXPECT_EQ(media::intersection(Pixels(m_plane).painted(), visible), Pixels(m_plane).painted());
    }
  }
}

}  // namespace
