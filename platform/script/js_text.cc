// SPDX-License-Identifier: Apache-2.0
#include "platform/script/js_text.h"

#include <cstdint>

namespace script {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

struct Lead {
  int following;      ///< bytes after the first one; -1 for a byte that cannot begin a character
  char32_t bits;      ///< what the first byte adds
  char32_t smallest;  ///< anything below is an overlong form
};

Lead readLead(unsigned char byte) {
  if (byte < 0x80) return {0, byte, 0};
  if (byte >= 0xC2 && byte < 0xE0) return {1, byte & 0x1FU, 0x80};
  if (byte >= 0xE0 && byte < 0xF0) return {2, byte & 0x0FU, 0x800};
  if (byte >= 0xF0 && byte < 0xF5) return {3, byte & 0x07U, 0x10000};
  return {-1, 0, 0};
}

bool isScalar(char32_t c, char32_t smallest) { return c >= smallest && c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF); }

// Reads one character at @p at and moves @p at behind it; a faulty byte is one U+FFFD, so the reader always advances.
char32_t nextCharacter(std::string_view text, std::size_t& at) {
  const Lead lead = readLead(static_cast<unsigned char>(text[at++]));
  if (lead.following < 0) return kReplacement;
  if (at + static_cast<std::size_t>(lead.following) > text.size()) return kReplacement;
  char32_t c = lead.bits;
  for (int i = 0; i < lead.following; ++i) {
    const auto byte = static_cast<unsigned char>(text[at + static_cast<std::size_t>(i)]);
    if ((byte & 0xC0U) != 0x80U) return kReplacement;
    c = (c << 6U) | (byte & 0x3FU);
  }
  if (!isScalar(c, lead.smallest)) return kReplacement;
  at += static_cast<std::size_t>(lead.following);
  return c;
}

std::u16string toUtf16(std::string_view text) {
  std::u16string out;
  out.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const char32_t c = nextCharacter(text, at);
    if (c < 0x10000) {
      out.push_back(static_cast<char16_t>(c));
      continue;
    }
    out.push_back(static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10U)));
    out.push_back(static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FFU)));
  }
  return out;
}

void appendUtf8(std::string& out, char32_t c) {
  if (c < 0x80) {
    out.push_back(static_cast<char>(c));
    return;
  }
  const int following = c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
  constexpr unsigned kLeads[] = {0, 0xC0, 0xE0, 0xF0};
  out.push_back(static_cast<char>(kLeads[following] | (c >> (6U * static_cast<unsigned>(following)))));
  for (int i = following - 1; i >= 0; --i)
    out.push_back(static_cast<char>(0x80U | ((c >> (6U * static_cast<unsigned>(i))) & 0x3FU)));
}

JSStringRef makeText(std::string_view utf8) {
  const std::u16string text = toUtf16(utf8);
  return JSStringCreateWithCharacters(reinterpret_cast<const JSChar*>(text.data()), text.size());
}

}  // namespace

JsText::JsText(std::string_view utf8) : m_text(makeText(utf8)) {}

JsText::~JsText() {
  if (m_text != nullptr) JSStringRelease(m_text);
}

/// The engine's own conversion gives nothing at all for a text that was cut within a character.
std::string toUtf8(JSStringRef text) {
  const JSChar* const units = JSStringGetCharactersPtr(text);
  const std::size_t count = JSStringGetLength(text);
  std::string out;
  out.reserve(count);
  for (std::size_t at = 0; at < count; ++at) {
    char32_t c = units[at];
    if (c >= 0xD800 && c < 0xDC00 && at + 1 < count && units[at + 1] >= 0xDC00 && units[at + 1] < 0xE000) {
      c = 0x10000 + ((c - 0xD800) << 10U) + (units[++at] - 0xDC00U);
    } else if (c >= 0xD800 && c < 0xE000) {
      c = kReplacement;
    }
    appendUtf8(out, c);
  }
  return out;
}

std::string toUtf8(JSContextRef context, JSValueRef value) {
  JSStringRef copy = JSValueToStringCopy(context, value, nullptr);
  if (copy == nullptr) return "";
  const JsText text(copy);
  return toUtf8(static_cast<JSStringRef>(text));
}

JSValueRef makeString(JSContextRef context, std::string_view utf8) { return JSValueMakeString(context, JsText(utf8)); }

JSValueRef makeError(JSContextRef context, const char* constructor, std::string_view message) {
  const JSValueRef argument = makeString(context, message);
  JSObjectRef maker = asFunction(context, property(context, JSContextGetGlobalObject(context), constructor));
  JSObjectRef error = maker == nullptr ? nullptr : JSObjectCallAsConstructor(context, maker, 1, &argument, nullptr);
  return error != nullptr ? error : JSObjectMakeError(context, 1, &argument, nullptr);
}

JSValueRef property(JSContextRef context, JSObjectRef object, const char* name) {
  return JSObjectGetProperty(context, object, JsText(name), nullptr);
}

void setProperty(JSContextRef context, JSObjectRef object, const char* name, JSValueRef value) {
  JSObjectSetProperty(context, object, JsText(name), value, kJSPropertyAttributeNone, nullptr);
}

void setFunction(JSContextRef context, JSObjectRef object, const char* name, JSObjectCallAsFunctionCallback function) {
  setProperty(context, object, name, JSObjectMakeFunctionWithCallback(context, JsText(name), function));
}

JSObjectRef asFunction(JSContextRef context, JSValueRef value) {
  if (value == nullptr || !JSValueIsObject(context, value)) return nullptr;
  JSObjectRef object = JSValueToObject(context, value, nullptr);
  return object != nullptr && JSObjectIsFunction(context, object) ? object : nullptr;
}

}  // namespace script
