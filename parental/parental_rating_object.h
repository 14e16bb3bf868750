// SPDX-License-Identifier: Apache-2.0
// The script object of one parental rating.
#pragma once

#include <memory>

#include "host/corvel_native.h"
#include "parental/parental_rating.h"

/// Shows the fields of one record, which it owns. Thread: script.
class HbbTVParentalRatingAVClass : public CorvelNativePropertyBase {
 public:
  static constexpr int kObjectType = 30;

  explicit HbbTVParentalRatingAVClass(CorvelNativePropertyBase* parent) : CorvelNativePropertyBase(parent) {}
  ~HbbTVParentalRatingAVClass() override;

  static std::shared_ptr<HbbTVParentalRatingAVClass> create(CorvelNativePropertyBase* parent);
  /// @return the object when it is of this class, else null.
  static HbbTVParentalRatingAVClass* cast(CorvelNativePropertyBase* object);

  int type() override { return kObjectType; }
  bool install() override;

  /// Takes @p rating over and shows it; the one held before is freed. @return false, and nothing changes, when it is null.
  bool setPropertiesParentalReiting(AVParentalRating* rating);

  static CorvelNativeProperty sm_properties[];
  static const unsigned int sm_prop_length;
  static const CorvelNativeMethod* const sm_methods;
  static const unsigned int sm_met_length;

 private:
  AVParentalRating* m_rating = nullptr;
};
