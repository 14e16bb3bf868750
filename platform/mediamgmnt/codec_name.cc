// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/codec_name.h"

#include <gst/pbutils/pbutils.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace mediamgmnt {
namespace {

struct Name {
  std::string_view mediaType;
  int version;  ///< of MPEG; 0: any
  int layer;    ///< of MPEG audio; 0: any
  std::string_view name;
};

/// What GStreamer gives no name for, or none without the decoder's configuration.
constexpr std::array kNames = {
    Name{"video/x-h264", 0, 0, "avc1"},
    Name{"video/x-h265", 0, 0, "hvc1"},
    Name{"video/x-av1", 0, 0, "av01"},
    Name{"video/x-vp8", 0, 0, "vp8"},
    Name{"video/x-vp9", 0, 0, "vp09"},
    Name{"video/mpeg", 1, 0, "mp4v.6a"},
    Name{"video/mpeg", 2, 0, "mp4v.61"},
    Name{"video/mpeg", 4, 0, "mp4v.20"},
    Name{"audio/mpeg", 1, 3, "mp3"},
    Name{"audio/mpeg", 1, 2, "mp2"},
    Name{"audio/mpeg", 1, 0, "mp3"},
    Name{"audio/mpeg", 2, 0, "mp4a.40.2"},
    Name{"audio/mpeg", 4, 0, "mp4a.40.2"},
    Name{"audio/x-ac3", 0, 0, "ac-3"},
    Name{"audio/x-eac3", 0, 0, "ec-3"},
    Name{"audio/x-ac4", 0, 0, "ac-4"},
    Name{"audio/x-dts", 0, 0, "dtsc"},
    Name{"audio/x-opus", 0, 0, "opus"},
    Name{"audio/x-vorbis", 0, 0, "vorbis"},
    Name{"audio/x-flac", 0, 0, "flac"},
    Name{"audio/x-raw", 0, 0, "pcm"},
    Name{"application/ttml+xml", 0, 0, "stpp"},
    Name{"application/x-subtitle-vtt", 0, 0, "wvtt"},
    Name{"text/vtt", 0, 0, "wvtt"},
    Name{"subpicture/x-dvb", 0, 0, "dvb-subtitle"},
    Name{"application/x-teletext", 0, 0, "dvb-teletext"},
    Name{"text/x-raw", 0, 0, "tx3g"},
};

int numberIn(const GstStructure& structure, const char* field) {
  int number = 0;
  gst_structure_get_int(&structure, field, &number);
  return number;
}

std::string_view fallbackName(const GstStructure& structure) {
  const std::string_view mediaType = gst_structure_get_name(&structure);
  const int version = numberIn(structure, "mpegversion");
  const int layer = numberIn(structure, "layer");
  for (const Name& each : kNames) {
    const bool fits =
        each.mediaType == mediaType && (each.version == 0 || each.version == version) && (each.layer == 0 || each.layer == layer);
    if (fits) return each.name;
  }
  return {};
}

/// The media type of what encryption hides, and of what became a plain text of documents, is a field then.
GstCaps* inClear(const GstCaps* caps) {
  const GstStructure* const structure = gst_caps_get_structure(caps, 0);
  const char* const original = gst_structure_get_string(structure, "original-media-type");
  GstStructure* const copy = gst_structure_copy(structure);
  if (original != nullptr) {
    gst_structure_set_name(copy, original);
    gst_structure_remove_field(copy, "original-media-type");
  }
  return gst_caps_new_full(copy, nullptr);
}

/// Small hexadecimal digits for AVC. A name of AAC that lacks its kind says nothing.
std::string asManifestsWrite(std::string name) {
  if (name == "mp4a.40") return {};
  if (name.rfind("avc", 0) != 0) return name;
  for (char& byte : name) {
    if (byte >= 'A' && byte <= 'F') byte = static_cast<char>(byte - 'A' + 'a');
  }
  return name;
}

}  // namespace

std::string codecName(const GstCaps* caps) {
  if (caps == nullptr || gst_caps_get_size(caps) == 0) return {};
  GstCaps* const clear = inClear(caps);
  std::string name;
  if (gst_caps_is_fixed(clear)) {
    gchar* const known = gst_codec_utils_caps_get_mime_codec(clear);
    if (known != nullptr) name = asManifestsWrite(known);
    g_free(known);
  }
  if (name.empty()) name = fallbackName(*gst_caps_get_structure(clear, 0));
  gst_caps_unref(clear);
  return name;
}

}  // namespace mediamgmnt
