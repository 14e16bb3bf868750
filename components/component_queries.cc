// SPDX-License-Identifier: Apache-2.0
// The A/V Control object's component collections, and the way of their queries down to the player. Thread: script.
#include "components/component_collection_holder.h"
#include "components/component_texts.h"
#include "plugin/av_control_plugin.h"

std::shared_ptr<CorvelNativePropertyBase> AVControlPlugin::JS_GetAllComponents() {
  if (m_componentHolder == nullptr) return nullptr;
  return m_componentHolder->getAvailableComponents();
}

std::shared_ptr<CorvelNativePropertyBase> AVControlPlugin::JS_GetComponents(int type) {
  if (m_componentHolder == nullptr) return nullptr;
  switch (type) {
    case kVideoComponent: return m_componentHolder->getAvailableVideoComponents();
    case kAudioComponent: return m_componentHolder->getAvailableAudioComponents();
    case kSubtitleComponent: return m_componentHolder->getAvailableSubtitleComponents();
    default: return nullptr;  // a page may pass any number
  }
}

std::shared_ptr<CorvelNativePropertyBase> AVControlPlugin::JS_GetCurrentActiveComponents(int type) {
  if (m_componentHolder == nullptr) return nullptr;
  switch (type) {
    case kVideoComponent: return m_componentHolder->getActiveVideoComponents();
    case kAudioComponent: return m_componentHolder->getActiveAudioComponents();
    case kSubtitleComponent: return m_componentHolder->getActiveSubtitleComponents();
    default: return nullptr;
  }
}

bool AVControlPlugin::getAudioComponentLength(bool active, int& out) {
  const auto current = player();
  return current != nullptr && current->getAudioComponentLength(active, out);
}

bool AVControlPlugin::getVideoComponentLength(bool active, int& out) {
  const auto current = player();
  return current != nullptr && current->getVideoComponentLength(active, out);
}

bool AVControlPlugin::getSubtitleComponentLength(bool active, int& out) {
  const auto current = player();
  return current != nullptr && current->getSubtitleComponentLength(active, out);
}

// The maps remember the index of the first fetch: a record fetched as active 0 and later as available 2 stays at 0. Deliberate.

bool AVControlPlugin::getAudioComponentItem(bool active, int index, AVAudioComponent*& out) {
  const auto current = player();
  if (current == nullptr || !current->getAudioComponentItem(active, index, out)) return false;
  if (out != nullptr) m_audioIndex.try_emplace(indexKey(*out), index);
  return true;
}

bool AVControlPlugin::getVideoComponentItem(bool active, int index, AVVideoComponent*& out) {
  const auto current = player();
  if (current == nullptr || !current->getVideoComponentItem(active, index, out)) return false;
  if (out != nullptr) m_videoIndex.try_emplace(indexKey(*out), index);
  return true;
}

bool AVControlPlugin::getSubtitleComponentItem(bool active, int index, AVSubtitleComponent*& out) {
  const auto current = player();
  if (current == nullptr || !current->getSubtitleComponentItem(active, index, out)) return false;
  if (out != nullptr) m_subtitleIndex.try_emplace(indexKey(*out), index);
  return true;
}
