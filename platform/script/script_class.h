// SPDX-License-Identifier: Apache-2.0
// One script class: the prototype made of a native object's tables, with one callable per row that knows its row's index.
// Script thread only.
#pragma once

#include <JavaScriptCore/JavaScript.h>

#include <memory>

#include "host/corvel_native.h"
#include "platform/script/variant_values.h"

namespace script {

/// What a script object keeps of its native object. The holder may empty it: script then reads undefined everywhere.
struct NativeSlot {
  std::shared_ptr<CorvelNativePropertyBase> object;
};

/// @return the native object's pointer inside a script object made by ScriptClass::instantiate (empty when it was destroyed), or
/// null for any other value.
const std::shared_ptr<CorvelNativePropertyBase>* nativeObject(JSContextRef context, JSValueRef value);

/// Lives as long as its context. A table with a "length" row and an "item" method also gives index access and iteration.
class ScriptClass {
 public:
  /// @p sample supplies the rows. @p wrapper must outlive every script call of the context.
  ScriptClass(JSContextRef context, const CorvelNativePropertyBase& sample, ObjectWrapper& wrapper);
  ScriptClass(const ScriptClass&) = delete;
  ScriptClass& operator=(const ScriptClass&) = delete;
  ~ScriptClass();

  JSObjectRef instantiate(const std::shared_ptr<NativeSlot>& slot) const;

 private:
  JSContextRef m_context;
  ObjectWrapper& m_wrapper;
  const void* m_tableId;
  int m_itemRow;  ///< the "item" method, -1 when instances are no lists
  int m_lengthRow;
  JSObjectRef m_prototype;
};

}  // namespace script
