// SPDX-License-Identifier: Apache-2.0
#include "platform/script/variant_values.h"

#include <cmath>
#include <limits>
#include <memory>

#include "platform/script/js_text.h"
#include "platform/script/script_class.h"

namespace script {

namespace {

JSValueRef textToScript(JSContextRef context, const _CorvelNativeString& text) {
  if (text.text == nullptr) return JSValueMakeNull(context);
  return makeString(context, {text.text, text.length});
}

bool isWhole32(double number) {
  constexpr double kLow = std::numeric_limits<std::int32_t>::min();
  constexpr double kHigh = std::numeric_limits<std::int32_t>::max();
  return number >= kLow && number <= kHigh && std::trunc(number) == number;
}

void setNumber(double number, _CorvelNativeVariant& out) {
  if (isWhole32(number)) {
    cvnplUtil::set(static_cast<int>(number), out);
  } else {
    cvnplUtil::set(number, out);
  }
}

void setObject(JSContextRef context, JSValueRef value, _CorvelNativeVariant& out) {
  const std::shared_ptr<CorvelNativePropertyBase>* object = nativeObject(context, value);
  cvnplUtil::set(object != nullptr ? *object : nullptr, out);  // of other objects only that they are some
}

void setScriptNumber(JSContextRef context, JSValueRef value, const KnownNumbers* numbers, _CorvelNativeVariant& out) {
  const int known = numbers == nullptr ? -1 : numbers->find(value);
  if (known >= 0) return cvnplUtil::set(known, out);
  setNumber(JSValueToNumber(context, value, nullptr), out);
}

void setHostValue(JSContextRef context, JSValueRef value, const KnownNumbers* numbers, std::forward_list<std::string>& texts,
                  _CorvelNativeVariant& out) {
  switch (JSValueGetType(context, value)) {
    case kJSTypeNull: out.details.type = CORVEL_NO_VALUE; return;
    case kJSTypeBoolean: return cvnplUtil::set(JSValueToBoolean(context, value), out);
    case kJSTypeNumber: return setScriptNumber(context, value, numbers, out);
    case kJSTypeString: {
      const std::string& text = texts.emplace_front(toUtf8(context, value));
      return cvnplUtil::set(text.data(), out, static_cast<int>(text.size()), false);
    }
    case kJSTypeObject: return setObject(context, value, out);
    case kJSTypeUndefined:
    case kJSTypeSymbol:
    default: return;  // undefined
  }
}

}  // namespace

JSValueRef toScript(JSContextRef context, const _CorvelNativeVariant& value, ObjectWrapper& wrapper) {
  switch (value.details.type) {
    case CORVEL_NO_VALUE: return JSValueMakeNull(context);
    case CORVEL_BOOLEAN: return JSValueMakeBoolean(context, value.boolean);
    case CORVEL_INTEGER: return JSValueMakeNumber(context, value.integer);
    case CORVEL_DOUBLE: return JSValueMakeNumber(context, value.number);
    case CORVEL_STRING: return textToScript(context, value.string);
    case CORVEL_OBJECT: return value.object.object == nullptr ? JSValueMakeNull(context) : wrapper.wrap(value.object.object);
    default: return JSValueMakeUndefined(context);
  }
}

/// To make a member may collect what nothing refers to, and the collector does not look into a vector.
JSObjectRef toScriptList(JSContextRef context, const std::vector<_CorvelNativeVariant>& values, ObjectWrapper& wrapper) {
  std::vector<JSValueRef> members;
  for (const _CorvelNativeVariant& value : values) {
    members.push_back(toScript(context, value, wrapper));
    JSValueProtect(context, members.back());
  }
  JSObjectRef list = JSObjectMakeArray(context, members.size(), members.data(), nullptr);
  for (const JSValueRef member : members) JSValueUnprotect(context, member);
  return list;
}

HostValues::HostValues(JSContextRef context, const JSValueRef values[], std::size_t count, const KnownNumbers* numbers)
    : m_count(static_cast<unsigned int>(count)),
      m_values(count > kFew ? std::allocator<_CorvelNativeVariant>().allocate(count)
                            : reinterpret_cast<_CorvelNativeVariant*>(m_few.data())) {
  std::uninitialized_default_construct_n(m_values, count);
  for (std::size_t i = 0; i < count; ++i) setHostValue(context, values[i], numbers, m_texts, m_values[i]);
}

HostValues::~HostValues() {
  std::destroy_n(m_values, m_count);
  if (m_count > kFew) std::allocator<_CorvelNativeVariant>().deallocate(m_values, m_count);
}

}  // namespace script
