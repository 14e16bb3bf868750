// SPDX-License-Identifier: Apache-2.0
// The attributes beside the source itself: type, size, cache, loop, subtitles, player type, user agent, window size, queued media.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

#include "components/component_collection_holder.h"
#include "plugin/av_control_plugin.h"
#include "plugin/numeric_text.h"
#include "support/av_control_lock.h"
#include "support/number_text.h"

namespace {

/// A NUL-terminated malloc copy; null when there is no memory.
char* duplicate(const char* text, unsigned int length) {
  char* const copy = static_cast<char*>(std::calloc(static_cast<std::size_t>(length) + 1, 1));
  if (copy != nullptr && length > 0) std::memcpy(copy, text, length);
  return copy;
}

/// @p size includes the NUL; what does not fit is cut.
void copyBounded(char* out, std::size_t size, const char* text, unsigned int length) {
  const std::size_t kept = std::min<std::size_t>(length, size - 1);
  std::memcpy(out, text, kept);
  out[kept] = '\0';
}

}  // namespace

bool AVControlPlugin::JS_SetTypeParam(const char* text, unsigned int length) {
  if (text == nullptr || length == 0 || length >= kUrlSize) return false;
  const AVControlLock lock(m_textMutex);
  copyBounded(m_typeText, sizeof m_typeText, text, length);
  return true;
}

bool AVControlPlugin::applySizeText(char* buffer, int& value, const char* text, unsigned int length) {
  if (!isNumericText(text, length) || length >= kSizeTextSize) return false;
  copyBounded(buffer, kSizeTextSize, text, length);
  value = textToInt(buffer);
  return true;
}

bool AVControlPlugin::JS_SetWidthParam(const char* text, unsigned int length) {
  return applySizeText(m_widthText, m_width, text, length);
}

bool AVControlPlugin::JS_SetHeightParam(const char* text, unsigned int length) {
  return applySizeText(m_heightText, m_height, text, length);
}

bool AVControlPlugin::JS_SetCacheParam(const char* text, unsigned int length) {
  char* old = nullptr;
  if (!getProperty("cache", old)) return false;
  setProperty("cache", static_cast<char*>(nullptr));  // before its text goes: script may read the row at any time
  std::free(old);
  if (length == 0) return true;
  char* const copy = duplicate(text, length);
  if (copy == nullptr) return false;
  setProperty("cache", copy);
  return setCacheParam();
}

bool AVControlPlugin::setCacheParam() {
  char* cache = nullptr;
  if (!getProperty("cache", cache) || cache == nullptr) return false;
  const auto current = player();
  if (current == nullptr) return false;
  return m_playerTexts.handOver(cache, [&](const char* text) { return current->setCacheParam(text); });
}

bool AVControlPlugin::JS_SetLoopParam(const char* text, unsigned int length) {
  if (!isNumericText(text, length) && std::string_view(text, length) != "infinite") return false;
  char* const copy = duplicate(text, length);
  if (copy == nullptr) return false;
  std::free(std::exchange(m_loopCopy, copy));
  copyBounded(m_loopText, sizeof m_loopText, text, length);
  const auto current = player();
  if (current == nullptr) return false;
  return m_playerTexts.handOver(copy, [&](const char* value) { return current->setLoopParam(value); });
}

bool AVControlPlugin::JS_SetSubtitleParam(const char* text, unsigned int length) {
  if (m_subtitleParamIndex >= 0 && m_subtitleParamIndex < kSubtitleParamCount) {
    copyBounded(m_subtitleParams[m_subtitleParamIndex], kSubtitleParamSize, text, length);
    ++m_subtitleParamIndex;
  }
  m_componentHolder->setSubtitleParamAttrComponents(text, static_cast<int>(length));
  return true;
}

bool AVControlPlugin::JS_SetNumOfSubtitle(int count) {
  if (count > 0) {
    m_numOfSubtitles = count;
    m_subtitleParamIndex = 0;
  }
  m_componentHolder->setAvailableSubtitleComponents(count);
  return true;
}

bool AVControlPlugin::JS_PlayerType(const char* text, unsigned int length) {
  copyBounded(m_playerTypeText, sizeof m_playerTypeText, text, length);
  return true;
}

bool AVControlPlugin::JS_SetUserAgent(const char* text, unsigned int length) {
  char* const copy = duplicate(text, length);
  const AVControlLock lock(m_textMutex);
  std::free(std::exchange(m_userAgent, copy));
  return true;
}

bool AVControlPlugin::JS_SetNativeWindowSize(const char* text, unsigned int length) {
  char* const copy = duplicate(text, length);
  const AVControlLock lock(m_textMutex);
  std::free(std::exchange(m_nativeWindowSize, copy));
  return true;
}

bool AVControlPlugin::JS_Queue(const char* text, unsigned int length) {
  if (length >= kUrlSize) return false;
  return m_stateMachine.onQueue(text, length);
}

void AVControlPlugin::queueUrl(const char* text, unsigned int length) {
  const AVControlLock lock(m_textMutex);
  if (text == nullptr || length == 0) {
    m_queuedUrl[0] = '\0';
    return;
  }
  copyBounded(m_queuedUrl, sizeof m_queuedUrl, text, length);
}

bool AVControlPlugin::alreadyHasQueuedMedia() {
  const AVControlLock lock(m_textMutex);
  return m_queuedUrl[0] != '\0';
}
