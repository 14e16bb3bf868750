// SPDX-License-Identifier: Apache-2.0
// The seven component collections of one A/V Control object.
#pragma once

#include <memory>

#include "components/component_collection.h"

namespace hbbtv_avc {

/// Made and deleted by the plugin; script may keep a collection longer. Thread: script.
class HbbTVComponentCollectionHolderClass {
 public:
  using Collection = std::shared_ptr<HbbTVComponentCollectionClass>;

  /// @p plugin is owned by a shared pointer already.
  explicit HbbTVComponentCollectionHolderClass(AVControlPlugin* plugin);

  Collection getAvailableAudioComponents() const { return m_availableAudio; }
  Collection getAvailableVideoComponents() const { return m_availableVideo; }
  Collection getAvailableSubtitleComponents() const { return m_availableSubtitle; }
  Collection getAvailableComponents() const { return m_all; }
  Collection getActiveAudioComponents() const { return m_activeAudio; }
  Collection getActiveVideoComponents() const { return m_activeVideo; }
  Collection getActiveSubtitleComponents() const { return m_activeSubtitle; }

  /// These two concern the available-subtitle collection only: the one of all never sees subtitles from out of band.
  void setAvailableSubtitleComponents(int count);
  void setSubtitleParamAttrComponents(const char* text, int length);

 private:
  Collection m_availableAudio;
  Collection m_availableVideo;
  Collection m_availableSubtitle;
  Collection m_all;
  Collection m_activeAudio;
  Collection m_activeVideo;
  Collection m_activeSubtitle;
};

}  // namespace hbbtv_avc
