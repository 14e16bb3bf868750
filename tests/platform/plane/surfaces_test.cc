// SPDX-License-Identifier: Apache-2.0
// Several surfaces: order, overlap, moving, clearing and leaving, in every buffer of the plane.
#include <list>
#include <random>

#include "tests/platform/plane/plane_fixture.h"

namespace {

using media::Rect;
using media::VideoSurface;
using namespace plane_test;

constexpr Rect kLow{100, 100, 400, 400};
constexpr Rect kHigh{300, 300, 400, 400};

class TwoSurfacesTest : public PlaneTest {
 protected:
  TwoSurfacesTest() {
    m_low.setRect(kLow);
    m_high.setRect(kHigh);
  }
  static SamplePtr square(Colour colour) { return makeSolid({40, 40}, colour); }
  ::testing::AssertionResult lookLike(Colour low, Colour high) const {
    return looksLike(m_plane, Image().fill(kLow, low).fill(kHigh, high));
  }

  VideoSurface m_low{m_plane};
  VideoSurface m_high{m_plane};
};

TEST_F(TwoSurfacesTest, LaterOneIsAbove_WhoeverPaints) {
  m_high.paint(square(kRed).get());
  for (const Colour colour : {kGreen, kBlue, kWhite, kGreen, kBlue}) {
    m_low.paint(square(colour).get());
    EXPECT_TRUE(lookLike(colour, kRed));
  }
  for (const Colour colour : {kGreen, kWhite, kRed, kGreen}) {
    m_high.paint(square(colour).get());
    EXPECT_TRUE(lookLike(kBlue, colour));
  }
}

TEST_F(PlaneTest, HigherSurfaceIsAbove_WhicheverCameFirst) {
  VideoSurface high{m_plane, 7};
  VideoSurface low{m_plane, 3};
  high.setRect(kHigh);
  low.setRect(kLow);
  high.paint(makeSolid({40, 40}, kRed).get());
  low.paint(makeSolid({40, 40}, kBlue).get());
  EXPECT_TRUE(looksLike(m_plane, Image().fill(kLow, kBlue).fill(kHigh, kRed)));
}

TEST_F(TwoSurfacesTest, LowerOneComesBack_WhenTheHigherIsCleared) {
  m_low.paint(square(kGreen).get());
  m_high.paint(square(kRed).get());

  m_high.clear();

  EXPECT_TRUE(shows(m_plane, kLow, kGreen));
  m_low.paint(square(kBlue).get());
  EXPECT_TRUE(shows(m_plane, kLow, kBlue));
}

TEST_F(TwoSurfacesTest, HigherOneStaysWhole_WhenTheLowerIsCleared) {
  m_low.paint(square(kGreen).get());
  m_high.paint(square(kRed).get());

  m_low.clear();

  EXPECT_TRUE(shows(m_plane, kHigh, kRed));
}

TEST_F(TwoSurfacesTest, HigherOneHidesNothing_BeforeItsFirstPicture) {
  m_low.paint(square(kGreen).get());

  EXPECT_TRUE(shows(m_plane, kLow, kGreen));
}

TEST_F(TwoSurfacesTest, HigherOnesBarsCoverTheLower) {
  m_low.setRect({0, 0, 1280, 720});
  m_low.paint(makeSolid({64, 36}, kGreen).get());

  m_high.paint(makeSolid({40, 20}, kRed).get());

  const Image expected = Image().fill({0, 0, 1280, 720}, kGreen).fill(kHigh, kBlack).fill({300, 400, 400, 200}, kRed);
  EXPECT_TRUE(looksLike(m_plane, expected));
}

TEST_F(TwoSurfacesTest, CoveredPaintingIsKept_AndNotCountedAsDrawn) {
  m_high.setRect({0, 0, 1280, 720});
  m_high.paint(makeSolid({64, 36}, kRed).get());
  m_low.paint(square(kGreen).get());
  EXPECT_EQ(m_low.frames(), 1u);
  EXPECT_EQ(m_plane.frames(), 1u);
  EXPECT_TRUE(shows(m_plane, {0, 0, 1280, 720}, kRed));

  m_high.setRect({0, 0, 0, 0});

  EXPECT_TRUE(shows(m_plane, kLow, kGreen));
}

TEST_F(PlaneTest, MovesTheLastPicture_AndClearsTheOldPlace) {
  VideoSurface surface(m_plane);
  surface.setRect({0, 0, 320, 180});
  surface.paint(makeSolid({64, 36}, kRed).get());

  surface.setRect({160, 90, 640, 360});
  EXPECT_TRUE(shows(m_plane, {160, 90, 640, 360}, kRed));
  surface.setRect({800, 0, 64, 36});
  EXPECT_TRUE(shows(m_plane, {800, 0, 64, 36}, kRed));
  surface.paint(makeSolid({64, 36}, kBlue).get());

  EXPECT_TRUE(shows(m_plane, {800, 0, 64, 36}, kBlue));
  EXPECT_EQ(surface.frames(), 2u);
}

TEST_F(PlaneTest, ForgetsThePicture_WhenCleared) {
  VideoSurface surface(m_plane);
  surface.paint(makeSolid({64, 36}, kRed).get());

  surface.clear();
  EXPECT_TRUE(shows(m_plane, {}, kBlack));
  surface.setRect({0, 0, 64, 36});

  EXPECT_TRUE(shows(m_plane, {}, kBlack));
}

TEST_F(PlaneTest, IsBlackAgain_WhenTheSurfaceIsGone) {
  {
    VideoSurface surface(m_plane);
    surface.paint(makeSolid({64, 36}, kRed).get());
  }
  EXPECT_TRUE(shows(m_plane, {}, kBlack));
}

TEST_F(PlaneTest, GivesTheBufferBack_WhenCleared) {
  VideoSurface surface(m_plane);
  const SamplePtr sample = makeSolid({64, 36}, kRed);
  GstBuffer* const buffer = gst_sample_get_buffer(sample.get());
  const int before = GST_MINI_OBJECT_REFCOUNT_VALUE(buffer);

  surface.paint(sample.get());
  EXPECT_GT(GST_MINI_OBJECT_REFCOUNT_VALUE(buffer), before);
  surface.clear();

  EXPECT_EQ(GST_MINI_OBJECT_REFCOUNT_VALUE(buffer), before);
}

TEST_F(PlaneTest, CountsFrames_OfAllSurfacesTogether) {
  VideoSurface one(m_plane);
  VideoSurface two(m_plane);
  const SamplePtr sample = makeSolid({64, 36}, kRed);
  one.setRect({0, 0, 64, 36});
  two.setRect({100, 0, 64, 36});
  for (int i = 0; i < 3; ++i) one.paint(sample.get());
  for (int i = 0; i < 4; ++i) two.paint(sample.get());

  one.setRect({0, 100, 64, 36});

  EXPECT_EQ(one.frames(), 3u);
  EXPECT_EQ(two.frames(), 4u);
  EXPECT_EQ(m_plane.frames(), 7u);
}

/// Any order of operations must show what drawing everything from the bottom would show.
class ModelTest : public PlaneTest {
 protected:
  struct Layer {
    explicit Layer(media::VideoPlane& plane) : surface(plane) {}
    VideoSurface surface;
    Rect rect{0, 0, kMediaPlaneWidth, kMediaPlaneHeight};
    bool hasPicture = false;
    bool isSquare = false;
    Colour colour = kBlack;

