// SPDX-License-Identifier: Apache-2.0
#include "components/component_collection_holder.h"

#include "plugin/av_control_plugin.h"

namespace hbbtv_avc {

namespace {

HbbTVComponentCollectionHolderClass::Collection make(AVControlPlugin* plugin, eAVComponentCollectionType_e kind) {
  return HbbTVComponentCollectionClass::create(plugin, plugin, kind);
}

}  // namespace

HbbTVComponentCollectionHolderClass::HbbTVComponentCollectionHolderClass(AVControlPlugin* plugin)
    : m_availableAudio(make(plugin, AV_COLLECTION_AVAILABLE_AUDIO)),
      m_availableVideo(make(plugin, AV_COLLECTION_AVAILABLE_VIDEO)),
      m_availableSubtitle(make(plugin, AV_COLLECTION_AVAILABLE_SUBTITLE)),
      m_all(make(plugin, AV_COLLECTION_ALL)),
      m_activeAudio(make(plugin, AV_COLLECTION_ACTIVE_AUDIO)),
      m_activeVideo(make(plugin, AV_COLLECTION_ACTIVE_VIDEO)),
      m_activeSubtitle(make(plugin, AV_COLLECTION_ACTIVE_SUBTITLE)) {}

void HbbTVComponentCollectionHolderClass::setAvailableSubtitleComponents(int count) {
  if (m_availableSubtitle != nullptr) m_availableSubtitle->setNumOfSubtitles(count);
}

void HbbTVComponentCollectionHolderClass::setSubtitleParamAttrComponents(const char* text, int length) {
  if (m_availableSubtitle != nullptr) m_availableSubtitle->collectionAttrOfParam(text, length);
}

}  // namespace hbbtv_avc
