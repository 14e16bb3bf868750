// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/plane_region.h"

#include <climits>
#include <random>
#include <set>

#include "tests/platform/plane/plane_fixture.h"

namespace {

using media::Rect;
using media::Region;
using Cells = std::set<std::pair<int, int>>;

Cells cellsOf(const Region& region) {
  Cells cells;
  for (const Rect& rect : region) {
    for (int y = rect.y; y < rect.y + rect.height; ++y) {
      for (int x = rect.x; x < rect.x + rect.width; ++x) EXPECT_TRUE(cells.emplace(x, y).second) << "twice: " << x << "," << y;
    }
  }
  return cells;
}

TEST(RectTest, IntersectsWithoutOverflow_AtTheEdgesOfInt) {
  const Rect huge{INT_MIN, INT_MIN, INT_MAX, INT_MAX};
  const Rect far{INT_MAX, INT_MAX, INT_MAX, INT_MAX};
  const Rect plane{0, 0, 1280, 720};

  EXPECT_EQ(media::intersection({-10, -20, INT_MAX, INT_MAX}, plane), plane);
  EXPECT_TRUE(media::isEmpty(media::intersection(huge, plane)));
  EXPECT_TRUE(media::isEmpty(media::intersection(far, plane)));
}

TEST(RectTest, SharesNothing_WhenOnlyTouching) {
  EXPECT_TRUE(media::isEmpty(media::intersection({0, 0, 10, 10}, {10, 0, 10, 10})));
  EXPECT_TRUE(media::isEmpty(media::intersection({0, 0, 10, 10}, {0, 0, -5, 10})));
}

TEST(RegionTest, HoldsTheSamePixelsAsASet_WhateverIsAddedAndTaken) {
  std::mt19937 random(7);
  const auto upTo = [&](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
  for (int round = 0; round < 50; ++round) {
    Region region;
    Cells model;
    for (int step = 0; step < 12; ++step) {
      const Rect rect{upTo(20), upTo(20), upTo(10), upTo(10)};
      const bool adds = upTo(3) != 0;
      if (adds) region.add(rect);
      if (!adds) region.subtract(rect);
      for (const auto& cell : cellsOf(rect.width > 0 && rect.height > 0 ? Region(rect) : Region())) {
        if (adds) model.insert(cell);
        if (!adds) model.erase(cell);
      }
      ASSERT_EQ(cellsOf(region), model);
    }
  }
}

TEST(RegionTest, IsTheSurroundingBox_WhenSimplified) {
  Region region(Rect{0, 0, 2, 2});
  region.add(Rect{8, 5, 2, 2});
  region.simplify(2);
  EXPECT_EQ(region.size(), 2u);

  region.simplify(1);

  ASSERT_EQ(region.size(), 1u);
  EXPECT_EQ(*region.begin(), (Rect{0, 0, 10, 7}));
}

TEST(RegionTest, KnowsItsPartInAFrame) {
  Region region(Rect{0, 0, 10, 10});
  region.subtract(Rect{4, 4, 2, 2});

  EXPECT_EQ(cellsOf(region.within({4, 4, 2, 2})).size(), 0u);
  EXPECT_EQ(cellsOf(region.within({3, 3, 4, 4})).size(), 12u);
  EXPECT_FALSE(region.intersects({4, 4, 2, 2}));
  EXPECT_TRUE(region.intersects({4, 4, 3, 2}));
}

}  // namespace
