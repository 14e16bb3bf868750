// SPDX-License-Identifier: Apache-2.0
// The end of a manifest, which comes to a demuxer by a thread of its own: late, on a busy machine.
#include <gst/gst.h>
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <string_view>

#include "sample_server.h"
#include "test_player.h"

namespace {

/// Holds the thread that has told a demuxer of its manifest's end, right before it tells those behind the demuxer, until there are
/// some. What GStreamer logs is the only place on that thread's way.
class LateManifestEnd {
 public:
  LateManifestEnd() {
    gst_debug_remove_log_function(gst_debug_log_default);
    gst_debug_add_log_function(&LateManifestEnd::onLog, this, nullptr);
    gst_debug_set_threshold_for_name("GST_PADS", GST_LEVEL_LOG);
  }
  ~LateManifestEnd() {
    gst_debug_unset_threshold_for_name("GST_PADS");
    gst_debug_remove_log_function_by_data(this);
    gst_debug_add_log_function(gst_debug_log_default, nullptr, nullptr);
  }
  LateManifestEnd(const LateManifestEnd&) = delete;
  LateManifestEnd& operator=(const LateManifestEnd&) = delete;

  bool wasLate() const { return m_late; }

 private:
  static void onLog(GstDebugCategory*, GstDebugLevel, const gchar*, const gchar* function, gint, GObject* object,
                    GstDebugMessage* message, gpointer self) {
    if (std::string_view(function) != "gst_pad_event_default" || !GST_IS_PAD(object)) return;
    if (std::string_view(gst_debug_message_get(message)).find("eos event") == std::string_view::npos) return;
    GstElement* const element = gst_pad_get_parent_element(GST_PAD(object));
    if (element == nullptr) return;
    const std::string type = G_OBJECT_TYPE_NAME(element);
    const auto hasOutputs = [element] {
      GST_OBJECT_LOCK(element);
      const bool has = element->numsrcpads > 0;
      GST_OBJECT_UNLOCK(element);
      return has;
    };
    if (type == "GstHLSDemux2" && TestPlayer::eventually(hasOutputs)) static_cast<LateManifestEnd*>(self)->m_late = true;
    gst_object_unref(element);
  }

  std::atomic<bool> m_late = false;
};

TEST(ManifestEndTest, EndsNothingButTheManifest) {
  const LateManifestEnd late;
  TestPlayer player;

  player.start(SampleServer::instance().url("hls/tracks.m3u8"));

  EXPECT_TRUE(late.wasLate());
  EXPECT_TRUE(TestPlayer::eventually([&] { return player.number("POSITION") > 500; }));
}

}  // namespace
