// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/audio_output.h"

#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

#include "platform/mediamgmnt/audio_tap.h"

namespace mediamgmnt {
namespace {

namespace fs = std::filesystem;

bool exists(const std::string& path) {
  std::error_code ignored;  // an unreadable place is a place without a device
  return fs::exists(path, ignored);
}

/// A PCM playback device of the kernel: /dev/snd/pcmC0D0p.
bool hasKernelDevice() {
  std::error_code failure;
  fs::directory_iterator entry("/dev/snd", failure);
  for (; !failure && entry != fs::directory_iterator(); entry.increment(failure)) {
    const std::string name = entry->path().filename().string();
    if (name.rfind("pcm", 0) == 0 && name.back() == 'p') return true;
  }
  return false;
}

// NOLINTBEGIN(concurrency-mt-unsafe): nothing in the process changes its environment
bool hasSoundServer() {
  if (std::getenv("PULSE_SERVER") != nullptr) return true;
  const char* const runtime = std::getenv("XDG_RUNTIME_DIR");
  if (runtime == nullptr) return false;
  return exists(std::string(runtime) + "/pulse/native") || exists(std::string(runtime) + "/pipewire-0");
}
// NOLINTEND(concurrency-mt-unsafe)

GstElement* makeSilentOutput() {
  GstElement* const sink = gst_element_factory_make("fakesink", nullptr);
  if (sink != nullptr) g_object_set(sink, "sync", TRUE, nullptr);
  return sink;
}

}  // namespace

GstElement* makeAudioOutput(unsigned long player) {
  if (hasSoundTap()) {
    GstElement* const tap = makeTapOutput(player);
    return tap != nullptr ? tap : makeSilentOutput();
  }
  // Asked for only where a device exists: otherwise each start would spend time on finding none, and warn about it.
  if (!hasSoundServer() && !hasKernelDevice()) return makeSilentOutput();
  // scaletempo keeps the pitch at other speeds.
  GstElement* const chain = gst_parse_bin_from_description(
      "audioconvert ! audioresample ! scaletempo ! audioconvert ! audioresample ! volume name=mute ! autoaudiosink", TRUE, nullptr);
  return chain != nullptr ? chain : makeSilentOutput();
}

void setMuted(GstElement* output, bool muted) {
  if (!GST_IS_BIN(output)) return;  // silent by itself
  GstElement* const volume = gst_bin_get_by_name(GST_BIN(output), "mute");
  if (volume == nullptr) return;
  g_object_set(volume, "mute", gboolean{muted}, nullptr);
  gst_object_unref(volume);
}

}  // namespace mediamgmnt
