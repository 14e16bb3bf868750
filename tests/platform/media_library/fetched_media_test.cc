// SPDX-License-Identifier: Apache-2.0
// How far fetched media reach, told from what is handed to tracks.
#include "platform/mediamgmnt/fetched_media.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>

namespace {

using mediamgmnt::FetchedMedia;

constexpr std::int64_t kSecondNs = GST_SECOND;

/// An element with one sink pad that takes everything, as the demuxer's own tracks have.
class Track {
 public:
  Track(FetchedMedia& media, const char* caps, double rate = 1)
      : m_element(GST_ELEMENT(gst_object_ref_sink(gst_bin_new(nullptr)))) {
    m_pad = gst_pad_new("sink", GST_PAD_SINK);
    gst_pad_set_chain_function(m_pad, take);
    gst_pad_set_active(m_pad, TRUE);
    gst_element_add_pad(m_element, m_pad);
    media.watch(m_element);
    gst_pad_send_event(m_pad, gst_event_new_stream_start("track"));
    gst_pad_send_event(m_pad, gst_event_new_caps(makeCaps(caps)));
    GstSegment segment;
    gst_segment_init(&segment, GST_FORMAT_TIME);
    segment.rate = rate;
    segment.stop = 100 * kSecondNs;
    gst_pad_send_event(m_pad, gst_event_new_segment(&segment));
  }
  ~Track() {
    gst_pad_set_active(m_pad, FALSE);
    gst_object_unref(m_element);
  }
  Track(const Track&) = delete;
  Track& operator=(const Track&) = delete;

  void take(double second, double length = 1) {
    GstBuffer* const buffer = gst_buffer_new();
    GST_BUFFER_PTS(buffer) = static_cast<GstClockTime>(second * kSecondNs);
    GST_BUFFER_DURATION(buffer) = static_cast<GstClockTime>(length * kSecondNs);
    EXPECT_EQ(gst_pad_chain(m_pad, buffer), GST_FLOW_OK);
  }
  void end() { gst_pad_send_event(m_pad, gst_event_new_eos()); }

 private:
  static GstFlowReturn take(GstPad*, GstObject*, GstBuffer* buffer) {
    gst_buffer_unref(buffer);
    return GST_FLOW_OK;
  }
  /// The event keeps a reference of its own.
  GstCaps* makeCaps(const char* text) {
    m_caps = std::unique_ptr<GstCaps, decltype(&gst_caps_unref)>(gst_caps_from_string(text), gst_caps_unref);
    return m_caps.get();
  }

  std::unique_ptr<GstCaps, decltype(&gst_caps_unref)> m_caps{nullptr, gst_caps_unref};
  GstElement* m_element;
  GstPad* m_pad = nullptr;
};

class FetchedMediaTest : public testing::Test {
 protected:
  static void SetUpTestSuite() { gst_init(nullptr, nullptr); }

  /// Nothing is -1.
  long long from(double second) const {
    return m_media.millisecondsFrom(static_cast<std::int64_t>(second * kSecondNs)).value_or(-1);
  }

  FetchedMedia m_media;
};

TEST_F(FetchedMediaTest, NothingIsToldOfNothing) {
  EXPECT_EQ(from(0), -1);
  Track text(m_media, "application/x-subtitle-vtt");
  text.take(0, 30);
  EXPECT_EQ(from(0), -1);
  Track sound(m_media, "audio/mpeg");
  sound.take(0);
  EXPECT_EQ(from(-1), -1);
}

TEST_F(FetchedMediaTest, TheShorterOneOfSoundAndPictureDecides) {
  Track picture(m_media, "video/x-h264");
  Track sound(m_media, "audio/mpeg");
  picture.take(0);
  EXPECT_EQ(from(0), 1000);
  sound.take(0);
  sound.take(1);
  EXPECT_EQ(from(0), 1000);
  picture.take(1);
  picture.take(2);
  EXPECT_EQ(from(0), 2000);
  EXPECT_EQ(from(1.5), 500);
  EXPECT_EQ(from(9), 0);
}

TEST_F(FetchedMediaTest, PicturesComeInTheOrderOfDecoding) {
  Track picture(m_media, "video/x-h264");
  picture.take(3);
  picture.take(1);
  picture.take(2);
  EXPECT_EQ(from(0), 4000);
}

TEST_F(FetchedMediaTest, WhatHasEndedHoldsNothingUp) {
  Track picture(m_media, "video/x-h264");
  Track sound(m_media, "audio/mpeg");
  sound.take(0);
  sound.end();
  picture.take(4);
  EXPECT_EQ(from(0), 5000);
  picture.end();
  EXPECT_EQ(from(0), 5000);
}

TEST_F(FetchedMediaTest, AnotherTrackOfItsKindTakesItsPlace) {
  Track english(m_media, "audio/mpeg");
  english.take(9);
  Track german(m_media, "audio/mpeg");
  german.take(2);
  EXPECT_EQ(from(0), 3000);
  english.end();  // is not fetched any more
  EXPECT_EQ(from(0), 3000);
}

TEST_F(FetchedMediaTest, BackwardsTheBeginningCounts) {
  Track picture(m_media, "video/x-h264", -1);
  picture.take(8);
  picture.take(9);
  picture.take(6);
  picture.take(7);
  EXPECT_EQ(from(10), 4000);
  EXPECT_EQ(from(5), 0);
}

TEST_F(FetchedMediaTest, ASeekBeginsAnew) {
  Track picture(m_media, "video/x-h264");
  picture.take(9);
  m_media.forget();
  EXPECT_EQ(from(0), -1);
  picture.take(2);
  EXPECT_EQ(from(0), 3000);
}

TEST_F(FetchedMediaTest, ItIsAskedWhileMoreComes) {
  Track picture(m_media, "video/x-h264");
  picture.take(0);
  std::atomic<bool> stop{false};
  std::thread fetching([&] {
    for (int second = 1; second < 2000; ++second) picture.take(second % 90);
    stop = true;
  });
  long long last = 0;
  bool grows = true;
  while (!stop) {
    const long long now = from(0);
    grows = grows && now >= last;
    last = now;
  }
  fetching.join();
  EXPECT_TRUE(grows);
  EXPECT_EQ(from(0), 90000);
}

}  // namespace
