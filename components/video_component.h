// SPDX-License-Identifier: Apache-2.0
// The script object of one video component.
#pragma once

#include <memory>

#include "components/av_components.h"
#include "host/corvel_native.h"

namespace hbbtv_avc {

/// Shows the fields of one video record, which it owns. Made by a collection for each record that script asks for.
/// Thread: script.
class HbbTVVideoComponentClass : public CorvelNativePropertyBase {
 public:
  static constexpr int kObjectType = 6;

  explicit HbbTVVideoComponentClass(CorvelNativePropertyBase* parent) : CorvelNativePropertyBase(parent) {}
  ~HbbTVVideoComponentClass() override;

  /// Also returns an object when @p record is refused; it then shows the initial values of the rows.
  static std::shared_ptr<CorvelNativePropertyBase> create(CorvelNativePropertyBase* parent, AVVideoComponent* record);
  /// @return the object when it is of this class, else null.
  static HbbTVVideoComponentClass* cast(CorvelNativePropertyBase* object);
  static HbbTVVideoComponentClass* cast(const std::shared_ptr<CorvelNativePropertyBase>& object);

  int type() override { return kObjectType; }
  bool install() override;

  /// Takes @p record over and shows it; the one held before is freed.
  /// @return false, and the record stays the caller's, when it or its common record is null.
  bool setProperties(AVVideoComponent* record);
  /// The held record, still owned here; null when there is none.
  AVVideoComponent* getVideoComponent() const { return m_record; }

  static CorvelNativeProperty sm_properties[];
  static const unsigned int sm_prop_length;

 private:
  AVVideoComponent* m_record = nullptr;
};

}  // namespace hbbtv_avc
