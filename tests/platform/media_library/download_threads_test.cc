// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/download_threads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "tests/platform/media_library/downloader.h"

namespace mediamgmnt {
namespace {

using std::chrono::milliseconds;

constexpr std::chrono::minutes kLong{1};

class DownloadThreadsTest : public ::testing::Test {
 protected:
  DownloadThreadsTest() { watchDownloadThreads(); }

  int m_source = 0;  ///< its address stands for a source element
  int m_other = 0;
};

TEST_F(DownloadThreadsTest, AnActionRunsOnTheThreadThatFetchesForTheSource) {
  Downloader other(&m_other);
  Downloader downloader(&m_source);
  std::thread::id expected;
  Mark known;
  downloader.post([&] {
    expected = std::this_thread::get_id();
    known.set();
  });
  ASSERT_TRUE(known.wait());
  std::thread::id ran;
  EXPECT_TRUE(runOnDownloadThread(
      &m_source, [&] { ran = std::this_thread::get_id(); }, kLong));
  EXPECT_EQ(ran, expected);
}

TEST_F(DownloadThreadsTest, WhatWasAskedAndAnsweredBeforeComesFirst) {
  Downloader downloader(&m_source);
  Mark held;
  Mark begun;
  bool takenUp = false;
  bool handedOver = false;
  downloader.post([&] {
    begun.set();
    held.wait();
  });
  ASSERT_TRUE(begun.wait());
  downloader.post([&] { takenUp = true; }, G_PRIORITY_DEFAULT_IDLE);
  downloader.post([&] { handedOver = true; });
  held.set();
  bool both = false;
  EXPECT_TRUE(runOnDownloadThread(
      &m_source, [&] { both = takenUp && handedOver; }, kLong));
  EXPECT_TRUE(both);
}

TEST_F(DownloadThreadsTest, NothingRunsForASourceThatHasNotFetched) {
  Downloader downloader(&m_other);
  bool ran = false;
  EXPECT_FALSE(runOnDownloadThread(
      &m_source, [&] { ran = true; }, kLong));
  EXPECT_FALSE(ran);
}

TEST_F(DownloadThreadsTest, NothingRunsWhereTheThreadHasEnded) {
  Downloader downloader(&m_source);
  downloader.end();
  bool ran = false;
  EXPECT_FALSE(runOnDownloadThread(
      &m_source, [&] { ran = true; }, kLong));
  EXPECT_FALSE(ran);
}

TEST_F(DownloadThreadsTest, WhatTheThreadDidNotComeByForDoesNotRunLater) {
  Downloader downloader(&m_source);
  Mark held;
  Mark begun;
  downloader.post([&] {
    begun.set();
    held.wait();
  });
  ASSERT_TRUE(begun.wait());
  std::atomic<bool> ran = false;
  EXPECT_FALSE(runOnDownloadThread(
      &m_source, [&] { ran = true; }, milliseconds(1)));
  Mark later;
  downloader.post([&] { later.set(); }, G_PRIORITY_DEFAULT_IDLE);
  held.set();
  ASSERT_TRUE(later.wait());
  EXPECT_FALSE(ran);
}

}  // namespace
}  // namespace mediamgmnt
