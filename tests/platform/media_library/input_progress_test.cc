// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/input_progress.h"

#include <gtest/gtest.h>

namespace mediamgmnt {
namespace {

using namespace std::chrono_literals;

/// A picture of 4 s, and another stream.
class InputProgressTest : public testing::Test {
 protected:
  InputProgressTest() {
    m_progress.advance(m_picture, 4s);
    m_progress.finish(m_picture);
  }

  InputProgress m_progress;
  const InputProgress::Id m_picture = m_progress.add();
  const InputProgress::Id m_other = m_progress.add();
};

TEST_F(InputProgressTest, IsCutOffOnlyWhenAllHaveEndedAndNoneHasComeThatFar) {
  m_progress.advance(m_other, 5s);
  EXPECT_FALSE(m_progress.isAllShorterThan(20s));

  m_progress.finish(m_other);

  EXPECT_TRUE(m_progress.isAllShorterThan(20s));
  EXPECT_FALSE(m_progress.isAllShorterThan(5s));
}

TEST_F(InputProgressTest, ReachesAsFarAsItHasEverCome) {
  m_progress.advance(m_other, 19s);
  m_progress.restart(m_other);
  m_progress.advance(m_other, 3s);
  m_progress.finish(m_other);

  EXPECT_FALSE(m_progress.isAllShorterThan(18s));
}

TEST_F(InputProgressTest, IsOverWhenTextAloneGoesOn) {
  m_progress.describe(m_other, false);
  m_progress.advance(m_other, 6s);

  EXPECT_FALSE(m_progress.isMediaOverAt(3s));
  EXPECT_TRUE(m_progress.isMediaOverAt(4s));
}

TEST_F(InputProgressTest, IsNotOverBeforeAllSoundsHaveEnded) {
  m_progress.describe(m_other, true);
  m_progress.advance(m_other, 4s);
  EXPECT_FALSE(m_progress.isMediaOverAt(6s));

  m_progress.finish(m_other);

  EXPECT_TRUE(m_progress.isMediaOverAt(6s));
}

TEST_F(InputProgressTest, HasNoEndOnceItIsTakenApartAnew) {
  EXPECT_TRUE(m_progress.hasEnd());

  m_progress.restart(m_picture);

  EXPECT_FALSE(m_progress.hasEnd());
}

TEST(NoInputTest, IsNeverOver) { EXPECT_FALSE(InputProgress().isMediaOverAt(1s)); }

}  // namespace
}  // namespace mediamgmnt
