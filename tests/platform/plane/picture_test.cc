// SPDX-License-Identifier: Apache-2.0
// One surface: where its picture lies, how it is scaled, its bars, every format, and what is no picture at all.
#include "tests/platform/plane/plane_fixture.h"

namespace {

using media::Rect;
using namespace plane_test;

TEST_F(PlaneTest, IsBlack_AtFirst) { EXPECT_TRUE(shows(m_plane, {}, kBlack)); }

TEST_F(PlaneTest, FillsThePlane_UnlessToldOtherwise) {
  media::VideoSurface surface(m_plane);

  surface.paint(makeSolid({640, 360}, kRed).get());

  EXPECT_TRUE(shows(m_plane, {0, 0, 1280, 720}, kRed));
}

TEST_F(PlaneTest, DrawsPixelForPixel_InARectangleOfThePicturesSize) {
  const auto pattern = [](int x, int y) { return static_cast<Colour>(1 + x + 256 * (y % 256) + 65536 * ((x + y) % 200)); };
  media::VideoSurface surface(m_plane);
  surface.setRect({321, 181, 200, 100});

  surface.paint(makePicture({200, 100}, pattern).get());

  const Image expected = Image().fill({321, 181, 200, 100}, [&](int x, int y) { return pattern(x - 321, y - 181); });
  EXPECT_TRUE(looksLike(m_plane, expected));
}

TEST_F(PlaneTest, KeepsToItsRectangle_WhenScaledUpAndDown) {
  media::VideoSurface surface(m_plane);
  for (const Rect rect : {Rect{320, 180, 640, 360}, Rect{1, 2, 16, 9}, Rect{1279, 0, 1, 1}, Rect{3, 5, 1274, 715}}) {
    surface.setRect(rect);
    surface.paint(makeSolid({rect.width * 2, rect.height * 2}, kGreen).get());
    EXPECT_TRUE(shows(m_plane, rect, kGreen));
    surface.paint(makeSolid({rect.width, rect.height}, kBlue).get());
    EXPECT_TRUE(shows(m_plane, rect, kBlue));
  }
}

TEST_F(PlaneTest, ScalesTheWholePicture_CornersIncluded) {
  media::VideoSurface surface(m_plane);
  surface.setRect({100, 50, 800, 400});
  const auto corners = [](int x, int y) { return y < 50 ? (x < 100 ? kRed : kGreen) : (x < 100 ? kBlue : kWhite); };

  surface.paint(makePicture({200, 100}, corners).get());

  const Pixels pixels(m_plane);
  EXPECT_EQ(pixels.painted(), (Rect{100, 50, 800, 400}));
  EXPECT_EQ(pixels.at(100, 50), kRed);
  EXPECT_EQ(pixels.at(899, 50), kGreen);
  EXPECT_EQ(pixels.at(100, 449), kBlue);
  EXPECT_EQ(pixels.at(899, 449), kWhite);
  EXPECT_EQ(pixels.at(490, 240), kRed);
  EXPECT_EQ(pixels.at(510, 260), kWhite);
}

struct BarsCase {
  const char* name;
  Shape shape;
  Rect rect;
  Rect picture;
};

class BarsTest : public PlaneTest, public ::testing::WithParamInterface<BarsCase> {};

TEST_P(BarsTest, KeepsTheDisplayAspectRatio) {
  media::VideoSurface surface(m_plane);
  surface.setRect(GetParam().rect);

  surface.paint(makeSolid(GetParam().shape, kRed).get());

  EXPECT_TRUE(shows(m_plane, GetParam().picture, kRed));
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, BarsTest,
    ::testing::Values(BarsCase{"WideInSquare", {640, 360}, {100, 100, 320, 320}, {100, 170, 320, 180}},
                      BarsCase{"TallInWide", {360, 640}, {0, 0, 1280, 720}, {437, 0, 405, 720}},
                      BarsCase{"FourToThreeInPlane", {720, 540}, {0, 0, 1280, 720}, {160, 0, 960, 720}},
                      BarsCase{"PalWideByPixelAspect", {720, 576, 64, 45}, {0, 0, 1280, 720}, {0, 0, 1280, 720}},
                      BarsCase{"PalNarrowByPixelAspect", {720, 576, 16, 15}, {0, 0, 1280, 720}, {160, 0, 960, 720}},
                      BarsCase{"LetterboxKeepsOnePixel", {1000, 2}, {10, 10, 20, 20}, {10, 19, 20, 1}},
                      BarsCase{"PillarKeepsOnePixel", {2, 1000}, {10, 10, 20, 20}, {19, 10, 1, 20}}),
    [](const auto& info) { return info.param.name; });

TEST_F(PlaneTest, RedrawsTheBars_WhenThePicturesShapeChanges) {
  media::VideoSurface surface(m_plane);
  surface.paint(makeSolid({640, 360}, kRed).get());
  for (int round = 0; round < 4; ++round) {
    surface.paint(makeSolid({360, 360}, kGreen).get());
    EXPECT_TRUE(shows(m_plane, {280, 0, 720, 720}, kGreen));
  }

  surface.paint(makeSolid({640, 360}, kRed).get());

  EXPECT_TRUE(shows(m_plane, {0, 0, 1280, 720}, kRed));
}

class FormatTest : public PlaneTest, public ::testing::WithParamInterface<GstVideoFormat> {};

TEST_P(FormatTest, ShowsColoursAtTheirPlaces) {
  media::VideoSurface surface(m_plane);
  surface.setRect({40, 20, 600, 400});
  const bool isGrey = GST_VIDEO_FORMAT_INFO_IS_GRAY(gst_video_format_get_info(GetParam()));
  const Colour left = isGrey ? 0x404040 : 0xc02040;
  const Colour right = isGrey ? 0xc0c0c0 : 0x20a0e0;

  surface.paint(makePicture({300, 200, 1, 1, GetParam()}, [&](int x, int) { return x < 150 ? left : right; }).get());

  const Pixels pixels(m_plane);
  EXPECT_EQ(pixels.painted(), (Rect{40, 20, 600, 400}));
  EXPECT_TRUE(pixels.isNear(60, 40, left, 12)) << std::hex << pixels.at(60, 40);
  EXPECT_TRUE(pixels.isNear(620, 400, right, 12)) << std::hex << pixels.at(620, 400);
}

INSTANTIATE_TEST_SUITE_P(All, FormatTest,
                         ::testing::Values(GST_VIDEO_FORMAT_I420, GST_VIDEO_FORMAT_YV12, GST_VIDEO_FORMAT_NV12,
                                           GST_VIDEO_FORMAT_Y42B, GST_VIDEO_FORMAT_Y444, GST_VIDEO_FORMAT_I420_10LE,
                                           GST_VIDEO_FORMAT_I422_10LE, GST_VIDEO_FORMAT_Y444_10LE, GST_VIDEO_FORMAT_P010_10LE,
                                           GST_VIDEO_FORMAT_YUY2, GST_VIDEO_FORMAT_YUV9, GST_VIDEO_FORMAT_Y41B,
                                           GST_VIDEO_FORMAT_RGB, GST_VIDEO_FORMAT_BGR, GST_VIDEO_FORMAT_RGBA,
                                           GST_VIDEO_FORMAT_ARGB64, GST_VIDEO_FORMAT_RGB16, GST_VIDEO_FORMAT_GRAY8,
                                           GST_VIDEO_FORMAT_GBR),
                         [](const auto& info) { return std::string(gst_video_format_to_string(info.param)); });

TEST_F(PlaneTest, DrawsInterlacedPicturesAsTheirRowsLie) {
  media::VideoSurface surface(m_plane);
  surface.setRect({0, 0, 64, 65});
  const SamplePtr sample =
      makeRaw("video/x-raw,format=BGRx,width=64,height=65,framerate=25/1,interlace-mode=interleaved", 64 * 65 * 4);
  gst_buffer_memset(gst_sample_get_buffer(sample.get()), 64 * 4, 0xff, 64 * 4);

  surface.paint(sample.get());

  EXPECT_TRUE(shows(m_plane, {0, 1, 64, 1}, kWhite));
}

TEST_F(PlaneTest, ReducesPicturesTooBigForOneGo_WithoutLosingTheirPlace) {
  media::VideoSurface surface(m_plane);
  surface.setRect({100, 100, 640, 640});
  const auto half = [](int x, int) { return x < 1920 ? kRed : kBlue; };

  surface.paint(makePicture({3840, 2160, 1, 1, GST_VIDEO_FORMAT_I420}, half).get());

  const Pixels pixels(m_plane);
  EXPECT_EQ(pixels.painted(), (Rect{100, 240, 640, 360}));
  EXPECT_TRUE(pixels.isNear(110, 250, kRed, 8));
  EXPECT_TRUE(pixels.isNear(730, 590, kBlue, 8));
  surface.setRect({0, 0, 1280, 720});
  EXPECT_EQ(Pixels(m_plane).painted(), (Rect{0, 0, 1280, 720}));
}

class NoPictureTest : public PlaneTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(NoPictureTest, LeavesTheOneBefore) {
  media::VideoSurface surface(m_plane);
  surface.paint(makeSolid({640, 360}, kRed).get());

