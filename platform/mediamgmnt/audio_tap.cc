// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/audio_tap.h"

#include <mutex>
#include <shared_mutex>

namespace mediamgmnt {
namespace {

constexpr std::uint32_t kChannels = 2;
constexpr std::uint32_t kRate = 48000;
constexpr char kChain[] =
    "audioconvert ! audioresample ! scaletempo ! audioconvert ! audioresample ! volume name=mute ! "
    "audio/x-raw, format=S16LE, layout=interleaved, channels=2, rate=48000 ! fakesink name=tap sync=true signal-handoffs=true";

struct Tap {
  std::shared_mutex mutex;
  MediaSoundTap function = nullptr;  // guarded by mutex, like user
  void* user = nullptr;
};

/// Never destroyed: streaming threads may outlive the process's static objects.
Tap& tap() {
  static Tap* const instance = new Tap;
  return *instance;
}

void handOver(unsigned long player, const GstMapInfo& map) {
  std::shared_lock lock(tap().mutex);
  if (tap().function == nullptr) return;
  const auto frames = static_cast<std::uint32_t>(map.size / (kChannels * sizeof(std::int16_t)));
  const MediaSound sound{player, reinterpret_cast<const std::int16_t*>(map.data), frames, kChannels, kRate};
  tap().function(&sound, tap().user);
}

void onHandoff(GstElement*, GstBuffer* buffer, GstPad*, gpointer player) {
  GstMapInfo map;
  if (!gst_buffer_map(buffer, &map, GST_MAP_READ)) return;
  handOver(GPOINTER_TO_SIZE(player), map);
  gst_buffer_unmap(buffer, &map);
}

}  // namespace

void setSoundTap(MediaSoundTap function, void* user) {
  std::unique_lock lock(tap().mutex);
  tap().function = function;
  tap().user = user;
}

bool hasSoundTap() {
  std::shared_lock lock(tap().mutex);
  return tap().function != nullptr;
}

GstElement* makeTapOutput(unsigned long player) {
  GstElement* const chain = gst_parse_bin_from_description(kChain, TRUE, nullptr);
  if (chain == nullptr) return nullptr;
  GstElement* const sink = gst_bin_get_by_name(GST_BIN(chain), "tap");
  g_signal_connect(sink, "handoff", G_CALLBACK(onHandoff), GSIZE_TO_POINTER(player));
  gst_object_unref(sink);
  return chain;
}

}  // namespace mediamgmnt
