// SPDX-License-Identifier: Apache-2.0
// Records of elementary streams (components), as the media library describes them: plain heap blocks behind owning raw pointers,
// made and freed by the functions of component_records.h only.
#pragma once

#include <cstdint>

/// Component type numbers: the common record's `type`, and what a page passes to name a kind.
enum AVComponentTypeNumber : std::int32_t {
  kVideoComponent = 0,
  kAudioComponent = 1,
  kSubtitleComponent = 2,
};

/// What the three kinds have in common. Texts are owned, NUL-terminated and, once read, never null.
/// The opaque fields are the media library's: carried and handed back, not looked at (but for a subtitle's third text).
struct AVComponent {
  std::int32_t type;
  char* encoding;
  std::int32_t encrypted;  ///< non-zero: encrypted
  std::int32_t componentTag;
  std::int32_t pid;
  char* opaqueText1;
  char* opaqueText2;
  bool opaqueFlag;
  char* opaqueText3;  ///< of a subtitle: second argument of "onSelectedComponentChanged", when it comes from out of band
};

struct AVVideoComponent {
  AVComponent* base;  ///< owned
  float aspectRatio;
};

struct AVAudioComponent {
  AVComponent* base;  ///< owned
  char* audioText;    ///< carried, never shown
  char* language;
  std::int32_t audioDescription;  ///< non-zero: true
  std::int32_t audioChannels;
};

struct AVSubtitleComponent {
  AVComponent* base;    ///< owned
  char* subtitleText1;  ///< carried, never shown
  char* language;
  char* subtitleText2;           ///< carried, never shown, and not part of the selection payload
  std::int32_t hearingImpaired;  ///< non-zero: true
};
