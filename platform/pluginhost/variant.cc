// SPDX-License-Identifier: Apache-2.0
// The framework's tagged value. Plugin libraries fill their tables with it from static initialisers, which may run before this
// library's own: nothing here depends on any state.
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include "host/corvel_native.h"

namespace {

constexpr _CorvelNativeString kNothing{nullptr, 0, 0};
static_assert(sizeof(_CorvelNativeString) == sizeof(_CorvelNativeObject), "zeroing the text zeroes every value byte");

/// Ends the life of the value and leaves all value bytes zero: a number never looks like a text with a length.
void release(_CorvelNativeVariant& variant) {
  if (variant.details.type == CORVEL_STRING && variant.string.owned != 0) std::free(const_cast<char*>(variant.string.text));
  if (variant.details.type == CORVEL_OBJECT) std::destroy_at(&variant.object);
  std::construct_at(&variant.string, kNothing);
}

/// A copy with a NUL after it, for readers that forget the length.
_CorvelNativeString copyOf(const char* text, std::uint32_t length) {
  auto* copy = static_cast<char*>(std::malloc(static_cast<std::size_t>(length) + 1));
  if (copy == nullptr) throw std::bad_alloc();
  std::memcpy(copy, text, length);
  copy[length] = '\0';
  return {copy, length, 1};
}

_CorvelNativeString textOf(const char* text, std::uint32_t length, bool copy) {
  if (text == nullptr) return kNothing;
  return copy ? copyOf(text, length) : _CorvelNativeString{text, length, 0};
}

/// Copies the value of `from` into `to`, whose value bytes are zero. A borrowed text stays borrowed.
void copyValue(const _CorvelNativeVariant& from, _CorvelNativeVariant& to) {
  if (from.details.type == CORVEL_OBJECT) {
    std::construct_at(&to.object, from.object);
    return;
  }
  to.string = from.string;
  const bool owned = from.details.type == CORVEL_STRING && from.string.owned != 0;
  if (owned) to.string = textOf(from.string.text, from.string.length, true);
}

void setText(_CorvelNativeVariant& out, const char* text, std::uint32_t length, bool copy) {
  const _CorvelNativeString value = textOf(text, length, copy);  // before the release: `text` may be the old value
  release(out);
  out.details.type = CORVEL_STRING;
  out.string = value;
}

}  // namespace

_CorvelNativeVariant::_CorvelNativeVariant() : details{CORVEL_UNDEFINED, CORVEL_ORDINARY}, string(kNothing) {}

_CorvelNativeVariant::_CorvelNativeVariant(const _CorvelNativeVariant& other) : details(other.details), string(kNothing) {
  copyValue(other, *this);
}

_CorvelNativeVariant& _CorvelNativeVariant::operator=(const _CorvelNativeVariant& other) {
  if (this == &other) return *this;
  const _CorvelNativeVariant copy(other);  // `other` may live inside the object that this one is about to release
  release(*this);
  details.type = CORVEL_UNDEFINED;
  copyValue(copy, *this);
  details = copy.details;
  return *this;
}

_CorvelNativeVariant::~_CorvelNativeVariant() { release(*this); }

namespace cvnplUtil {

void set(bool value, _CorvelNativeVariant& out) {
  release(out);
  out.details.type = CORVEL_BOOLEAN;
  out.boolean = value;
}

void set(int value, _CorvelNativeVariant& out) {
  release(out);
  out.details.type = CORVEL_INTEGER;
  out.integer = value;
}

void set(unsigned long value, _CorvelNativeVariant& out) { set(static_cast<double>(value), out); }

void set(double value, _CorvelNativeVariant& out) {
  release(out);
  out.details.type = CORVEL_DOUBLE;
  out.number = value;
}

void set(const char* text, _CorvelNativeVariant& out, bool copy) {
  setText(out, text, text == nullptr ? 0 : static_cast<std::uint32_t>(std::strlen(text)), copy);
}

void set(const char* text, _CorvelNativeVariant& out, int length, bool copy) {
  setText(out, text, length < 0 ? 0 : static_cast<std::uint32_t>(length), copy);
}

void set(std::shared_ptr<CorvelNativePropertyBase> object, _CorvelNativeVariant& out) {
  release(out);
  out.details.type = CORVEL_OBJECT;
  std::construct_at(&out.object, _CorvelNativeObject{std::move(object)});
}

}  // namespace cvnplUtil
