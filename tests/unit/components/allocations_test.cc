// SPDX-License-Identifier: Apache-2.0
// How much memory reading a record asks for: records are read anew on each access, so nothing may be built on the way.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <string>

#include "tests/unit/components/record_text.h"

namespace {

// The plugin's calls of malloc and calloc come here by a linker option, those of operator new by replacement.
thread_local int g_allocations = 0;

}  // namespace

extern "C" {
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);

// Visible: the linker takes a library's malloc for one of the calls that it redirects.
__attribute__((visibility("default"))) void* __wrap_malloc(std::size_t size) {
  ++g_allocations;
  return __real_malloc(size);
}

__attribute__((visibility("default"))) void* __wrap_calloc(std::size_t count, std::size_t size) {
  ++g_allocations;
  return __real_calloc(count, size);
}
}

void* operator new(std::size_t size) {
  if (void* const block = std::malloc(size > 0 ? size : 1)) return block;  // counted there
  throw std::bad_alloc();
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }

namespace {

constexpr int kRecordAndItsCommonRecord = 2;

template <typename Record>
int allocationsOf(Record* (*create)(char*), void (*destroy)(Record*), std::string text) {
  const int before = g_allocations;
  Record* const record = create(text.data());
  const int made = g_allocations - before;
  EXPECT_NE(record, nullptr);
  if (record != nullptr) destroy(record);
  return made;
}

TEST(RecordAllocationTest, CountsWhatTheTestItselfAsksFor) {
  const int before = g_allocations;

  const auto number = std::make_unique<int>(1);
  const std::string text(1000, 'x');

  EXPECT_EQ(g_allocations - before, 2);
}

TEST(RecordAllocationTest, IsOneForEachText) {
  EXPECT_EQ(allocationsOf(hlpCreateAVVideoComponent, hlpDestroyAVVideoComponent, videoText()), kRecordAndItsCommonRecord + 4);
  EXPECT_EQ(allocationsOf(hlpCreateAVAudioComponent, hlpDestroyAVAudioComponent, audioText()), kRecordAndItsCommonRecord + 6);
  EXPECT_EQ(allocationsOf(hlpCreateAVSubtitleComponent, hlpDestroyAVSubtitleComponent, subtitleText()),
            kRecordAndItsCommonRecord + 7);
}

/// Long fields, empty ones and odd numbers cost no more than ordinary ones.
TEST(RecordAllocationTest, DoesNotDependOnWhatTheFieldsHold) {
  const std::string longText(50000, 'n');
  const std::string longNumber(5000, '7');

  EXPECT_EQ(allocationsOf(hlpCreateAVVideoComponent, hlpDestroyAVVideoComponent,
                          "0|" + longText + "|1|" + longNumber + "|0|(null)|" + longText + "|1||" + " 1.5e0x|"),
            kRecordAndItsCommonRecord + 4);
  EXPECT_EQ(allocationsOf(hlpCreateAVAudioComponent, hlpDestroyAVAudioComponent, "|||||||||||||"), kRecordAndItsCommonRecord + 6);
}

TEST(RecordAllocationTest, IsNone_WhenThereIsNoRecord) {
  std::string text = videoText() + "NOT_AVAILABLE";
  const int before = g_allocations;

  EXPECT_EQ(hlpCreateAVVideoComponent(text.data()), nullptr);

  EXPECT_EQ(g_allocations, before);
}

}  // namespace
