// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <ctime>
#include <thread>
#include <type_traits>
#include <vector>

#include "support/av_control_lock.h"
#include "support/av_control_mutex.h"

namespace {

TEST(AVControlMutexTest, KeepsTheNameByPointer) {
  const char name[] = "PluginHandler";

  const AVControlMutex mutex(name);

  EXPECT_EQ(mutex.name(), name);
}

TEST(AVControlMutexTest, IsCalledMutexName_WhenTheNameIsNull) {
  const AVControlMutex mutex(nullptr);

  EXPECT_STREQ(mutex.name(), "mutex_name");
}

TEST(AVControlMutexTest, IsCalledMutexName_WhenNoneIsGiven) {
  const AVControlMutex mutex;

  EXPECT_STREQ(mutex.name(), "mutex_name");
}

TEST(AVControlMutexTest, PassesTheResultsThrough) {
  AVControlMutex mutex("m");

  EXPECT_EQ(mutex.lock(1), 0);
  EXPECT_EQ(mutex.unlock(1), 0);
}

TEST(AVControlMutexTest, IgnoresTheId) {
  AVControlMutex mutex("m");

  EXPECT_EQ(mutex.lock(7), 0);
  EXPECT_EQ(mutex.unlock(99), 0);
  EXPECT_EQ(mutex.lock(7), 0);
  EXPECT_EQ(mutex.unlock(7), 0);
}

/// Asked with a wait that is over before it begins: a recursive mutex would be taken again, one that checks would refuse.
TEST(AVControlMutexTest, LetsItsHolderWait_WhoTakesItAgain) {
  static_assert(std::is_standard_layout_v<AVControlMutex>, "its first field lies where it does");
  AVControlMutex mutex("m");
  auto* const posix = reinterpret_cast<pthread_mutex_t*>(&mutex);
  const timespec past{};
  ASSERT_EQ(mutex.lock(1), 0);

  EXPECT_EQ(pthread_mutex_timedlock(posix, &past), ETIMEDOUT);

  EXPECT_EQ(mutex.unlock(1), 0);
  EXPECT_EQ(pthread_mutex_timedlock(posix, &past), 0) << "free again";
  EXPECT_EQ(mutex.unlock(1), 0);
}

TEST(AVControlMutexTest, KeepsOtherThreadsOut) {
  constexpr int kThreads = 4;
  constexpr int kRounds = 2000;
  AVControlMutex mutex("counter");
  int counter = 0;
  std::vector<std::thread> threads;

  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < kRounds; ++round) {
        const AVControlLock lock(mutex);
        ++counter;
      }
    });
  }
  for (auto& thread : threads) thread.join();

  EXPECT_EQ(counter, kThreads * kRounds);
}

TEST(AVControlLockTest, LocksForItsScope) {
  AVControlMutex mutex("scope");
  std::atomic<bool> inside{false};
  std::thread other;
  bool insideWhileHeld = true;

  {
    const AVControlLock lock(mutex);
    other = std::thread([&] {
      const AVControlLock otherLock(mutex);
      inside = true;
    });
    insideWhileHeld = inside;
  }
  other.join();

  EXPECT_FALSE(insideWhileHeld);
  EXPECT_TRUE(inside);
}

TEST(AVControlLockTest, ReleasesOnAnException) {
  AVControlMutex mutex("exception");

  EXPECT_THROW(
      {
        const AVControlLock lock(mutex);
        throw 1;
      },
      int);

  const AVControlLock again(mutex);
  EXPECT_GT(AVControlLock::sm_id, again.id());
}

TEST(AVControlLockTest, GivesConsecutiveIds_OnOneThread) {
  AVControlMutex mutex("ids");
  unsigned long first = 0;
  unsigned long second = 0;
  unsigned long third = 0;

  {
    const AVControlLock lock(mutex);
    first = lock.id();
  }
  {
    const AVControlLock lock(mutex);
    second = lock.id();
  }
  {
    const AVControlLock lock(mutex);
    third = lock.id();
  }

  EXPECT_EQ(second, first + 1);
  EXPECT_EQ(third, first + 2);
}

TEST(AVControlLockTest, CountsOverAllMutexes) {
  AVControlMutex outer("outer");
  AVControlMutex inner("inner");

  const AVControlLock first(outer);
  const AVControlLock second(inner);

  EXPECT_EQ(second.id(), first.id() + 1);
}

TEST(AVControlLockTest, TakesTheCountersValueAsItsId) {
  AVControlMutex mutex("counter");
  const unsigned long before = AVControlLock::sm_id;

  const AVControlLock lock(mutex);

  EXPECT_EQ(lock.id(), before);
  EXPECT_EQ(AVControlLock::sm_id, before + 1);
}

// The number is taken before the mutex: a thread that waits has counted already.
TEST(AVControlLockTest, CountsBeforeItWaits) {
  AVControlMutex mutex("early");
  std::thread waiter;
  unsigned long waiterId = 0;
  {
    const AVControlLock held(mutex);
    const unsigned long before = AVControlLock::sm_id;
    waiter = std::thread([&] {
      const AVControlLock lock(mutex);
      waiterId = lock.id();
    });
    while (AVControlLock::sm_id == before) std::this_thread::yield();
    EXPECT_EQ(AVControlLock::sm_id, before + 1);
    EXPECT_EQ(waiterId, 0U);
  }
  waiter.join();

  EXPECT_EQ(waiterId + 1, AVControlLock::sm_id);
}

TEST(AVControlLockTest, DestructorIsNoexcept) { EXPECT_TRUE(std::is_nothrow_destructible_v<AVControlLock>); }

TEST(AVControlLockTest, CannotBeCopied) {
  EXPECT_FALSE(std::is_copy_constructible_v<AVControlLock>);
  EXPECT_FALSE(std::is_copy_constructible_v<AVControlMutex>);
}

}  // namespace
