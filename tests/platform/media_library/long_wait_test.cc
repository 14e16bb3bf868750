// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/long_wait.h"

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace mediamgmnt {
namespace {

class LongWaitTest : public testing::Test {
 protected:
  void help(unsigned time) {
    const std::lock_guard lock(m_mutex);
    EXPECT_EQ(time, m_helps++);
    m_helped.notify_one();
  }
  bool isHelped(unsigned times) {
    std::unique_lock lock(m_mutex);
    return m_helped.wait_for(lock, std::chrono::seconds(30), [&] { return m_helps >= times; });
  }

  std::mutex m_mutex;
  std::condition_variable m_helped;
  unsigned m_helps = 0;
};

TEST_F(LongWaitTest, HelpsAgainAndAgainWhileItLasts) {
  const LongWait wait(std::chrono::milliseconds(1), [this](unsigned time) { help(time); });
  EXPECT_TRUE(isHelped(3));
}

TEST_F(LongWaitTest, ThatIsShortNeedsNoHelpAndEndsAtOnce) {
  {
    const LongWait wait(std::chrono::hours(1), [this](unsigned time) { help(time); });
  }
  EXPECT_EQ(m_helps, 0U);
}

}  // namespace
}  // namespace mediamgmnt
