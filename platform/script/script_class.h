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

/// What makes script objects of native ones and knows numbers, as those see it: null once it has gone. Objects of a context may
/// outlive it.
struct WrapperLink {
  ObjectWrapper* wrapper;
  const KnownNumbers* numbers;
};

/// What the engine offers before a page can change it. Whoever fills it in keeps it from the collector.
struct Intrinsics {
  JSObjectRef defineProperty;
  JSObjectRef functionPrototype;
  JSValueRef iterator;      ///< Symbol.iterator
  JSObjectRef arrayValues;  ///< what makes a list iterable
};

/// Lives as long as its context at most. A table with a "length" row and an "item" method also gives index access and iteration.
class ScriptClass {
 public:
  /// @p sample supplies the rows.
  ScriptClass(JSContextRef context, const CorvelNativePropertyBase& sample, std::shared_ptr<WrapperLink> link,
              const Intrinsics& intrinsics);
  ScriptClass(const ScriptClass&) = delete;
  ScriptClass& operator=(const ScriptClass&) = delete;
  ~ScriptClass();

  JSObjectRef instantiate(const std::shared_ptr<NativeSlot>& slot) const;

 private:
  JSContextRef m_context;
  std::shared_ptr<WrapperLink> m_link;
  const void* m_tableId;
  int m_itemRow;  ///< the "item" method, -1 when instances are no lists
  int m_lengthRow;
  JSObjectRef m_prototype;
};

}  // namespace script
