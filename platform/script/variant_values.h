// SPDX-License-Identifier: Apache-2.0
// Script values to host values and back. Script thread only.
#pragma once

#include <JavaScriptCore/JavaScript.h>

#include <array>
#include <cstddef>
#include <forward_list>
#include <memory>
#include <string>
#include <vector>

#include "host/corvel_native.h"
#include "platform/script/known_numbers.h"

namespace script {

/// Makes the script object of a native one; the binding supplies it.
class ObjectWrapper {
 public:
  virtual ~ObjectWrapper() = default;
  virtual JSValueRef wrap(const std::shared_ptr<CorvelNativePropertyBase>& object) = 0;
};

JSValueRef toScript(JSContextRef context, const _CorvelNativeVariant& value, ObjectWrapper& wrapper);
/// A script array of them.
JSObjectRef toScriptList(JSContextRef context, const std::vector<_CorvelNativeVariant>& values, ObjectWrapper& wrapper);

/// The host values of a call's arguments, with the texts that they borrow. Lives on the stack of the call.
class HostValues {
 public:
  /// @p numbers may be null: then the engine is asked for each.
  HostValues(JSContextRef context, const JSValueRef values[], std::size_t count, const KnownNumbers* numbers);
  HostValues(const HostValues&) = delete;
  HostValues& operator=(const HostValues&) = delete;
  ~HostValues();

  const _CorvelNativeVariant* data() const { return m_values; }
  unsigned int count() const { return m_count; }

 private:
  static constexpr std::size_t kFew = 2;  ///< nearly every call; no allocation up to here, but for texts

  unsigned int m_count;
  alignas(_CorvelNativeVariant) std::array<std::byte, kFew * sizeof(_CorvelNativeVariant)> m_few;  ///< only what is used is made
  _CorvelNativeVariant* m_values;  ///< m_count of them: in m_few, or allocated
  std::forward_list<std::string> m_texts;
};

}  // namespace script
