// SPDX-License-Identifier: Apache-2.0
// What an idle object costs in the host.
#include <malloc.h>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "tests/unit/pluginhost/fake_plugin.h"

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kCountsAllocations = false;  // the sanitizers' allocators do not keep these counts
#else
constexpr bool kCountsAllocations = true;
#endif

constexpr std::size_t kObjects = 1000;
constexpr std::size_t kMostBytesEach = 4096;  // of the 64 KiB that an object may cost with the plugin's own buffers

TEST(FootprintTest, ThousandIdleObjectsAreSmall) {
  std::vector<std::unique_ptr<FakePlugin>> objects;
  objects.reserve(kObjects);
  const std::size_t before = mallinfo2().uordblks;

  for (std::size_t i = 0; i < kObjects; ++i) {
    objects.push_back(std::make_unique<FakePlugin>());
    ASSERT_TRUE(objects.back()->install());
  }

  const std::size_t each = (mallinfo2().uordblks - before) / kObjects;
  EXPECT_TRUE(!kCountsAllocations || each > sizeof(FakePlugin)) << each;
  EXPECT_LT(each, kMostBytesEach);
}

TEST(FootprintTest, ReadingANumberRowNeedsNoMemory) {
  FakePlugin plugin;
  ASSERT_TRUE(plugin.install());
  const auto stored = static_cast<unsigned int>(pluginhost::findProperty(plugin, "count"));
  const auto computed = static_cast<unsigned int>(pluginhost::findProperty(plugin, "answer"));
  const auto emptyText = static_cast<unsigned int>(pluginhost::findProperty(plugin, "title"));
  _CorvelNativeVariant value;
  const std::size_t before = mallinfo2().uordblks;

  for (const unsigned int row : {stored, computed, emptyText}) {
    ASSERT_TRUE(pluginhost::readProperty(plugin, row, value));
    EXPECT_EQ(value.string.owned, 0U);
    EXPECT_EQ(mallinfo2().uordblks, before);
  }
}

}  // namespace
