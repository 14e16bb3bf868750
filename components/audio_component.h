// SPDX-License-Identifier: Apache-2.0
// The script object of one audio component.
#pragma once

#include <memory>

#include "components/av_components.h"
#include "host/corvel_native.h"

namespace hbbtv_avc {

/// Shows the fields of one audio record, which it owns. Made by a collection for each record that script asks for.
/// Thread: script.
class HbbTVAudioComponentClass : public CorvelNativePropertyBase {
 public:
  static constexpr int kObjectType = 5;

  explicit HbbTVAudioComponentClass(CorvelNativePropertyBase* parent) : CorvelNativePropertyBase(parent) {}
  ~HbbTVAudioComponentClass() override;

  /// Also returns an object when @p record is refused; it then shows the initial values of the rows.
  static std::shared_ptr<CorvelNativePropertyBase> create(CorvelNativePropertyBase* parent, AVAudioComponent* record);
  /// @return the object when it is of this class, else null.
  static HbbTVAudioComponentClass* cast(CorvelNativePropertyBase* object);
  static HbbTVAudioComponentClass* cast(const std::shared_ptr<CorvelNativePropertyBase>& object);

  int type() override { return kObjectType; }
  bool install() override;

  /// Takes @p record over and shows it; the one held before is freed.
  /// @return false, and the record stays the caller's, when it or its common record is null.
  bool setProperties(AVAudioComponent* record);
  /// The held record, still owned here; null when there is none.
  AVAudioComponent* getAudioComponent() const { return m_record; }

  static CorvelNativeProperty sm_properties[];
  static const unsigned int sm_prop_length;

 private:
  AVAudioComponent* m_record = nullptr;
};

}  // namespace hbbtv_avc
