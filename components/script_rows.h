// SPDX-License-Identifier: Apache-2.0
// Rows of script tables whose value the host keeps: no getter, no setter. For the tables of component and rating objects.
#pragma once

#include "host/corvel_native.h"

namespace rows {

inline CorvelNativeProperty text(const char* name) {
  CorvelNativeProperty row{name, 0, {}, nullptr, nullptr};
  row.defaultValue.details.type = CORVEL_STRING;
  row.defaultValue.string = {"", 0, 0};
  return row;
}

inline CorvelNativeProperty integer(const char* name, int initial = 0) {
  CorvelNativeProperty row{name, 0, {}, nullptr, nullptr};
  cvnplUtil::set(initial, row.defaultValue);
  return row;
}

inline CorvelNativeProperty boolean(const char* name) {
  CorvelNativeProperty row{name, 0, {}, nullptr, nullptr};
  cvnplUtil::set(false, row.defaultValue);
  return row;
}

inline CorvelNativeProperty number(const char* name) {
  CorvelNativeProperty row{name, 0, {}, nullptr, nullptr};
  cvnplUtil::set(0.0, row.defaultValue);
  return row;
}

inline CorvelNativeProperty object(const char* name) {
  CorvelNativeProperty row{name, 0, {}, nullptr, nullptr};
  cvnplUtil::set(std::shared_ptr<CorvelNativePropertyBase>(), row.defaultValue);
  return row;
}

/// A row that is computed whenever script reads it.
inline CorvelNativeProperty computedInteger(const char* name, CorvelNativeGetter getter) {
  CorvelNativeProperty row = integer(name);
  row.getter = getter;
  return row;
}

/// Binds a text row to @p text, which outlives the object or the next bind; null shows as the empty text.
inline void bindText(CorvelNativePropertyBase& object, const char* name, char* text) {
  static char empty[] = "";
  object.setProperty(name, text != nullptr ? text : empty);
}

}  // namespace rows