    Rect picture() const {
      if (!isSquare) return rect;
      const int side = std::min(rect.width, rect.height);
      return {rect.x + (rect.width - side) / 2, rect.y + (rect.height - side) / 2, side, side};
    }
  };

  int upTo(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }

  void step() {
    if (m_layers.size() < 2 || (m_layers.size() < 5 && upTo(10) == 0)) m_layers.emplace_back(m_plane);
    const auto layer = std::next(m_layers.begin(), upTo(static_cast<int>(m_layers.size())));
    const int choice = upTo(20);
    if (choice == 0) m_layers.erase(layer);
    if (choice == 1) clear(*layer);
    if (choice >= 2 && choice < 7) move(*layer);
    if (choice >= 7) paint(*layer);
  }
  void clear(Layer& layer) {
    layer.surface.clear();
    layer.hasPicture = false;
  }
  /// Widths are even multiples of the picture's, so that a picture that is not square fills its rectangle.
  void move(Layer& layer) {
    const int unit = 2 * (1 + upTo(40));
    layer.rect = {upTo(1500) - 200, upTo(900) - 150, 16 * unit, 9 * unit};
    layer.surface.setRect(layer.rect);
  }
  void paint(Layer& layer) {
    layer.hasPicture = true;
    layer.isSquare = layer.rect.width != kMediaPlaneWidth && upTo(3) == 0;
    layer.colour = 0x101010 * static_cast<Colour>(1 + upTo(15)) + static_cast<Colour>(upTo(16));
    layer.surface.paint(makeSolid(layer.isSquare ? Shape{16, 16} : Shape{16, 9}, layer.colour).get());
  }
  Image expected() const {
    Image image;
    for (const Layer& layer : m_layers) {
      if (layer.hasPicture) image.fill(layer.rect, kBlack).fill(layer.picture(), layer.colour);
    }
    return image;
  }

  std::mt19937 m_random{2024};
  std::list<Layer> m_layers;
};

TEST_F(ModelTest, ShowsWhatDrawingFromTheBottomWould_AfterAnyHistory) {
  for (int i = 0; i < 120; ++i) {
    step();
    ASSERT_TRUE(looksLike(m_plane, expected())) << "step " << i;
  }
}

}  // namespace
