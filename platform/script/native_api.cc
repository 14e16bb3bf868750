// SPDX-License-Identifier: Apache-2.0
#include "platform/script/native_api.h"

#include <cmath>
#include <limits>
#include <string>

#include "platform/script/callable.h"
#include "platform/script/direct_rows.h"
#include "platform/script/js_text.h"

namespace script {

namespace {

using Arguments = std::span<const JSValueRef>;
using NativeFunction = JSValueRef (*)(Binding& binding, Arguments arguments, JSValueRef* exception);

double number(Binding& binding, JSValueRef value) {
  const double out = JSValueToNumber(binding.context(), value, nullptr);
  return std::isfinite(out) ? out : 0;
}

int integer(Binding& binding, JSValueRef value) {
  const double limit = 1 << 24;  // far outside any plane
  return static_cast<int>(std::lround(std::fmin(std::fmax(number(binding, value), -limit), limit)));
}

CorvelNativePluginBase* pluginOf(Binding& binding, JSValueRef id) {
  return binding.plugin(static_cast<std::uint64_t>(number(binding, id)));
}

JSValueRef boolean(Binding& binding, bool value) { return JSValueMakeBoolean(binding.context(), value); }
JSValueRef undefined(Binding& binding) { return JSValueMakeUndefined(binding.context()); }

JSValueRef create(Binding& binding, Arguments, JSValueRef*) {
  JSObjectRef object = binding.create();
  return object == nullptr ? JSValueMakeNull(binding.context()) : object;
}

JSValueRef idOf(Binding& binding, Arguments arguments, JSValueRef*) {
  const auto* object = nativeObject(binding.context(), arguments[0]);
  if (object == nullptr || *object == nullptr) return undefined(binding);
  return JSValueMakeNumber(binding.context(), static_cast<double>(pluginhost::objectId(**object)));
}

JSValueRef describeRow(Binding& binding, const pluginhost::RowInfo& row) {
  JSObjectRef out = JSObjectMake(binding.context(), nullptr, nullptr);
  setProperty(binding.context(), out, "name", makeString(binding.context(), row.name));
  setProperty(binding.context(), out, "type", JSValueMakeNumber(binding.context(), row.typeCode));
  setProperty(binding.context(), out, "access", JSValueMakeNumber(binding.context(), row.access));
  return out;
}

JSObjectRef emptyArray(Binding& binding) { return JSObjectMakeArray(binding.context(), 0, nullptr, nullptr); }

void append(Binding& binding, JSObjectRef array, unsigned int index, JSValueRef value) {
  JSObjectSetPropertyAtIndex(binding.context(), array, index, value, nullptr);
}

JSValueRef describe(Binding& binding, const Tables& tables) {
  JSObjectRef properties = emptyArray(binding);
  unsigned int index = 0;
  for (const pluginhost::RowInfo& row : tables.properties) append(binding, properties, index++, describeRow(binding, row));
  JSObjectRef methods = emptyArray(binding);
  index = 0;
  for (const std::string_view name : tables.methods) append(binding, methods, index++, makeString(binding.context(), name));
  JSObjectRef out = JSObjectMake(binding.context(), nullptr, nullptr);
  setProperty(binding.context(), out, "properties", properties);
  setProperty(binding.context(), out, "methods", methods);
  return out;
}

JSValueRef rows(Binding& binding, Arguments arguments, JSValueRef*) {
  const CorvelNativePluginBase* plugin = pluginOf(binding, arguments[0]);
  if (plugin != nullptr) return describe(binding, tablesOf(*plugin));
  const bool ofAll = number(binding, arguments[0]) == 0 && binding.knownTables() != nullptr;
  return ofAll ? describe(binding, *binding.knownTables()) : undefined(binding);
}

unsigned int rowNumber(Binding& binding, JSValueRef value) {
  const double row = number(binding, value);
  return row >= 0 && row < std::numeric_limits<int>::max() ? static_cast<unsigned int>(row)
                                                           : std::numeric_limits<unsigned int>::max();
}

JSValueRef orUndefined(Binding& binding, JSObjectRef object) { return object == nullptr ? undefined(binding) : object; }

JSValueRef reader(Binding& binding, Arguments arguments, JSValueRef*) {
  return orUndefined(binding, makeDirectReader(binding.context(), rowNumber(binding, arguments[0])));
}

JSValueRef textReader(Binding& binding, Arguments arguments, JSValueRef*) {
  return orUndefined(binding, makeDirectTextReader(binding.context(), rowNumber(binding, arguments[0])));
}

JSValueRef method(Binding& binding, Arguments arguments, JSValueRef*) {
  return orUndefined(binding, makeDirectMethod(binding.context(), rowNumber(binding, arguments[0])));
}

JSValueRef destroy(Binding& binding, Arguments arguments, JSValueRef*) {
  binding.destroy(static_cast<std::uint64_t>(number(binding, arguments[0])));
  return undefined(binding);
}

JSValueRef setDocumentUrl(Binding& binding, Arguments arguments, JSValueRef*) {
  CorvelNativePluginBase* plugin = pluginOf(binding, arguments[0]);
  const std::string url = toUtf8(binding.context(), arguments[1]);
  return boolean(binding, plugin != nullptr && plugin->setDocumentUrl(url.data(), static_cast<unsigned int>(url.size())));
}

JSValueRef setWindow(Binding& binding, Arguments arguments, JSValueRef*) {
  const auto id = static_cast<std::uint64_t>(number(binding, arguments[0]));
  const PlaneWindow window{integer(binding, arguments[1]), integer(binding, arguments[2]), integer(binding, arguments[3]),
                           integer(binding, arguments[4])};
  return boolean(binding, binding.setWindow(id, window));
}

JSValueRef setFlag(Binding& binding, Arguments arguments, JSValueRef*) {
  CorvelNativePluginBase* plugin = pluginOf(binding, arguments[0]);
  if (plugin == nullptr) return undefined(binding);
  const std::string name = toUtf8(binding.context(), arguments[1]);
  pluginhost::introduceProperty(*plugin, name.c_str(), JSValueToBoolean(binding.context(), arguments[2]));
  return undefined(binding);
}

JSValueRef flag(Binding& binding, Arguments arguments, JSValueRef*) {
  const CorvelNativePluginBase* plugin = pluginOf(binding, arguments[0]);
  const std::string name = toUtf8(binding.context(), arguments[1]);
  bool value = false;
  if (plugin == nullptr) return undefined(binding);
  const bool known = pluginhost::readIntroduced(const_cast<CorvelNativePluginBase&>(*plugin), name.c_str(), value);
  return known ? boolean(binding, value) : undefined(binding);
}

JSValueRef raise(Binding& binding, Arguments arguments, JSValueRef*) {
  CorvelNativePluginBase* plugin = pluginOf(binding, arguments[0]);
  const std::string name = toUtf8(binding.context(), arguments[1]);
  return boolean(binding, plugin != nullptr && plugin->dispatchEvent(name.c_str(), nullptr, 0));
}

JSValueRef startSubtitlePlayer(Binding& binding, Arguments arguments, JSValueRef*) {
  CorvelNativePluginBase* plugin = pluginOf(binding, arguments[0]);
  if (plugin != nullptr) plugin->startOOBSubtitlePlayer(JSValueToBoolean(binding.context(), arguments[1]));
  return undefined(binding);
}

// The layer's own look at an object: no script access, so no thunk runs and no trace mentions it.
JSValueRef storedNumber(Binding& binding, Arguments arguments, JSValueRef*) {
  CorvelNativePluginBase* plugin = pluginOf(binding, arguments[0]);
  int value = 0;
  const bool known = plugin != nullptr && plugin->getProperty(toUtf8(binding.context(), arguments[1]).c_str(), value);
  return known ? JSValueMakeNumber(binding.context(), value) : undefined(binding);
}

JSValueRef storedText(Binding& binding, Arguments arguments, JSValueRef*) {
  CorvelNativePluginBase* plugin = pluginOf(binding, arguments[0]);
  char* value = nullptr;
  const bool known = plugin != nullptr && plugin->getProperty(toUtf8(binding.context(), arguments[1]).c_str(), value);
  return makeString(binding.context(), known && value != nullptr ? value : "");
}

// A page's security policy may forbid eval; what the layer makes of the row names is the program's own text.
JSValueRef compile(Binding& binding, Arguments arguments, JSValueRef* exception) {
  const JsText source(toUtf8(binding.context(), arguments[0]));
  const JSValueRef value = JSEvaluateScript(binding.context(), source, nullptr, nullptr, 1, exception);
  return value != nullptr ? value : undefined(binding);
}

}  // namespace

JSObjectRef makeNativeApi(Binding& binding) {
  const struct {
    const char* name;
    NativeFunction function;
    std::size_t arguments;
  } functions[] = {
      {"create", create, 0},
      {"id", idOf, 1},
      {"rows", rows, 1},
      {"reader", reader, 1},
      {"textReader", textReader, 1},
      {"method", method, 1},
      {"destroy", destroy, 1},
      {"setDocumentUrl", setDocumentUrl, 2},
      {"setWindow", setWindow, 5},
      {"setFlag", setFlag, 3},
      {"flag", flag, 2},
      {"raise", raise, 2},
      {"startSubtitlePlayer", startSubtitlePlayer, 2},
      {"storedNumber", storedNumber, 2},
      {"storedText", storedText, 2},
      {"compile", compile, 1},
  };
  JSObjectRef api = JSObjectMake(binding.context(), nullptr, nullptr);
  for (const auto& row : functions) {
    const auto run = [self = binding.self(), context = binding.context(), function = row.function](Arguments arguments,
                                                                                                   JSValueRef* exception) {
      return *self == nullptr ? JSValueMakeUndefined(context) : function(**self, arguments, exception);
    };
    setProperty(binding.context(), api, row.name, makeCallable(binding.context(), row.arguments, run));
  }
  return api;
}

}  // namespace script
