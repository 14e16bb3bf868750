// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/store_room.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <string>

namespace mediamgmnt {
namespace {

using namespace std::chrono_literals;

constexpr guint kBufferBytes = 1024 * 1024;

/// A decoder whose queue nobody empties.
class StoreRoomTest : public ::testing::Test {
 protected:
  StoreRoomTest() {
    gst_init(nullptr, nullptr);
    m_decoder = GST_ELEMENT(gst_object_ref_sink(gst_bin_new(nullptr)));
    GstElement* const decodebin = gst_element_factory_make("decodebin3", nullptr);
    gst_bin_add(GST_BIN(m_decoder), decodebin);
    GstIterator* const queues = gst_bin_iterate_all_by_element_factory_name(GST_BIN(decodebin), "multiqueue");
    GValue value = G_VALUE_INIT;
    if (gst_iterator_next(queues, &value) == GST_ITERATOR_OK) m_store = GST_ELEMENT(g_value_dup_object(&value));
    g_value_unset(&value);
    gst_iterator_free(queues);
    m_in = gst_element_request_pad_simple(m_store, "sink_%u");
    m_out = gst_element_get_static_pad(m_store, "src_0");
    gst_pad_add_probe(
        m_out, GST_PAD_PROBE_TYPE_BLOCK_DOWNSTREAM, [](GstPad*, GstPadProbeInfo*, gpointer) { return GST_PAD_PROBE_OK; }, nullptr,
        nullptr);
    gst_element_set_state(m_store, GST_STATE_PAUSED);
    send(gst_event_new_stream_start("one"));
    GstSegment segment;
    gst_segment_init(&segment, GST_FORMAT_TIME);
    send(gst_event_new_segment(&segment));
  }
  ~StoreRoomTest() override {
    gst_element_set_state(m_store, GST_STATE_NULL);  // whoever waits goes on
    m_waiting = {};
    gst_object_unref(m_out);
    gst_object_unref(m_in);
    gst_object_unref(m_store);
    gst_object_unref(m_decoder);
  }

  bool send(GstEvent* event) { return gst_pad_send_event(m_in, event) != FALSE; }
  /// @return whether all are taken in that time.
  bool takes(int buffers, std::chrono::milliseconds patience = 30s) {
    m_waiting = std::async(std::launch::async, [this, buffers] {
      for (int i = 0; i < buffers; ++i) gst_pad_chain(m_in, gst_buffer_new_allocate(nullptr, kBufferBytes, nullptr));
    });
    return m_waiting.wait_for(patience) == std::future_status::ready;
  }
  bool takesTrack() {
    m_waiting = std::async(std::launch::async, [this] { send(gst_event_new_stream_start("other")); });
    return m_waiting.wait_for(30s) == std::future_status::ready;
  }
  guint bytes() const {
    guint value = 0;
    g_object_get(m_store, "max-size-bytes", &value, nullptr);
    return value;
  }
  guint64 time() const {
    guint64 value = 0;
    g_object_get(m_store, "max-size-time", &value, nullptr);
    return value;
  }

  GstElement* m_decoder = nullptr;
  GstElement* m_store = nullptr;
  GstPad* m_in = nullptr;
  GstPad* m_out = nullptr;
  std::future<void> m_waiting;
  StoreRoom m_room;
};

TEST_F(StoreRoomTest, FullQueueTakesWhatIsToldOfAnotherTrackWhileItIsOpen) {
  const guint full = bytes() / kBufferBytes;
  ASSERT_TRUE(takes(static_cast<int>(full)));
  m_room.open(m_decoder);
  EXPECT_TRUE(takesTrack());
}

TEST_F(StoreRoomTest, ClosedQueueMakesWaitAgain) {
  const guint before = bytes();
  const guint64 timeBefore = time();
  m_room.open(m_decoder);
  m_room.open(m_decoder);
  m_room.close();
  m_room.close();
  EXPECT_EQ(bytes(), before);
  EXPECT_EQ(time(), timeBefore);
  EXPECT_FALSE(takes(static_cast<int>(before / kBufferBytes) + 1, 300ms));
}

TEST_F(StoreRoomTest, EndsOfAllStreamsHaveRoomUntilItIsBounded) {
  const guint before = bytes();
  m_room.bound(m_decoder, false);
  EXPECT_GT(bytes(), before);
  EXPECT_EQ(time(), 0U);
  m_room.bound(m_decoder, true);
  EXPECT_EQ(bytes(), before);
}

TEST_F(StoreRoomTest, BoundOfAnOpenQueueCountsFromItsClose) {
  const guint before = bytes();
  m_room.open(m_decoder);
  m_room.bound(m_decoder, false);
  EXPECT_EQ(bytes(), 0U);
  m_room.close();
  EXPECT_GT(bytes(), before);
}

TEST(StoreRoomWithoutDecoderTest, NothingIsDone) {
  gst_init(nullptr, nullptr);
  GstElement* const empty = GST_ELEMENT(gst_object_ref_sink(gst_bin_new(nullptr)));
  StoreRoom room;
  room.open(empty);
  room.bound(empty, false);
  room.close();
  gst_object_unref(empty);
}

}  // namespace
}  // namespace mediamgmnt
