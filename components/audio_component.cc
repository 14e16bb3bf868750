// SPDX-License-Identifier: Apache-2.0
#include "components/audio_component.h"

#include <utility>

#include "components/common_properties.h"
#include "components/component_records.h"
#include "components/script_rows.h"

namespace hbbtv_avc {

/// "type" is never written: its initial value is the component type, whatever the record's own field says.
CorvelNativeProperty HbbTVAudioComponentClass::sm_properties[] = {
    rows::integer("type", kAudioComponent), rows::text("encoding"),         rows::boolean("encrypted"),
    rows::integer("componentTag"),          rows::integer("pid"),           rows::text("language"),
    rows::boolean("audioDescription"),      rows::integer("audioChannels"),
};
const unsigned int HbbTVAudioComponentClass::sm_prop_length = sizeof sm_properties / sizeof sm_properties[0];

HbbTVAudioComponentClass::~HbbTVAudioComponentClass() {
  if (m_record != nullptr) hlpDestroyAVAudioComponent(m_record);
}

std::shared_ptr<CorvelNativePropertyBase> HbbTVAudioComponentClass::create(CorvelNativePropertyBase* parent,
                                                                           AVAudioComponent* record) {
  std::shared_ptr<CorvelNativePropertyBase> object = std::make_shared<HbbTVAudioComponentClass>(parent);
  object->install();
  cast(object)->setProperties(record);
  return object;
}

HbbTVAudioComponentClass* HbbTVAudioComponentClass::cast(CorvelNativePropertyBase* object) {
  if (object == nullptr || object->type() != kObjectType) return nullptr;
  return static_cast<HbbTVAudioComponentClass*>(object);
}

HbbTVAudioComponentClass* HbbTVAudioComponentClass::cast(const std::shared_ptr<CorvelNativePropertyBase>& object) {
  return cast(object.get());
}

bool HbbTVAudioComponentClass::install() { return CorvelNativePropertyBase::install(sm_properties, sm_prop_length, nullptr, 0); }

bool HbbTVAudioComponentClass::setProperties(AVAudioComponent* record) {
  if (record == nullptr || record->base == nullptr) return false;
  AVAudioComponent* const previous = std::exchange(m_record, record);
  showCommon(*this, *record->base);
  rows::bindText(*this, "language", record->language);
  setProperty("audioDescription", record->audioDescription != 0);
  setProperty("audioChannels", static_cast<int>(record->audioChannels));
  // Last, so that no text row is ever bound to freed memory.
  if (previous != nullptr && previous != record) hlpDestroyAVAudioComponent(previous);
  return true;
}

}  // namespace hbbtv_avc
