// SPDX-License-Identifier: Apache-2.0
#include "support/stable_texts.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace {

TEST(StableTextsTest, KeepsACopy) {
  StableTexts texts;
  std::string source = "http://media.example/a.mp4";

  const char* const kept = texts.keep(source.c_str());
  source = "changed";

  EXPECT_STREQ(kept, "http://media.example/a.mp4");
}

TEST(StableTextsTest, GivesNullForNull) {
  StableTexts texts;

  EXPECT_EQ(texts.keep(nullptr), nullptr);
}

TEST(StableTextsTest, KeepsAnEmptyText) {
  StableTexts texts;

  ASSERT_NE(texts.keep(""), nullptr);
  EXPECT_STREQ(texts.keep(""), "");
}

// The queue holds ten commands and one more may run: a text must outlive many newer ones.
TEST(StableTextsTest, LeavesATextAlone_WhileFewerThanItsSlotsFollow) {
  StableTexts texts;
  const char* const kept = texts.keep("first");

  for (std::size_t i = 1; i < StableTexts::kSlots; ++i) texts.keep(("text " + std::to_string(i)).c_str());

  EXPECT_STREQ(kept, "first");
  EXPECT_GT(StableTexts::kSlots, 11U);
}

TEST(StableTextsTest, GivesEachCallerItsOwnText_FromSeveralThreads) {
  StableTexts texts;
  std::vector<std::thread> threads;
  std::vector<int> wrong(4, 0);

  for (int id = 0; id < 4; ++id) {
    threads.emplace_back([&, id] {
      const std::string mine = "thread " + std::to_string(id);
      // 4 threads of 10 texts stay within the slots, so that none is reused while it is compared.
      for (int round = 0; round < 10; ++round) {
        if (texts.keep(mine.c_str()) != mine) ++wrong[static_cast<std::size_t>(id)];
      }
    });
  }
  for (auto& thread : threads) thread.join();

  EXPECT_EQ(wrong, std::vector<int>(4, 0));
}

}  // namespace
