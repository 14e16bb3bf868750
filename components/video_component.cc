// SPDX-License-Identifier: Apache-2.0
#include "components/video_component.h"

#include <utility>

#include "components/common_properties.h"
#include "components/component_records.h"
#include "components/script_rows.h"

namespace hbbtv_avc {

/// "type" is never written: its initial value is the component type, whatever the record's own field says.
CorvelNativeProperty HbbTVVideoComponentClass::sm_properties[] = {
    rows::integer("type", kVideoComponent), rows::text("encoding"), rows::boolean("encrypted"),
    rows::integer("componentTag"),          rows::integer("pid"),   rows::number("aspectRatio"),
};
const unsigned int HbbTVVideoComponentClass::sm_prop_length = sizeof sm_properties / sizeof sm_properties[0];

HbbTVVideoComponentClass::~HbbTVVideoComponentClass() {
  if (m_record != nullptr) hlpDestroyAVVideoComponent(m_record);
}

std::shared_ptr<CorvelNativePropertyBase> HbbTVVideoComponentClass::create(CorvelNativePropertyBase* parent,
                                                                           AVVideoComponent* record) {
  std::shared_ptr<CorvelNativePropertyBase> object = std::make_shared<HbbTVVideoComponentClass>(parent);
  object->install();
  cast(object)->setProperties(record);
  return object;
}

HbbTVVideoComponentClass* HbbTVVideoComponentClass::cast(CorvelNativePropertyBase* object) {
  if (object == nullptr || object->type() != kObjectType) return nullptr;
  return static_cast<HbbTVVideoComponentClass*>(object);
}

HbbTVVideoComponentClass* HbbTVVideoComponentClass::cast(const std::shared_ptr<CorvelNativePropertyBase>& object) {
  return cast(object.get());
}

bool HbbTVVideoComponentClass::install() { return CorvelNativePropertyBase::install(sm_properties, sm_prop_length, nullptr, 0); }

bool HbbTVVideoComponentClass::setProperties(AVVideoComponent* record) {
  if (record == nullptr || record->base == nullptr) return false;
  AVVideoComponent* const previous = std::exchange(m_record, record);
  showCommon(*this, *record->base);
  setProperty("aspectRatio", static_cast<double>(record->aspectRatio));
  // Last, so that no text row is ever bound to freed memory.
  if (previous != nullptr && previous != record) hlpDestroyAVVideoComponent(previous);
  return true;
}

}  // namespace hbbtv_avc
