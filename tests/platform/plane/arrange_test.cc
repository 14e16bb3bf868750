// SPDX-License-Identifier: Apache-2.0
// Surfaces in an order of the shell's.
#include <sys/mman.h>

#include <algorithm>
#include <list>
#include <random>
#include <vector>

#include "tests/platform/plane/plane_fixture.h"

namespace {

using media::Rect;
using media::VideoSurface;
using namespace plane_test;

constexpr Rect kLeft{100, 100, 400, 400};
constexpr Rect kRight{300, 300, 400, 400};

class ArrangeTest : public PlaneTest {
 protected:
  void show(VideoSurface& surface, const Rect& rect, Colour colour) {
    surface.setRect(rect);
    surface.paint(makeSolid({40, 40}, colour).get());
  }
  void arrange(const std::vector<unsigned long>& heights) { m_plane.arrange(heights); }
  /// The later of the two is the upper one.
  ::testing::AssertionResult lookLike(const Rect& lower, Colour lowerColour, const Rect& upper, Colour upperColour) const {
    return looksLike(m_plane, Image().fill(lower, lowerColour).fill(upper, upperColour));
  }
};

/// What other processes see of a plane's header.
class HeaderView {
 public:
  explicit HeaderView(const media::VideoPlane& plane) {
    EXPECT_TRUE(plane.exportTo(m_plane));
    m_memory = mmap(nullptr, m_plane.memoryBytes, PROT_READ, MAP_SHARED, m_plane.memoryFd, 0);
  }
  HeaderView(const HeaderView&) = delete;
  HeaderView& operator=(const HeaderView&) = delete;
  ~HeaderView() {
    if (isMapped()) munmap(m_memory, m_plane.memoryBytes);
  }
  bool isMapped() const { return m_memory != MAP_FAILED; }
  const MediaPlaneHeader* operator->() const { return static_cast<const MediaPlaneHeader*>(m_memory); }

