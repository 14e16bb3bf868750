// SPDX-License-Identifier: Apache-2.0
// The library's texts and tables, without any media.
#include <glib.h>
#include <gst/gst.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <string>

#include "platform/mediamgmnt/error_map.h"
#include "platform/mediamgmnt/number_text.h"
#include "platform/mediamgmnt/property_text.h"
#include "platform/mediamgmnt/source_sniffer.h"

namespace mediamgmnt {
namespace {

TEST(NumberTextTest, ReadsANumberAtTheFront) {
  EXPECT_EQ(parseNumber("1.50"), 1.5);
  EXPECT_EQ(parseNumber(" -2.00x"), -2.0);
  EXPECT_EQ(parseNumber("+3"), 3.0);
  EXPECT_EQ(parseNumber("1,5"), 1.0);
  for (const char* const text : {"", " ", "x", "+-1", "nan", "inf", "1e999", "."})
    EXPECT_EQ(parseNumber(text), std::nullopt) << text;
}

std::string withTwoDigits(double value) {
  std::array<char, 32> text;
  std::snprintf(text.data(), text.size(), "%.2f", value);
  return text.data();
}

TEST(NumberTextTest, WritesTwoDigitsOrNone) {
  EXPECT_EQ(formatSpeed(0.5), "0.50");
  EXPECT_EQ(formatSpeed(-2), "-2.00");
  EXPECT_EQ(formatSpeed(0), "0.00");
  EXPECT_EQ(formatSpeed(-0.0), "-0.00");
  for (const double value : {1.0, 16.0, -32.0, 999.0, 1000.0, -1000.0, 0.994, -0.25, 1.999, 123456789.125})
    EXPECT_EQ(formatSpeed(value), withTwoDigits(value));
  EXPECT_EQ(formatWhole(-12), "-12");
}

TEST(PropertyTextTest, ReadsRectangles) {
  const auto rect = parseRect("1|-2|3|4|");
  ASSERT_TRUE(rect.has_value());
  EXPECT_EQ(rect->x, 1);
  EXPECT_EQ(rect->y, -2);
  EXPECT_EQ(rect->width, 3);
  EXPECT_EQ(rect->height, 4);
  for (const char* const text : {"", "1|2|3|4", "1|2|3|", "1|2|0|4|", "1|2|3|-4|", "a|2|3|4|", "99999999999|2|3|4|"}) {
    EXPECT_FALSE(parseRect(text).has_value()) << text;
  }
}

TEST(PropertyTextTest, ReadsSizes) {
  EXPECT_EQ(parseSize("1920x1080").width, 1920);
  EXPECT_EQ(parseSize("1920|1080|").height, 1080);
  for (const char* const text : {"", "1920", "x1080", "0x10", "-5x5"}) EXPECT_EQ(parseSize(text).width, 0) << text;
}

TEST(PropertyTextTest, ReadsLoopAndCache) {
  EXPECT_EQ(parsePlays("infinite"), -1);
  EXPECT_EQ(parsePlays("3"), 3);
  EXPECT_EQ(parsePlays("1e30"), 2147483647);
  for (const char* const text : {"", "0", "1", "-3", "often", "Infinite"}) EXPECT_EQ(parsePlays(text), 1) << text;
  for (const char* const text : {"0", "false", "No", "OFF"}) EXPECT_FALSE(parseCached(text)) << text;
  for (const char* const text : {"", "1", "true", "yes"}) EXPECT_TRUE(parseCached(text)) << text;
}

TEST(SourceSnifferTest, KnowsAManifestByItsContent) {
  EXPECT_EQ(capsToForce("<?xml version='1.0'?>\n<MPD xmlns='x'>", ""), "application/dash+xml");
  EXPECT_EQ(capsToForce("\xEF\xBB\xBF<MPD>", "video/mp4"), "application/dash+xml");
  EXPECT_EQ(capsToForce("<html><MPD", "").empty(), false);
  EXPECT_EQ(capsToForce(std::string(5000, ' ') + "<MPD", ""), "");
}

TEST(SourceSnifferTest, TakesTheDeclaredTypeUnlessTheContentContradicts) {
  EXPECT_EQ(capsToForce("<?xml version='1.0'?><!-- long -->", "Application/DASH+xml; charset=utf-8"), "application/dash+xml");
  EXPECT_EQ(capsToForce("<html>", "application/dash+xml"), "");
  EXPECT_EQ(capsToForce("#EXTM3U\n", "application/vnd.apple.mpegurl"), "application/x-hls");
  EXPECT_EQ(capsToForce("hello", "application/vnd.apple.mpegurl"), "");
  EXPECT_EQ(capsToForce(std::string("\0\0\0\x20"
                                    "ftypisom",
                                    12),
                        "video/mp4"),
            "video/quicktime, variant=(string)iso");
  EXPECT_EQ(capsToForce("random bytes", "video/mp4"), "");
  EXPECT_EQ(capsToForce("", "video/mp4"), "");
}

int codeOf(GQuark domain, int code, const FailureContext& context) {
  GError* const error = g_error_new_literal(domain, code, "test");
  const int result = errorCodeOf(classifyError(*error, context));
  g_error_free(error);
  return result;
}

TEST(ErrorMapTest, GivesTheCodesOfTheStandard) {
  const FailureContext source{true, false, true, false};
  const FailureContext segment{false, true, true, true};
  const FailureContext inside{false, false, true, true};
  EXPECT_EQ(codeOf(GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_NOT_FOUND, source), 5);
  EXPECT_EQ(codeOf(GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_NOT_AUTHORIZED, source), 5);
  EXPECT_EQ(codeOf(GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_NOT_FOUND, segment), 6);
  EXPECT_EQ(codeOf(GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_OPEN_READ, source), 1);
  for (const unsigned int status : {400U, 410U, 429U, 451U}) {
    EXPECT_EQ(codeOf(GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_OPEN_READ, {true, false, true, false, status}), 5) << status;
    EXPECT_EQ(codeOf(GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_OPEN_READ, {false, true, true, true, status}), 6) << status;
  }
  EXPECT_EQ(codeOf(GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_OPEN_READ, {true, false, true, false, 503}), 1);
  EXPECT_EQ(codeOf(GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_NO_SPACE_LEFT, inside), 3);
  EXPECT_EQ(codeOf(GST_STREAM_ERROR, GST_STREAM_ERROR_FAILED, source), 1);
  EXPECT_EQ(codeOf(GST_STREAM_ERROR, GST_STREAM_ERROR_FAILED, inside), 4);
  EXPECT_EQ(codeOf(GST_STREAM_ERROR, GST_STREAM_ERROR_TYPE_NOT_FOUND, inside), 0);
  EXPECT_EQ(codeOf(GST_STREAM_ERROR, GST_STREAM_ERROR_WRONG_TYPE, inside), 0);
  EXPECT_EQ(codeOf(GST_STREAM_ERROR, GST_STREAM_ERROR_CODEC_NOT_FOUND, inside), 0);
  EXPECT_EQ(codeOf(GST_STREAM_ERROR, GST_STREAM_ERROR_DECODE, inside), 4);
  EXPECT_EQ(codeOf(GST_STREAM_ERROR, GST_STREAM_ERROR_DEMUX, inside), 4);
  EXPECT_EQ(codeOf(GST_CORE_ERROR, GST_CORE_ERROR_MISSING_PLUGIN, inside), 0);
  EXPECT_EQ(codeOf(GST_CORE_ERROR, GST_CORE_ERROR_FAILED, inside), 2);
  EXPECT_EQ(codeOf(GST_LIBRARY_ERROR, GST_LIBRARY_ERROR_FAILED, inside), 2);
}

}  // namespace
}  // namespace mediamgmnt
