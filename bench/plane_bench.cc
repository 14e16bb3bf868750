// SPDX-License-Identifier: Apache-2.0
// What a frame costs on the video plane, against the least it could cost: copying one finished picture of that size.
#include <benchmark/benchmark.h>
#include <gst/gst.h>
#include <gst/video/video.h>

#include <cstring>
#include <memory>
#include <vector>

#include "platform/mediamgmnt/media_plane.h"
#include "platform/mediamgmnt/video_plane.h"

namespace {

using media::Rect;
using SamplePtr = std::unique_ptr<GstSample, void (*)(GstSample*)>;

constexpr Rect kWholePlane{0, 0, kMediaPlaneWidth, kMediaPlaneHeight};

/// A decoder's picture: I420, grey.
SamplePtr makeFrame(int width, int height) {
  GstVideoInfo info;
  gst_video_info_set_format(&info, GST_VIDEO_FORMAT_I420, static_cast<guint>(width), static_cast<guint>(height));
  GstCaps* const caps = gst_video_info_to_caps(&info);
  GstBuffer* const buffer = gst_buffer_new_allocate(nullptr, GST_VIDEO_INFO_SIZE(&info), nullptr);
  gst_buffer_memset(buffer, 0, 0x80, GST_VIDEO_INFO_SIZE(&info));
  SamplePtr sample(gst_sample_new(buffer, caps, nullptr, nullptr), gst_sample_unref);
  gst_buffer_unref(buffer);
  gst_caps_unref(caps);
  return sample;
}

void copyWholePlane(benchmark::State& state) {
  const std::vector<unsigned char> from(kMediaPlaneBytes, 1);
  std::vector<unsigned char> to(kMediaPlaneBytes);
  for (auto _ : state) {
    std::memcpy(to.data(), from.data(), kMediaPlaneBytes);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * kMediaPlaneBytes);
}
BENCHMARK(copyWholePlane);

void paint(benchmark::State& state, int width, int height, Rect rect) {
  media::VideoPlane plane;
  media::VideoSurface surface(plane);
  const SamplePtr frame = makeFrame(width, height);
  surface.setRect(rect);
  surface.paint(frame.get());
  for (auto _ : state) surface.paint(frame.get());
  if (plane.frames() < 2) state.SkipWithError("nothing was drawn");
}
BENCHMARK_CAPTURE(paint, size640x360_as_it_is, 640, 360, Rect{320, 180, 640, 360});
BENCHMARK_CAPTURE(paint, size640x360_to_whole_plane, 640, 360, kWholePlane);
BENCHMARK_CAPTURE(paint, size1280x720_as_it_is, 1280, 720, kWholePlane);
BENCHMARK_CAPTURE(paint, size1920x1080_to_whole_plane, 1920, 1080, kWholePlane);
BENCHMARK_CAPTURE(paint, size640x360_half_outside, 640, 360, Rect{-320, 180, 640, 360});

/// A second, still picture: what sharing the plane adds to the first one's frames.
void paintBesideAnother(benchmark::State& state, Rect other) {
  media::VideoPlane plane;
  media::VideoSurface surface(plane);
  media::VideoSurface above(plane);
  const SamplePtr frame = makeFrame(640, 360);
  surface.setRect({0, 0, 640, 360});
  above.setRect(other);
  above.paint(frame.get());
  for (auto _ : state) surface.paint(frame.get());
  if (plane.frames() < 2) state.SkipWithError("nothing was drawn");
}
BENCHMARK_CAPTURE(paintBesideAnother, apart, Rect{640, 360, 640, 360});
BENCHMARK_CAPTURE(paintBesideAnother, overlapping, Rect{320, 180, 640, 360});

void snapshot(benchmark::State& state) {
  media::VideoPlane plane;
  media::VideoSurface surface(plane);
  surface.paint(makeFrame(640, 360).get());
  std::vector<unsigned char> pixels(kMediaPlaneBytes);
  for (auto _ : state) {
    const bool copied = plane.snapshot(pixels.data(), pixels.size());
    if (!copied) state.SkipWithError("no snapshot");
  }
}
BENCHMARK(snapshot);

}  // namespace

int main(int argc, char** argv) {
  gst_init(&argc, &argv);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
