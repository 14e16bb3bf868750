// SPDX-License-Identifier: Apache-2.0
#include "player/mime_extension.h"

#include <cstring>

namespace {

struct Row {
  const char* mimeType;
  const char* extension;
};

/// In this order: a row is found by substring, so "video/mpeg4" stands before "video/mpeg".
constexpr Row kRows[] = {
    {"audio/mpeg", ".mp3"},
    {"audio/mp4", ".aac"},
    {"video/mpeg4", ".mpeg4"},
    {"video/mpeg", ".ts"},
    {"video/mp4", ".mp4"},
    {"application/dash+xml", ".dash"},
    {"application/vnd.apple.mpegurl", ".hls"},
    {"video/x-ms-asf", ".wmv"},
    {"application/vnd.oipf.ContentAccessStreaming+xml", ".mp4"},
};

}  // namespace

const char* mimeTypeToExtension(const char* mimeType) {
  if (mimeType == nullptr) return nullptr;
  for (const Row& row : kRows) {
    if (std::strstr(mimeType, row.mimeType) != nullptr) return row.extension;
  }
  return nullptr;
}
