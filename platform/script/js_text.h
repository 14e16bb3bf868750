// SPDX-License-Identifier: Apache-2.0
// Texts and small helpers of the JavaScriptCore C API. Script thread only.
#pragma once

#include <JavaScriptCore/JavaScript.h>

#include <string>
#include <string_view>

namespace script {

/// Owns one reference to a JSStringRef.
class JsText {
 public:
  explicit JsText(std::string_view utf8);  ///< bytes that are no UTF-8 become U+FFFD
  explicit JsText(JSStringRef owned) : m_text(owned) {}
  JsText(const JsText&) = delete;
  JsText& operator=(const JsText&) = delete;
  ~JsText();

  operator JSStringRef() const { return m_text; }  // NOLINT(google-explicit-constructor): stands in for the reference it owns

 private:
  JSStringRef m_text;
};

std::string toUtf8(JSStringRef text);
/// The value as String(value) gives it; "" when the conversion throws.
std::string toUtf8(JSContextRef context, JSValueRef value);

JSValueRef makeString(JSContextRef context, std::string_view utf8);
/// An instance of the global constructor @p constructor ("Error", "TypeError").
JSValueRef makeError(JSContextRef context, const char* constructor, std::string_view message);
JSValueRef property(JSContextRef context, JSObjectRef object, const char* name);
void setProperty(JSContextRef context, JSObjectRef object, const char* name, JSValueRef value);
void setFunction(JSContextRef context, JSObjectRef object, const char* name, JSObjectCallAsFunctionCallback function);
/// @return the value as a function, or null.
JSObjectRef asFunction(JSContextRef context, JSValueRef value);

}  // namespace script
