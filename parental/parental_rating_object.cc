// SPDX-License-Identifier: Apache-2.0
#include "parental/parental_rating_object.h"

#include <cstdio>
#include <utility>

#include "components/script_rows.h"

CorvelNativeProperty HbbTVParentalRatingAVClass::sm_properties[] = {
    rows::text("name"), rows::text("scheme"), rows::integer("value"), rows::integer("labels"), rows::text("region"),
};
const unsigned int HbbTVParentalRatingAVClass::sm_prop_length = sizeof sm_properties / sizeof sm_properties[0];
const CorvelNativeMethod* const HbbTVParentalRatingAVClass::sm_methods = nullptr;
const unsigned int HbbTVParentalRatingAVClass::sm_met_length = 0;

HbbTVParentalRatingAVClass::~HbbTVParentalRatingAVClass() {
  if (m_rating != nullptr) hlpDestroyAVParentalRating(m_rating);
}

std::shared_ptr<HbbTVParentalRatingAVClass> HbbTVParentalRatingAVClass::create(CorvelNativePropertyBase* parent) {
  auto object = std::make_shared<HbbTVParentalRatingAVClass>(parent);
  object->install();
  return object;
}

HbbTVParentalRatingAVClass* HbbTVParentalRatingAVClass::cast(CorvelNativePropertyBase* object) {
  if (object == nullptr || object->type() != kObjectType) return nullptr;
  return static_cast<HbbTVParentalRatingAVClass*>(object);
}

bool HbbTVParentalRatingAVClass::install() {
  return CorvelNativePropertyBase::install(sm_properties, sm_prop_length, sm_methods, sm_met_length);
}

bool HbbTVParentalRatingAVClass::setPropertiesParentalReiting(AVParentalRating* rating) {
  if (rating == nullptr) return false;
  AVParentalRating* const previous = std::exchange(m_rating, rating);
  rows::bindText(*this, "name", rating->name);
  rows::bindText(*this, "scheme", rating->scheme);
  setProperty("value", rating->value);
  setProperty("labels", rating->labels);
  std::fprintf(stderr, "%s\n", rating->region != nullptr ? rating->region : "");  // a trace of the region, deliberate
  rows::bindText(*this, "region", rating->region);
  // Last, so that no text row is ever bound to freed memory.
  if (previous != nullptr && previous != rating) hlpDestroyAVParentalRating(previous);
  return true;
}