  surface.paint(makeRaw(GetParam(), 100).get());

  EXPECT_EQ(surface.frames(), 1u);
  EXPECT_EQ(m_plane.frames(), 1u);
  EXPECT_TRUE(shows(m_plane, {0, 0, 1280, 720}, kRed));
}

INSTANTIATE_TEST_SUITE_P(Samples, NoPictureTest,
                         ::testing::Values("", "ANY", "EMPTY", "video/x-raw", "video/x-raw,format=I420",
                                           "video/x-raw,format=I420,width=640", "video/x-raw,format=NOSUCH,width=4,height=4",
                                           "video/x-raw,format={I420,NV12},width=4,height=4",
                                           "video/x-raw,format=I420,width=640,height=360",
                                           "video/x-raw,format=I420,width=0,height=0", "video/x-raw,format=I420,width=-2,height=2",
                                           "video/x-raw,format=ENCODED,width=4,height=4", "video/x-h264,width=4,height=4",
                                           "image/jpeg,width=4,height=4", "audio/x-raw,rate=48000",
                                           "video/x-raw(format:Interlaced),format=I420,width=4,height=8,interlace-mode=alternate"));

TEST_F(PlaneTest, IgnoresNoSampleAndASampleWithoutBuffer) {
  media::VideoSurface surface(m_plane);
  GstCaps* const caps = gst_caps_from_string("video/x-raw,format=I420,width=4,height=4");
  const SamplePtr empty(gst_sample_new(nullptr, caps, nullptr, nullptr), gst_sample_unref);
  gst_caps_unref(caps);

  surface.paint(nullptr);
  surface.paint(empty.get());

  EXPECT_EQ(surface.frames(), 0u);
}

TEST_F(PlaneTest, FollowsTheStreamsFormat_FromPictureToPicture) {
  media::VideoSurface surface(m_plane);
  surface.setRect({0, 0, 160, 90});
  for (const GstVideoFormat format : {GST_VIDEO_FORMAT_I420, GST_VIDEO_FORMAT_NV12, GST_VIDEO_FORMAT_RGB, GST_VIDEO_FORMAT_I420}) {
    for (const int width : {160, 320, 1280}) {
      surface.paint(makeSolid({width, width * 9 / 16, 1, 1, format}, kGreen).get());
      EXPECT_EQ(Pixels(m_plane).painted(), (Rect{0, 0, 160, 90}));
      EXPECT_TRUE(Pixels(m_plane).isNear(80, 45, kGreen, 8)) << std::hex << Pixels(m_plane).at(80, 45);
    }
  }
}

}  // namespace
