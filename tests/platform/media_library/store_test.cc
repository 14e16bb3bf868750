// SPDX-License-Identifier: Apache-2.0
// What the download store says of itself. Two of its threads do, neither waits for the other, and so words come late now and then.
#include <gst/gst.h>
#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <string_view>

#include "platform/mediamgmnt/media_report.h"
#include "sample_server.h"
#include "test_player.h"

namespace {

/// Finds the store of the next source that is opened.
class Store {
 public:
  Store() : m_signal(g_signal_lookup("element-added", GST_TYPE_BIN)) {
    m_hook = g_signal_add_emission_hook(m_signal, 0, &Store::onElementAdded, this, nullptr);
  }
  ~Store() {
    g_signal_remove_emission_hook(m_signal, m_hook);
    if (m_element != nullptr) gst_object_unref(m_element);
  }
  Store(const Store&) = delete;
  Store& operator=(const Store&) = delete;

  bool say(int percent) {
    GstElement* const element = m_element;
    return element != nullptr && gst_element_post_message(element, gst_message_new_buffering(GST_OBJECT(element), percent));
  }

 private:
  static gboolean onElementAdded(GSignalInvocationHint*, guint, const GValue* values, gpointer self) {
    GstElement* const element = GST_ELEMENT(g_value_get_object(&values[1]));
    GstElementFactory* const factory = gst_element_get_factory(element);
    if (factory == nullptr || std::string_view(GST_OBJECT_NAME(factory)) != "downloadbuffer") return TRUE;
    GstElement* none = nullptr;
    if (static_cast<Store*>(self)->m_element.compare_exchange_strong(none, element)) gst_object_ref(element);
    return TRUE;
  }

  guint m_signal;
  gulong m_hook = 0;
  std::atomic<GstElement*> m_element = nullptr;
};

/// Pausing, so that all is stored before anything is played.
class LateWordTest : public ::testing::Test {
 protected:
  void SetUp() override {
    gst_init(nullptr, nullptr);
    m_store.emplace();
    m_player.load(SampleServer::instance().url("short/two.mp4"));
    m_player.command("PAUSE");
    m_player.wordsUntil("PLAY_SPEED_CHANGED");
    ASSERT_TRUE(
        TestPlayer::eventually([this] { return std::stol(m_player.get(mediamgmnt::report::kBuffered).value_or("0")) > 3900; }));
  }

  std::optional<Store> m_store;
  TestPlayer m_player;
};

TEST_F(LateWordTest, ThatLittleIsStoredKeepsNothingFromStarting) {
  ASSERT_TRUE(m_store->say(18));
  m_player.command("PLAY", "1.00");
  m_player.wordsUntil("PLAYING");
}

TEST_F(LateWordTest, ThatLittleIsStoredIsNoUnderrun) {
  m_player.command("PLAY", "1.00");
  m_player.wordsUntil("PLAYING");
  ASSERT_TRUE(m_store->say(18));
  EXPECT_EQ(count(m_player.wordsUntil("FINISHED"), "BUFFERING"), 0);
}

}  // namespace
