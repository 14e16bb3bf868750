// SPDX-License-Identifier: Apache-2.0
// The media source: from a page's "data" to the player's input.
#include <cstring>
#include <string_view>

#include "plugin/av_control_plugin.h"
#include "plugin/special_urls.h"
#include "support/av_control_lock.h"

namespace {

constexpr unsigned int kShortestSource = 5;

bool isHttp(std::string_view url) { return url.substr(0, 4) == "http"; }

}  // namespace

bool AVControlPlugin::JS_SetDataProp(const char* url, unsigned int length) {
  m_audioIndex.clear();
  m_videoIndex.clear();
  m_subtitleIndex.clear();
  if (url == nullptr || length < kShortestSource || length >= kUrlSize) return false;
  return isHttp({url, length}) ? setSource(url, length) : setRelativeSource(url, length);
}

bool AVControlPlugin::setSource(const char* url, unsigned int length) {
  const auto current = player();
  if (current != nullptr && current->is_used() && dataChanged(url, length)) renewPlayer();
  if (dataChanged(url, length)) m_stateMachine.onDataChanged(url, length);
  return true;
}

void AVControlPlugin::renewPlayer() {
  m_renewing = true;
  m_deferredPlay = false;
  resetPlayer();
  m_renewing = false;
  m_readyToPlay = false;
  m_connected = false;
}

bool AVControlPlugin::setRelativeSource(const char* url, unsigned int length) {
  const std::string_view base = m_documentBaseUrl;
  if (!isHttp(base) || base.size() + length >= kUrlSize) return false;
  // Base plus text, also for a text that takes only the scheme of the base and is shorter then: deliberate.
  const auto builtLength = static_cast<unsigned int>(base.size()) + length;
  const std::string_view text(url, length);
  const bool schemeRelative = text.substr(0, 2) == "//";
  char built[kUrlSize] = "";
  const std::string_view head = schemeRelative ? base.substr(0, base.find(':') + 1) : base;
  std::memcpy(built, head.data(), head.size());
  std::memcpy(built + head.size(), text.data(), text.size());
  return setSource(built, builtLength);
}

bool AVControlPlugin::dataChanged(const char* url, unsigned int length) {
  const AVControlLock lock(m_textMutex);
  if (length != std::strlen(m_dataUrl)) return true;
  if (length <= 4 || url == nullptr) return true;
  const bool same = std::memcmp(url, m_dataUrl, length) == 0;
  return !(same && is_host_url_in_special_list(m_documentBaseUrl));
}

bool AVControlPlugin::setDataProperty(const char* text, unsigned int length) {
  if (text == nullptr || length == 0) return setProperty("data", static_cast<char*>(nullptr));
  if (length >= kUrlSize) return false;
  const char* shown = nullptr;
  {
    const AVControlLock lock(m_textMutex);
    std::memcpy(m_dataUrl, text, length);
    m_dataUrl[length] = '\0';
    shown = m_dataTexts.keep(m_dataUrl);
  }
  // The property is bound to a copy that stays as it is: script may read it while a renewal writes the next one.
  if (!setProperty("data", const_cast<char*>(shown))) return false;
  return setInput();
}

bool AVControlPlugin::setInput() {
  char* data = nullptr;
  if (!getProperty("data", data) || data == nullptr) {
    forceFormat();
    return true;
  }
  if (!isHttp(data)) return false;
  const auto current = player();
  if (current == nullptr) return false;
  forceFormat();
  {
    const AVControlLock lock(m_textMutex);
    m_playerTexts.handOver(m_userAgent, [&](const char* text) { return current->setUserAgent(text); });
    m_playerTexts.handOver(m_nativeWindowSize, [&](const char* text) { return current->setNativeWindowSize(text); });
  }
  return m_playerTexts.handOver(data, [&](const char* text) { return current->setInput(text); });
}

bool AVControlPlugin::forceFormat() {
  char* type = nullptr;
  if (!getProperty("type", type) || type == nullptr) return false;
  const auto current = player();
  if (current == nullptr) return false;
  const AVControlLock lock(m_textMutex);  // the row is bound to a buffer that script may be writing
  return m_playerTexts.handOver(type, [&](const char* text) { return current->setForcedFormat(text); });
}
