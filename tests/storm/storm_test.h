// SPDX-License-Identifier: Apache-2.0
// What every storm shares: a watchdog, the library, a page, and the proof that nothing was left behind.
#pragma once

#include <gtest/gtest.h>

#include <chrono>

#include "tests/storm/page.h"
#include "tests/storm/storm_library.h"
#include "tests/storm/watchdog.h"

namespace storm {

inline constexpr std::chrono::seconds kPatience{60};

class StormTest : public ::testing::Test {
 protected:
  StormTest() : m_watchdog(::testing::UnitTest::GetInstance()->current_test_info()->name(), std::chrono::seconds(150)) {}

  /// The page's element goes, the library ends, and every handle that was opened has been closed exactly once.
  void endStorm() {
    if (page.hasElement()) {
      page.destroy();
    }
    EXPECT_TRUE(page.waitUntilReleased(kPatience));
    EXPECT_TRUE(library.waitUntilAllClosed(kPatience));
    library.finish();
    EXPECT_EQ(library.opened(), library.closed());
  }

  StormLibrary& library = StormLibrary::instance();
  Page page;

 private:
  const Watchdog m_watchdog;
};

}  // namespace storm
