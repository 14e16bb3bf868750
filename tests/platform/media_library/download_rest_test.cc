// SPDX-License-Identifier: Apache-2.0
// Downloads that are made to wait, without any media.
#include "platform/mediamgmnt/download_rest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <optional>

#include "platform/mediamgmnt/download_threads.h"
#include "tests/platform/media_library/downloader.h"

namespace mediamgmnt {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds kShortOfARest{10};  ///< half of what one lasts at most
constexpr int kTries = 50;                 ///< for a moment in which the machine lets a test run through

class DownloadRestTest : public ::testing::Test {
 protected:
  DownloadRestTest() { watchDownloadThreads(); }
};

TEST_F(DownloadRestTest, AThreadDoesNothingUntilTheRestIsOver) {
  Downloader downloader;
  for (int i = 0; i < kTries; ++i) {
    std::atomic<int> ran = 0;
    Mark last;
    const auto begin = steady_clock::now();
    auto rest = std::make_optional<DownloadRest>();
    while (steady_clock::now() - begin < kShortOfARest / 2) downloader.post([&] { ++ran; });
    downloader.post([&] { last.set(); });
    const int ranMeanwhile = ran;
    const bool inTime = steady_clock::now() - begin < kShortOfARest;
    rest.reset();
    ASSERT_TRUE(last.wait());
    EXPECT_GT(ran, 0);
    if (!inTime) continue;
    EXPECT_EQ(ranMeanwhile, 0);
    return;
  }
  FAIL() << "the machine was too busy " << kTries << " times";
}

TEST_F(DownloadRestTest, WhatWasQueuedIsTakenUpAndWhatWasAnsweredIsHandedOverFirst) {
  Downloader downloader;
  for (int i = 0; i < kTries; ++i) {
    Mark takenUp;
    Mark handedOver;
    const auto begin = steady_clock::now();
    downloader.post([&] { takenUp.set(); }, G_PRIORITY_DEFAULT_IDLE);
    downloader.post([&] { handedOver.set(); });
    const bool both = [&] {
      const DownloadRest rest;
      return takenUp.isSet() && handedOver.isSet();
    }();
    const bool inTime = steady_clock::now() - begin < milliseconds(100);
    ASSERT_TRUE(takenUp.wait() && handedOver.wait());
    if (!inTime) continue;
    EXPECT_TRUE(both);
    return;
  }
  FAIL() << "the machine was too busy " << kTries << " times";
}

TEST_F(DownloadRestTest, EndsByItselfForThoseWhoFetchMeanwhile) {
  Downloader downloader;
  Mark fetched;
  const DownloadRest rest;
  downloader.post([&] { fetched.set(); });
  EXPECT_TRUE(fetched.wait());
}

TEST_F(DownloadRestTest, AThreadThatHasEndedIsNotWaitedFor) {
  Downloader downloader;
  downloader.end();
  auto shortest = steady_clock::duration::max();
  for (int i = 0; i < 10; ++i) {
    const auto begin = steady_clock::now();
    const DownloadRest rest;
    shortest = std::min(shortest, steady_clock::now() - begin);
  }
  EXPECT_LT(shortest, milliseconds(100));
}

TEST_F(DownloadRestTest, ASessionThatHasGoneIsForgotten) {
  { const Downloader downloader; }
  const DownloadRest rest;  // touches nothing that has gone
}

}  // namespace
}  // namespace mediamgmnt
