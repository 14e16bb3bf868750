// SPDX-License-Identifier: Apache-2.0
// Reading the media library's lists: a length, and items whose keys end in their index.
#pragma once

#include <cstdio>

#include "host/mediamgmnt.h"
#include "support/number_text.h"

namespace indexed_property {

inline constexpr int kShortSize = 128;  ///< bytes of a number or a short text, the NUL included
inline constexpr int kItemSize = 4096;  ///< bytes of a record text, the NUL included

/// @return false, and @p out stays, when the library does not answer.
inline bool readNumber(unsigned long handle, const char* key, int& out) {
  char text[kShortSize] = {};
  if (getPlayerProperty(handle, key, text, sizeof text) == 0) return false;
  out = textToInt(text);
  return true;
}

/// @p out holds kItemSize bytes. @return false when the library does not answer. Any index becomes part of the key.
inline bool readItem(unsigned long handle, const char* prefix, int index, char* out) {
  char key[kShortSize];  // the longest prefix has 31 characters, the longest index 11
  std::snprintf(key, sizeof key, "%s%d", prefix, index);
  out[0] = '\0';
  return getPlayerProperty(handle, key, out, kItemSize) != 0;
}

}  // namespace indexed_property
