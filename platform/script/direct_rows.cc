// SPDX-License-Identifier: Apache-2.0
#include "platform/script/direct_rows.h"

#include <array>
#include <string_view>
#include <utility>

#include "platform/pluginhost/shell.h"
#include "platform/script/instance.h"
#include "platform/script/js_text.h"

namespace script {

namespace {

// The engine's plain function has no place for a number of ours, and the kind that has one is slower to call: a function for each
// row.
constexpr std::size_t kRows = 64;
using Callbacks = std::array<JSObjectCallAsFunctionCallback, kRows>;

bool readValue(const Instance* instance, unsigned int row, _CorvelNativeVariant& out) {
  if (instance == nullptr || instance->slot->object == nullptr) return false;
  return pluginhost::readProperty(*instance->slot->object, row, out);
}

template <unsigned int kRow>
JSValueRef read(JSContextRef context, JSObjectRef, JSObjectRef self, size_t, const JSValueRef[], JSValueRef*) {
  const Instance* instance = instanceOf(self);
  _CorvelNativeVariant value;
  if (!readValue(instance, kRow, value)) return JSValueMakeUndefined(context);
  return resultFor(context, *instance, value);
}

// True when the value is the text that was given last; remembers it otherwise.
bool isAsGiven(Instance& instance, unsigned int row, const _CorvelNativeVariant& value) {
  if (instance.given.size() <= row) instance.given.resize(row + 1);
  std::optional<std::string>& given = instance.given[row];
  if (value.details.type != CORVEL_STRING || value.string.text == nullptr) {
    given.reset();
    return false;
  }
  const std::string_view text(value.string.text, value.string.length);
  if (given == text) return true;
  given = text;
  return false;
}

JSValueRef readText(JSContextRef context, JSObjectRef function, Instance* instance, unsigned int row) {
  _CorvelNativeVariant value;
  if (!readValue(instance, row, value)) return JSValueMakeUndefined(context);
  return isAsGiven(*instance, row, value) ? function : resultFor(context, *instance, value);
}

template <unsigned int kRow>
JSValueRef readText(JSContextRef context, JSObjectRef function, JSObjectRef self, size_t, const JSValueRef[], JSValueRef*) {
  return readText(context, function, instanceOf(self), kRow);
}

template <unsigned int kRow>
JSValueRef call(JSContextRef context, JSObjectRef, JSObjectRef self, size_t argc, const JSValueRef argv[], JSValueRef*) {
  const Instance* instance = instanceOf(self);
  if (instance == nullptr) return JSValueMakeUndefined(context);
  return callRow(context, *instance, kRow, HostValues(context, argv, argc, instance->link->numbers));
}

template <unsigned int... kRow>
constexpr Callbacks readers(std::integer_sequence<unsigned int, kRow...>) {
  return {read<kRow>...};
}
template <unsigned int... kRow>
constexpr Callbacks textReaders(std::integer_sequence<unsigned int, kRow...>) {
  return {readText<kRow>...};
}
template <unsigned int... kRow>
constexpr Callbacks methods(std::integer_sequence<unsigned int, kRow...>) {
  return {call<kRow>...};
}

using AllRows = std::make_integer_sequence<unsigned int, kRows>;
constexpr Callbacks kReaders = readers(AllRows());
constexpr Callbacks kTextReaders = textReaders(AllRows());
constexpr Callbacks kMethods = methods(AllRows());

JSObjectRef makeFunction(JSContextRef context, const Callbacks& callbacks, unsigned int row) {
  return row < kRows ? JSObjectMakeFunctionWithCallback(context, JsText(""), callbacks[row]) : nullptr;
}

}  // namespace

JSObjectRef makeDirectReader(JSContextRef context, unsigned int row) { return makeFunction(context, kReaders, row); }
JSObjectRef makeDirectTextReader(JSContextRef context, unsigned int row) { return makeFunction(context, kTextReaders, row); }
JSObjectRef makeDirectMethod(JSContextRef context, unsigned int row) { return makeFunction(context, kMethods, row); }

}  // namespace script
