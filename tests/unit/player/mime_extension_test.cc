// SPDX-License-Identifier: Apache-2.0
// The look-up from MIME type to file extension: nine rows, tried in order, each found anywhere inside the given text.
#include "player/mime_extension.h"

#include <gtest/gtest.h>

#include <ostream>

namespace {

struct Row {
  const char* mimeType;
  const char* extension;
};

std::ostream& operator<<(std::ostream& out, const Row& row) { return out << row.mimeType; }

class MimeExtensionRowTest : public ::testing::TestWithParam<Row> {};

TEST_P(MimeExtensionRowTest, IsFound) { EXPECT_STREQ(GetParam().extension, mimeTypeToExtension(GetParam().mimeType)); }

INSTANTIATE_TEST_SUITE_P(Types, MimeExtensionRowTest,
                         ::testing::Values(Row{"audio/mpeg", ".mp3"}, Row{"audio/mp4", ".aac"}, Row{"video/mpeg4", ".mpeg4"},
                                           Row{"video/mpeg", ".ts"}, Row{"video/mp4", ".mp4"}, Row{"application/dash+xml", ".dash"},
                                           Row{"application/vnd.apple.mpegurl", ".hls"}, Row{"video/x-ms-asf", ".wmv"},
                                           Row{"application/vnd.oipf.ContentAccessStreaming+xml", ".mp4"}));

TEST(MimeExtensionTest, HasNone_ForNull) { EXPECT_EQ(nullptr, mimeTypeToExtension(nullptr)); }

TEST(MimeExtensionTest, HasNone_ForOtherTexts) {
  for (const char* text : {"", "video", "video/mp", "Video/MP4", "text/html", "application/ttml+xml", "mp4"}) {
    EXPECT_EQ(nullptr, mimeTypeToExtension(text)) << text;
  }
}

TEST(MimeExtensionTest, FindsATypeInsideALongerText) {
  EXPECT_STREQ(".mp4", mimeTypeToExtension("x-video/mp4; codecs=\"avc1\""));
  EXPECT_STREQ(".mpeg4", mimeTypeToExtension(" video/mpeg4-generic"));
  EXPECT_STREQ(".ts", mimeTypeToExtension("video/mpeg2"));
}

TEST(MimeExtensionTest, TakesTheFirstRowThatOccurs) {
  EXPECT_STREQ(".mp3", mimeTypeToExtension("video/mp4,audio/mpeg"));
  EXPECT_STREQ(".ts", mimeTypeToExtension("application/dash+xml video/mpeg"));
}

}  // namespace
