// SPDX-License-Identifier: Apache-2.0
#include "platform/shell/trace_line.h"

#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <charconv>
#include <cmath>

#include "platform/pluginhost/shell.h"

namespace shell {

namespace {

std::string monotonicSeconds() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  std::string fraction = std::to_string(now.tv_nsec / 1000);
  return std::to_string(now.tv_sec) + "." + std::string(6 - fraction.size(), '0') + fraction;
}

// @return the length of the well-formed UTF-8 character at @p at, or 0.
std::size_t characterLength(std::string_view text, std::size_t at) {
  const auto lead = static_cast<unsigned char>(text[at]);
  const std::size_t length = lead < 0x80 ? 1 : lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
  if (length == 0 || at + length > text.size()) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((static_cast<unsigned char>(text[at + i]) & 0xC0U) != 0x80U) return 0;
  }
  return length;
}

void appendControl(std::string& out, unsigned char c) {
  constexpr char kDigits[] = "0123456789abcdef";
  out += "\\u00";
  out += kDigits[c >> 4U];
  out += kDigits[c & 0xFU];
}

}  // namespace

TraceLine::TraceLine(std::string_view kind, std::string_view name) : m_out("{\"time\":") {
  m_out += monotonicSeconds();
  number("thread", static_cast<std::uint64_t>(syscall(SYS_gettid)));
  text("kind", kind);
  text("name", name);
}

void TraceLine::key(std::string_view name) {
  m_out += ",\"";
  m_out += name;
  m_out += "\":";
}

void TraceLine::quote(std::string_view text) {
  m_out += '"';
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t length = characterLength(text, at);
    const char c = text[at];
    if (length == 0) {
      m_out += "\\ufffd";
    } else if (static_cast<unsigned char>(c) < 0x20) {
      appendControl(m_out, static_cast<unsigned char>(c));
    } else {
      if (c == '"' || c == '\\') m_out += '\\';
      m_out += text.substr(at, length);
    }
    at += length == 0 ? 1 : length;
  }
  m_out += '"';
}

void TraceLine::append(double number) {
  if (!std::isfinite(number)) return quote(std::isnan(number) ? "NaN" : number > 0 ? "Infinity" : "-Infinity");
  char buffer[32];
  const auto end = std::to_chars(buffer, buffer + sizeof(buffer), number);
  m_out.append(buffer, end.ptr);
}

void TraceLine::append(const _CorvelNativeVariant& value) {
  switch (value.details.type) {
    case CORVEL_BOOLEAN: m_out += value.boolean ? "true" : "false"; return;
    case CORVEL_INTEGER: m_out += std::to_string(value.integer); return;
    case CORVEL_DOUBLE: return append(value.number);
    case CORVEL_STRING:
      if (value.string.text == nullptr) break;
      return quote({value.string.text, value.string.length});
    case CORVEL_OBJECT:
      if (value.object.object == nullptr) break;
      m_out += "{\"object\":" + std::to_string(pluginhost::objectId(*value.object.object)) + "}";
      return;
    default: break;
  }
  m_out += "null";
}

TraceLine& TraceLine::number(std::string_view name, std::uint64_t value) {
  key(name);
  m_out += std::to_string(value);
  return *this;
}

TraceLine& TraceLine::boolean(std::string_view name, bool value) {
  key(name);
  m_out += value ? "true" : "false";
  return *this;
}

TraceLine& TraceLine::text(std::string_view name, std::string_view value) {
  key(name);
  quote(value);
  return *this;
}

TraceLine& TraceLine::null(std::string_view name) {
  key(name);
  m_out += "null";
  return *this;
}

TraceLine& TraceLine::value(std::string_view name, const _CorvelNativeVariant& value) {
  key(name);
  append(value);
  return *this;
}

TraceLine& TraceLine::values(std::string_view name, const _CorvelNativeVariant* values, unsigned int count) {
  key(name);
  m_out += '[';
  for (unsigned int i = 0; i < count; ++i) {
    if (i > 0) m_out += ',';
    append(values[i]);
  }
  m_out += ']';
  return *this;
}

TraceLine& TraceLine::argument(std::string_view name, const char* text) {
  key(name);
  m_out += '[';
  if (text != nullptr) quote(text);
  m_out += ']';
  return *this;
}

const std::string& TraceLine::finish() {
  m_out += "}\n";
  return m_out;
}

}  // namespace shell
