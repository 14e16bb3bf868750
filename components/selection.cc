// SPDX-License-Identifier: Apache-2.0
// Component selection, and what the host asks about subtitles from out of band. Thread: script; selectDefaultAVcomponent: any.
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>

#include "components/audio_component.h"
#include "components/component_texts.h"
#include "components/subtitle_component.h"
#include "components/video_component.h"
#include "plugin/av_control_plugin.h"

using hbbtv_avc::HbbTVAudioComponentClass;
using hbbtv_avc::HbbTVSubtitleComponentClass;
using hbbtv_avc::HbbTVVideoComponentClass;

namespace {

constexpr char kSelectedComponentChanged[] = "onSelectedComponentChanged";

/// The answer of the media library is not reported to script.
void sendByIndex(const std::shared_ptr<Player>& player, bool select, int type, int index) {
  if (player == nullptr) return;
  if (select) {
    player->selectActiveComponentByIndex(type, index);
  } else {
    player->unselectActiveComponentByIndex(type, index);
  }
}

/// The index under which the component was first fetched; null when it never was.
template <typename Record>
const int* findIndex(const std::map<std::string, int>& indices, const Record& record) {
  const auto entry = indices.find(indexKey(record));
  return entry != indices.end() ? &entry->second : nullptr;
}

}  // namespace

void AVControlPlugin::JS_SelectComponent(CorvelNativePropertyBase* object) { selectObject(object, true); }

void AVControlPlugin::JS_UnselectComponent(CorvelNativePropertyBase* object) { selectObject(object, false); }

void AVControlPlugin::JS_SelectDefaultComponent(int type) { selectDefault(type, true); }

void AVControlPlugin::JS_UnselectDefaultComponent(int type) { selectDefault(type, false); }

void AVControlPlugin::selectObject(CorvelNativePropertyBase* object, bool select) {
  if (const auto* const video = HbbTVVideoComponentClass::cast(object)) {
    const AVVideoComponent* const record = video->getVideoComponent();
    const int* const index = record != nullptr ? findIndex(m_videoIndex, *record) : nullptr;
    if (index != nullptr) sendByIndex(player(), select, record->base->type, *index);
  } else if (const auto* const audio = HbbTVAudioComponentClass::cast(object)) {
    const AVAudioComponent* const record = audio->getAudioComponent();
    const int* const index = record != nullptr ? findIndex(m_audioIndex, *record) : nullptr;
    if (index != nullptr) sendByIndex(player(), select, record->base->type, *index);
  } else if (const auto* const subtitle = HbbTVSubtitleComponentClass::cast(object)) {
    AVSubtitleComponent* const record = subtitle->getSubtitleComponent();
    if (record == nullptr) return;
    const int* const index = findIndex(m_subtitleIndex, *record);
    if (index == nullptr && m_numOfSubtitles < 1) return;
    setProperty("enableSubtitles", select ? 1 : 0);
    if (index == nullptr) return dispatchOutOfBandSelection(record);  // from out of band: the page shows it itself
    sendByIndex(player(), select, record->base->type, *index);
  }
}

void AVControlPlugin::dispatchOutOfBandSelection(AVSubtitleComponent* component) {
  _CorvelNativeVariant args[2];
  cvnplUtil::set(static_cast<int>(kSubtitleComponent), args[0]);
  cvnplUtil::set(component->base->opaqueText3, args[1], false);
  dispatch(kSelectedComponentChanged, args, 2);
}

void AVControlPlugin::selectDefault(int type, bool select) {
  if (type < -1 || type > 3) return;
  if (type == kSubtitleComponent) setProperty("enableSubtitles", select ? 1 : 0);
  if (const auto current = player()) {
    if (select) {
      current->selectDefaultComponent(type);
    } else {
      current->unselectDefaultComponent(type);
    }
  }
  if (type != kSubtitleComponent || m_numOfSubtitles < 1) return;
  _CorvelNativeVariant arg;
  cvnplUtil::set(static_cast<int>(kSubtitleComponent), arg);
  dispatch(kSelectedComponentChanged, &arg, 1);
}

// Process-wide: the library is not told which player is meant.
void AVControlPlugin::selectDefaultAVcomponent() {
  hbbSelectDefaultAVComponent(AV_COMPONENT_TYPE_VIDEO);
  hbbSelectDefaultAVComponent(AV_COMPONENT_TYPE_AUDIO);
}

void AVControlPlugin::stopActiveAVComp() {
  if (const auto current = player()) current->stopBroadcast();
}

int AVControlPlugin::getComponentNum() { return m_numOfSubtitles; }

bool AVControlPlugin::getComponentInfo(int index, char*& out) {
  // Deliberate: the count itself and negative numbers pass. They, too, read no more than the table.
  if (m_subtitleParamIndex < index) return false;
  const char* const text = index >= 0 && index < kSubtitleParamCount ? m_subtitleParams[index] : "";
  out = static_cast<char*>(std::calloc(std::strlen(text) + 1, 1));
  if (out == nullptr) return false;
  std::strcpy(out, text);
  return true;
}
