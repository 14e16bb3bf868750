// SPDX-License-Identifier: Apache-2.0
// Script values to host values and back. Script thread only.
#pragma once

#include <JavaScriptCore/JavaScript.h>

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "host/corvel_native.h"

namespace script {

/// Makes the script object of a native one; the binding supplies it.
class ObjectWrapper {
 public:
  virtual ~ObjectWrapper() = default;
  virtual JSValueRef wrap(const std::shared_ptr<CorvelNativePropertyBase>& object) = 0;
};

JSValueRef toScript(JSContextRef context, const _CorvelNativeVariant& value, ObjectWrapper& wrapper);

/// The host values of a call's arguments, with the texts that they borrow. Lives on the stack of the call.
class HostValues {
 public:
  HostValues(JSContextRef context, const JSValueRef values[], std::size_t count);
  HostValues(const HostValues&) = delete;
  HostValues& operator=(const HostValues&) = delete;

  const _CorvelNativeVariant* data() const { return m_many.empty() ? m_few.data() : m_many.data(); }
  unsigned int count() const { return m_count; }

 private:
  static constexpr std::size_t kFew = 2;  ///< nearly every call; no allocation up to here

  unsigned int m_count;
  std::array<std::string, kFew> m_fewTexts;
  std::array<_CorvelNativeVariant, kFew> m_few;
  std::vector<std::string> m_manyTexts;
  std::vector<_CorvelNativeVariant> m_many;
};

}  // namespace script
