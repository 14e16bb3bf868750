// SPDX-License-Identifier: Apache-2.0
#include "platform/script/callable.h"

#include <utility>

#include "platform/script/js_text.h"

namespace script {

namespace {

struct Entry {
  std::uint64_t mark;  // where other classes of this library keep theirs: never equal to one of them
  std::size_t required;
  Callable callable;
};

JSValueRef callEntry(JSContextRef context, JSObjectRef function, JSObjectRef, size_t argc, const JSValueRef argv[],
                     JSValueRef* exception) {
  const auto* entry = static_cast<Entry*>(JSObjectGetPrivate(function));
  if (argc >= entry->required) return entry->callable({argv, argc}, exception);
  *exception = makeError(context, "TypeError", "too few arguments");
  return JSValueMakeUndefined(context);
}

JSClassRef entryClass() {
  static JSClassRef made = [] {
    JSClassDefinition definition = kJSClassDefinitionEmpty;
    definition.className = "Function";
    definition.callAsFunction = callEntry;
    definition.finalize = [](JSObjectRef object) { delete static_cast<Entry*>(JSObjectGetPrivate(object)); };
    return JSClassCreate(&definition);
  }();
  return made;
}

}  // namespace

JSObjectRef makeCallable(JSContextRef context, std::size_t required, Callable callable) {
  JSObjectRef function = JSObjectMake(context, entryClass(), new Entry{0, required, std::move(callable)});
  JSObjectRef functionClass = asFunction(context, property(context, JSContextGetGlobalObject(context), "Function"));
  if (functionClass != nullptr) JSObjectSetPrototype(context, function, property(context, functionClass, "prototype"));
  return function;
}

}  // namespace script
