// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/build_gate.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

#include "tests/platform/media_library/mark.h"

namespace mediamgmnt {
namespace {

constexpr std::chrono::minutes kLong{1};
constexpr std::chrono::milliseconds kShort{1};

using Element = std::unique_ptr<GstElement, decltype(&gst_object_unref)>;

Element make(const char* factory) {
  gst_init(nullptr, nullptr);
  return {GST_ELEMENT(gst_object_ref_sink(gst_element_factory_make(factory, nullptr))), &gst_object_unref};
}

/// The signals of a parser's elements, and one that builds when it hears them.
class BuildGateTest : public ::testing::Test {
 protected:
  BuildGateTest() {
    m_gate.watch(m_typefind.get());
    m_gate.watch(m_demuxer.get());
    g_signal_connect(m_typefind.get(), "have-type",
                     G_CALLBACK(+[](GstElement*, guint, GstCaps*, gpointer self) { static_cast<BuildGateTest*>(self)->build(); }),
                     this);
    g_signal_connect(m_demuxer.get(), "pad-added",
                     G_CALLBACK(+[](GstElement*, GstPad*, gpointer self) { static_cast<BuildGateTest*>(self)->build(); }), this);
  }

  void findType() {
    GstCaps* const caps = gst_caps_new_empty_simple("video/quicktime");
    g_signal_emit_by_name(m_typefind.get(), "have-type", 100U, caps);
    gst_caps_unref(caps);
  }
  void addPad() { gst_element_add_pad(m_demuxer.get(), gst_pad_new(nullptr, GST_PAD_SRC)); }

  void build() {
    m_begun.set();
    if (m_slow) m_goOn.wait();
    ++m_built;
  }

  BuildGate m_gate;
  const Element m_typefind = make("typefind");
  const Element m_demuxer = make("bin");
  bool m_slow = false;
  Mark m_begun;
  Mark m_goOn;
  std::atomic<int> m_built = 0;
};

TEST_F(BuildGateTest, AnOpenGateLetsTypesAndPadsThrough) {
  findType();
  addPad();
  EXPECT_EQ(m_built, 2);
}

TEST_F(BuildGateTest, NothingIsBuiltAfterItHasClosed) {
  m_gate.close(kLong);
  findType();
  addPad();
  EXPECT_EQ(m_built, 0);
}

TEST_F(BuildGateTest, WhatIsBeingBuiltIsWaitedFor) {
  m_slow = true;
  std::thread builder([this] { findType(); });
  ASSERT_TRUE(m_begun.wait());
  std::thread other([this] { m_goOn.set(); });
  m_gate.close(kLong);
  EXPECT_EQ(m_built, 1);
  builder.join();
  other.join();
}

TEST_F(BuildGateTest, WhatIsStuckIsNotWaitedForLongerThanAsked) {
  m_slow = true;
  std::thread builder([this] { addPad(); });
  ASSERT_TRUE(m_begun.wait());
  m_gate.close(kShort);
  EXPECT_EQ(m_built, 0);
  m_goOn.set();
  builder.join();
}

}  // namespace
}  // namespace mediamgmnt
