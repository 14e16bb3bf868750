// SPDX-License-Identifier: Apache-2.0
#include "components/subtitle_component.h"

#include <utility>

#include "components/common_properties.h"
#include "components/component_records.h"
#include "components/script_rows.h"

namespace hbbtv_avc {

/// "type" is never written: its initial value is the component type, whatever the record's own field says.
CorvelNativeProperty HbbTVSubtitleComponentClass::sm_properties[] = {
    rows::integer("type", kSubtitleComponent),
    rows::text("encoding"),
    rows::boolean("encrypted"),
    rows::integer("componentTag"),
    rows::integer("pid"),
    rows::text("language"),
    rows::boolean("hearingImpaired"),
};
const unsigned int HbbTVSubtitleComponentClass::sm_prop_length = sizeof sm_properties / sizeof sm_properties[0];

HbbTVSubtitleComponentClass::~HbbTVSubtitleComponentClass() {
  if (m_record != nullptr) hlpDestroyAVSubtitleComponent(m_record);
}

std::shared_ptr<CorvelNativePropertyBase> HbbTVSubtitleComponentClass::create(CorvelNativePropertyBase* parent,
                                                                              AVSubtitleComponent* record) {
  std::shared_ptr<CorvelNativePropertyBase> object = std::make_shared<HbbTVSubtitleComponentClass>(parent);
  object->install();
  cast(object)->setProperties(record);
  return object;
}

HbbTVSubtitleComponentClass* HbbTVSubtitleComponentClass::cast(CorvelNativePropertyBase* object) {
  if (object == nullptr || object->type() != kObjectType) return nullptr;
  return static_cast<HbbTVSubtitleComponentClass*>(object);
}

HbbTVSubtitleComponentClass* HbbTVSubtitleComponentClass::cast(const std::shared_ptr<CorvelNativePropertyBase>& object) {
  return cast(object.get());
}

bool HbbTVSubtitleComponentClass::install() { return CorvelNativePropertyBase::install(sm_properties, sm_prop_length, nullptr, 0); }

bool HbbTVSubtitleComponentClass::setProperties(AVSubtitleComponent* record) {
  if (record == nullptr || record->base == nullptr) return false;
  AVSubtitleComponent* const previous = std::exchange(m_record, record);
  showCommon(*this, *record->base);
  rows::bindText(*this, "language", record->language);
  setProperty("hearingImpaired", record->hearingImpaired != 0);
  // Last, so that no text row is ever bound to freed memory.
  if (previous != nullptr && previous != record) hlpDestroyAVSubtitleComponent(previous);
  return true;
}

}  // namespace hbbtv_avc
