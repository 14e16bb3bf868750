// SPDX-License-Identifier: Apache-2.0
#include "parental/parental_rating_collection.h"

#include "components/integer_argument.h"
#include "components/script_rows.h"
#include "parental/parental_rating_object.h"
#include "plugin/av_control_plugin.h"

namespace {

bool getLengthThunk(CorvelNativePropertyBase* self, _CorvelNativeVariant* result) {
  const auto* const collection = HbbTVParentalRatingCollectionAVClass::cast(self);
  if (collection == nullptr) return false;
  cvnplUtil::set(collection->length(), *result);
  return true;
}

bool itemThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* args, unsigned int /*argc*/,
               _CorvelNativeVariant* result) {
  const int index = integerOf(args[0]);  // of whatever type the argument is
  if (index < 0) return false;
  auto* const collection = HbbTVParentalRatingCollectionAVClass::cast(self);
  if (collection == nullptr) return false;
  const std::shared_ptr<CorvelNativePropertyBase> item = collection->JS_getItem(index);
  cvnplUtil::set(item, *result);
  return item != nullptr;
}

}  // namespace

CorvelNativeProperty HbbTVParentalRatingCollectionAVClass::sm_properties[] = {
    rows::computedInteger("length", getLengthThunk),
    rows::object("m_ParentalRating"),  // of a rating; never filled
};
const unsigned int HbbTVParentalRatingCollectionAVClass::sm_prop_length = sizeof sm_properties / sizeof sm_properties[0];
const CorvelNativeMethod HbbTVParentalRatingCollectionAVClass::sm_methods[] = {
    {"item", itemThunk},
};
const unsigned int HbbTVParentalRatingCollectionAVClass::sm_met_length = sizeof sm_methods / sizeof sm_methods[0];

HbbTVParentalRatingCollectionAVClass::HbbTVParentalRatingCollectionAVClass(CorvelNativePropertyBase* parent)
    : CorvelNativePropertyBase(parent), m_item(HbbTVParentalRatingAVClass::create(this)) {}

HbbTVParentalRatingCollectionAVClass::~HbbTVParentalRatingCollectionAVClass() { m_item.reset(); }

std::shared_ptr<HbbTVParentalRatingCollectionAVClass> HbbTVParentalRatingCollectionAVClass::create(AVControlPlugin* plugin) {
  auto collection = std::make_shared<HbbTVParentalRatingCollectionAVClass>(plugin);
  collection->install();
  collection->m_plugin = plugin->weak_from_this();
  return collection;
}

HbbTVParentalRatingCollectionAVClass* HbbTVParentalRatingCollectionAVClass::cast(CorvelNativePropertyBase* object) {
  if (object == nullptr || object->type() != kObjectType) return nullptr;
  return static_cast<HbbTVParentalRatingCollectionAVClass*>(object);
}

bool HbbTVParentalRatingCollectionAVClass::install() {
  return CorvelNativePropertyBase::install(sm_properties, sm_prop_length, sm_methods, sm_met_length);
}

std::shared_ptr<CorvelNativePropertyBase> HbbTVParentalRatingCollectionAVClass::JS_getItem(int index) {
  const auto plugin = owner();
  AVParentalRating* rating = nullptr;
  if (plugin == nullptr || !plugin->getParentalRatingItem(index, rating)) return nullptr;
  if (!HbbTVParentalRatingAVClass::cast(m_item.get())->setPropertiesParentalReiting(rating)) return nullptr;
  return m_item;
}

int HbbTVParentalRatingCollectionAVClass::length() const {
  const auto plugin = owner();
  return plugin != nullptr ? plugin->getParentalRatingCollectionLenght() : -1;
}

std::shared_ptr<AVControlPlugin> HbbTVParentalRatingCollectionAVClass::owner() const {
  std::shared_ptr<AVControlPlugin> plugin = m_plugin.lock();
  return plugin != nullptr && !plugin->deinitialized() ? plugin : nullptr;
}
