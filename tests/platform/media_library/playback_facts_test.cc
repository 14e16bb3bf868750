// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/playback_facts.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace mediamgmnt {
namespace {

TEST(PlaybackFactsTest, PositionWaitsForAPipelineThatIsLate) {
  PlaybackFacts facts;
  facts.runFrom(1000, 1);
  const auto start = std::chrono::steady_clock::now();
  facts.runFrom(800, 1);
  const long long shown = facts.position();
  EXPECT_GE(shown, 1000);
  while (facts.position() <= shown) std::this_thread::yield();
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(195));
}

TEST(PlaybackFactsTest, PositionWaitsForARewindThatIsLate) {
  PlaybackFacts facts;
  facts.runFrom(1000, -2);
  facts.runFrom(1200, -2);
  EXPECT_LE(facts.position(), 1000);
}

TEST(PlaybackFactsTest, FurtherBackIsAnotherPlace) {
  PlaybackFacts facts;
  facts.runFrom(10000, 1);
  facts.runFrom(0, 1);
  EXPECT_LT(facts.position(), 5000);
}

}  // namespace
}  // namespace mediamgmnt
