// SPDX-License-Identifier: Apache-2.0
// What a shell makes of a media library that lacks an extra.
#include "platform/shell/media_library.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(MediaLibraryExtras, StackingIsLeftToALibraryThatKnowsNoOther) {
  std::string error;
  const auto library = shell::MediaLibrary::load(SCRIPTED_MEDIA_LIBRARY, error);
  ASSERT_NE(library, nullptr) << error;

  EXPECT_TRUE(library->hasPlane());
  EXPECT_FALSE(library->arrangePlane({2, 1}));
  EXPECT_FALSE(library->arrangePlane({}));
}

}  // namespace
