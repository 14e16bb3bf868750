// SPDX-License-Identifier: Apache-2.0
#include "support/stable_texts.h"

#include "support/av_control_lock.h"

const char* StableTexts::keep(const char* text) {
  if (text == nullptr) return nullptr;
  const AVControlLock lock(m_mutex);
  std::string& slot = m_texts[m_next++ % kSlots];
  slot = text;
  return slot.c_str();
}

bool StableTexts::handOver(const char* text, const std::function<bool(const char*)>& take) {
  if (text == nullptr) return take(nullptr);
  const AVControlLock lock(m_mutex);
  std::string& slot = m_texts[m_next % kSlots];
  slot = text;
  if (!take(slot.c_str())) return false;
  ++m_next;
  return true;
}
