// SPDX-License-Identifier: Apache-2.0
// The parental ratings of the current content, as script sees them: the ratings argument of the two rating events.
#pragma once

#include <memory>

#include "host/corvel_native.h"

class AVControlPlugin;

/// Owns exactly one rating object and refills it on every "item": two calls return the same object, and what was read through it
/// changes with the next call. Deliberate.
///
/// Script may keep it longer than the element lives: it holds the plugin weakly; then "length" is -1 and "item" fails.
/// Thread: script; the worker may hold a reference while it raises an event.
class HbbTVParentalRatingCollectionAVClass : public CorvelNativePropertyBase {
 public:
  static constexpr int kObjectType = 31;

  explicit HbbTVParentalRatingCollectionAVClass(CorvelNativePropertyBase* parent);
  ~HbbTVParentalRatingCollectionAVClass() override;

  /// @p plugin is owned by a shared pointer already.
  static std::shared_ptr<HbbTVParentalRatingCollectionAVClass> create(AVControlPlugin* plugin);
  /// @return the object when it is of this class, else null.
  static HbbTVParentalRatingCollectionAVClass* cast(CorvelNativePropertyBase* object);

  int type() override { return kObjectType; }
  bool install() override;
  /// @return the one rating object, refilled; null, and the values stay, when the library has no rating at @p index.
  virtual std::shared_ptr<CorvelNativePropertyBase> JS_getItem(int index);

  /// @return -1 when the library does not say, or when the plugin is gone.
  int length() const;

  static CorvelNativeProperty sm_properties[];
  static const unsigned int sm_prop_length;
  static const CorvelNativeMethod sm_methods[];
  static const unsigned int sm_met_length;

 private:
  /// The plugin, kept alive; null when it is gone or deinitialised.
  std::shared_ptr<AVControlPlugin> owner() const;

  std::weak_ptr<AVControlPlugin> m_plugin;  ///< set once, by create
  std::shared_ptr<CorvelNativePropertyBase> m_item;
};
