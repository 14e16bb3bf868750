// SPDX-License-Identifier: Apache-2.0
#include "plugin/numeric_text.h"

#include <atomic>

bool isNumericText(const char* text, unsigned int length) {
  static std::atomic<bool> pointSeen{false};
  for (unsigned int i = 0; i < length; ++i) {
    if (text[i] >= '0' && text[i] <= '9') continue;
    if (text[i] != '.' || i == 0 || pointSeen.exchange(true)) return false;
  }
  return true;
}