 private:
  MediaPlaneExport m_plane{};
  void* m_memory = MAP_FAILED;
};

TEST_F(ArrangeTest, ShowsTheOtherOneAbove_WithoutANewFrame) {
  VideoSurface one(m_plane, 1);
  VideoSurface two(m_plane, 2);
  show(one, kLeft, kRed);
  show(two, kRight, kBlue);

  arrange({2, 1});
  EXPECT_TRUE(lookLike(kRight, kBlue, kLeft, kRed));
  arrange({1, 2});
  EXPECT_TRUE(lookLike(kLeft, kRed, kRight, kBlue));
}

TEST_F(ArrangeTest, HoldsForFramesThatFollow_InEveryBuffer) {
  VideoSurface one(m_plane, 1);
  VideoSurface two(m_plane, 2);
  show(one, kLeft, kRed);
  show(two, kRight, kBlue);
  arrange({2, 1});
  for (const Colour colour : {kGreen, kWhite, kBlue, kGreen, kWhite}) {
    two.paint(makeSolid({40, 40}, colour).get());
    EXPECT_TRUE(lookLike(kRight, colour, kLeft, kRed));
  }
  for (const Colour colour : {kBlue, kWhite, kRed, kBlue, kGreen}) {
    one.paint(makeSolid({40, 40}, colour).get());
    EXPECT_TRUE(lookLike(kRight, kWhite, kLeft, colour));
  }
}

TEST_F(ArrangeTest, WaitsForAPlayerThatIsYetToCome) {
  arrange({7, 3});
  VideoSurface three(m_plane, 3);
  show(three, kLeft, kRed);
  VideoSurface seven(m_plane, 7);
  show(seven, kRight, kBlue);

  EXPECT_TRUE(lookLike(kRight, kBlue, kLeft, kRed));
}

TEST_F(ArrangeTest, KeepsThePlaceOfOneThatWentAndCameBack) {
  VideoSurface one(m_plane, 1);
  show(one, kLeft, kRed);
  arrange({2, 1});
  for (const Colour colour : {kBlue, kGreen}) {
    VideoSurface two(m_plane, 2);
    show(two, kRight, colour);
    EXPECT_TRUE(lookLike(kRight, colour, kLeft, kRed));
  }
  EXPECT_TRUE(shows(m_plane, kLeft, kRed));
}

TEST_F(ArrangeTest, PutsThoseThatAreNotNamedAboveByTheirNumbers) {
  VideoSurface nine(m_plane, 9);
  VideoSurface five(m_plane, 5);
  VideoSurface one(m_plane, 1);
  constexpr Rect kMiddle{200, 200, 400, 400};
  show(nine, kLeft, kRed);
  show(five, kMiddle, kGreen);
  show(one, kRight, kBlue);

  arrange({9, 77});

  EXPECT_TRUE(looksLike(m_plane, Image().fill(kLeft, kRed).fill(kRight, kBlue).fill(kMiddle, kGreen)));
}

TEST_F(ArrangeTest, GoesBackToNumbers_WhenNothingIsNamed) {
  VideoSurface one(m_plane, 1);
  VideoSurface two(m_plane, 2);
  show(one, kLeft, kRed);
  show(two, kRight, kBlue);
  arrange({2, 1});

  arrange({});

  EXPECT_TRUE(lookLike(kLeft, kRed, kRight, kBlue));
}

TEST_F(ArrangeTest, TakesTheFirstPlaceOfOneThatIsNamedTwice) {
  VideoSurface one(m_plane, 1);
  VideoSurface two(m_plane, 2);
  show(one, kLeft, kRed);
  show(two, kRight, kBlue);

  arrange({2, 1, 2});

  EXPECT_TRUE(lookLike(kRight, kBlue, kLeft, kRed));
}

TEST_F(ArrangeTest, PublishesOnlyWhatLooksOtherwise_AsAMove) {
  VideoSurface one(m_plane, 1);
  VideoSurface two(m_plane, 2);
  VideoSurface apart(m_plane, 3);
  VideoSurface empty(m_plane, 4);
  show(one, kLeft, kRed);
  show(two, kRight, kBlue);
  show(apart, {900, 0, 100, 100}, kGreen);
  const HeaderView seen(m_plane);
  ASSERT_TRUE(seen.isMapped());
  const std::uint32_t before = seen->sequence;

  arrange({1, 2});
  arrange({});
  arrange({3, 4, 1, 2});
  EXPECT_EQ(seen->sequence, before);
  arrange({2, 1, 3});
  EXPECT_EQ(seen->sequence, before + 1);
  EXPECT_EQ(seen->moved, before + 1);
  arrange({2, 9, 1, 3, 4});
  EXPECT_EQ(seen->sequence, before + 1);
}

TEST_F(ArrangeTest, ShowsWhatDrawingFromTheBottomWould_AfterAnyHistory) {
  struct Layer {
    Layer(media::VideoPlane& plane, unsigned long height) : surface(plane, height), height(height) {}
    VideoSurface surface;
    unsigned long height;
    Rect rect;
    Colour colour = kBlack;
  };
  std::mt19937 random(7);
  const auto upTo = [&random](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
  std::list<Layer> layers;
  for (unsigned long height = 1; height <= 5; ++height) layers.emplace_back(m_plane, height);
  std::vector<unsigned long> order{1, 2, 3, 4, 5};
  for (int step = 0; step < 60; ++step) {
    const auto layer = std::next(layers.begin(), upTo(5));
    layer->rect = {upTo(1300) - 100, upTo(750) - 100, 100 + upTo(600), 0};
    layer->rect.height = layer->rect.width;
    layer->colour = 0x010101 * static_cast<Colour>(1 + upTo(254));
    show(layer->surface, layer->rect, layer->colour);
    std::shuffle(order.begin(), order.end(), random);
    arrange(order);
    Image expected;
    for (const unsigned long height : order) {
      const auto named = std::find_if(layers.begin(), layers.end(), [&](const Layer& each) { return each.height == height; });
      expected.fill(named->rect, named->colour);
    }
    ASSERT_TRUE(looksLike(m_plane, expected)) << "step " << step;
  }
}

TEST(ArrangeFunctionTest, ArrangesTheProcessesPlane) {
  VideoSurface one(1);
  VideoSurface two(2);
  for (VideoSurface* surface : {&one, &two}) surface->paint(makeSolid({64, 36}, surface == &one ? kRed : kBlue).get());
  const media::VideoPlane& plane = media::VideoPlane::instance();
  const unsigned long order[] = {2, 1};

  mediaPlaneArrange(order, 2);
  EXPECT_EQ(Pixels(plane).at(640, 360), kRed);
  mediaPlaneArrange(order, 0);
  EXPECT_EQ(Pixels(plane).at(640, 360), kBlue);
  mediaPlaneArrange(order, 2);
  mediaPlaneArrange(nullptr, 2);
  EXPECT_EQ(Pixels(plane).at(640, 360), kBlue);
}

}  // namespace
