// SPDX-License-Identifier: Apache-2.0
// Script's side of an object: rows by index and by name. No lock of the host is held while a thunk runs.
#include <utility>

#include "platform/pluginhost/object_state.h"
#include "platform/pluginhost/observer.h"
#include "platform/pluginhost/shell.h"
#include "platform/pluginhost/value_conversion.h"

namespace pluginhost {
namespace {

void makeUndefined(_CorvelNativeVariant& out) {
  if (out.details.type == CORVEL_UNDEFINED) return;
  cvnplUtil::set(0, out);  // releases what it held
  out.details.type = CORVEL_UNDEFINED;
}

bool readStored(const CorvelNativeObjectState& state, unsigned int row, _CorvelNativeVariant& out) {
  const _CorvelNativeVariant& initial = state.row(row)->defaultValue;
  switch (initial.details.type) {
    case CORVEL_BOOLEAN: cvnplUtil::set(state.store.boolean(row), out); return true;
    case CORVEL_INTEGER: cvnplUtil::set(static_cast<int>(state.store.integer(row)), out); return true;
    case CORVEL_DOUBLE: cvnplUtil::set(state.store.number(row), out); return true;
    case CORVEL_STRING: state.store.readText(row, out); return true;
    case CORVEL_EVENT_HANDLER:  // the page layer keeps functions; for the host the slot is empty
      makeUndefined(out);
      out.details.type = CORVEL_NO_VALUE;
      return true;
    default: out = initial; return true;
  }
}

bool readRow(CorvelNativePropertyBase& object, const CorvelNativeObjectState& state, unsigned int row, _CorvelNativeVariant& out) {
  const CorvelNativeProperty& property = *state.row(row);
  if (property.getter == nullptr) return readStored(state, row, out);
  makeUndefined(out);
  if (property.getter(&object, &out)) return true;
  makeUndefined(out);
  return false;
}

/// Stores what script wrote to a row without a setter.
bool storeWrite(CorvelNativeObjectState& state, unsigned int row, const _CorvelNativeVariant& value) {
  const CorvelNativeVariantDetails& details = state.row(row)->defaultValue.details;
  if (details.access == CORVEL_PLUGIN_ONLY) return false;
  if (details.type == CORVEL_EVENT_HANDLER) return true;  // anything may be assigned; the page layer keeps functions
  if (details.type == CORVEL_BOOLEAN) {
    state.store.setBoolean(row, toBoolean(value));
    return true;
  }
  if (details.type == CORVEL_INTEGER) {
    const auto converted = toInteger(value);
    if (converted) state.store.setInteger(row, *converted);
    return converted.has_value();
  }
  if (details.type == CORVEL_DOUBLE) {
    const auto converted = toNumber(value);
    if (converted) state.store.setNumber(row, *converted);
    return converted.has_value();
  }
  auto converted = details.type == CORVEL_STRING ? toText(value) : std::nullopt;
  if (!converted) return false;
  state.store.keepText(row, std::move(*converted));
  return true;
}

bool isNumberOrBoolean(const _CorvelNativeVariant& value) {
  return value.details.type == CORVEL_BOOLEAN || value.details.type == CORVEL_INTEGER || value.details.type == CORVEL_DOUBLE;
}

/// A setter gets the value as script wrote it, with two exceptions for text rows: an object never reaches them,
/// and the rows that mirror an attribute get numbers and booleans as the attribute's text.
bool runSetter(CorvelNativePropertyBase& object, const CorvelNativeProperty& property, const _CorvelNativeVariant& value) {
  const CorvelNativeVariantDetails& details = property.defaultValue.details;
  if (details.type != CORVEL_STRING) return property.setter(&object, &value);
  if (value.details.type == CORVEL_OBJECT) return false;
  if (details.access != CORVEL_ATTRIBUTE || !isNumberOrBoolean(value)) return property.setter(&object, &value);
  const std::string text = *toText(value);
  _CorvelNativeVariant converted;
  cvnplUtil::set(text.c_str(), converted, false);
  return property.setter(&object, &converted);
}

}  // namespace

std::uint64_t objectId(const CorvelNativePropertyBase& object) { return object.state()->id; }

std::vector<RowInfo> propertyRows(const CorvelNativePropertyBase& object) {
  std::vector<RowInfo> rows;
  for (unsigned int i = 0; const CorvelNativeProperty* row = object.state()->row(i); ++i) {
    const CorvelNativeVariantDetails& details = row->defaultValue.details;
    rows.push_back({row->name, details.type, details.access, row->getter != nullptr, row->setter != nullptr});
  }
  return rows;
}

std::vector<std::string_view> methodRows(const CorvelNativePropertyBase& object) {
  std::vector<std::string_view> names;
  for (unsigned int i = 0; const CorvelNativeMethod* row = object.state()->method(i); ++i) names.emplace_back(row->name);
  return names;
}

const void* tableId(const CorvelNativePropertyBase& object) {
  const auto& tables = object.state()->tables;
  return tables ? tables->tables().properties : nullptr;
}

int findProperty(const CorvelNativePropertyBase& object, std::string_view name) {
  const auto& tables = object.state()->tables;
  return tables ? tables->findProperty(name) : -1;
}

int findMethod(const CorvelNativePropertyBase& object, std::string_view name) {
  const auto& tables = object.state()->tables;
  return tables ? tables->findMethod(name) : -1;
}

bool readProperty(CorvelNativePropertyBase& object, unsigned int row, _CorvelNativeVariant& out) {
  const CorvelNativeObjectState& state = *object.state();
  const CorvelNativeProperty* const property = state.row(row);
  if (property == nullptr) return false;
  const bool ok = readRow(object, state, row, out);
  if (const Watch watch; watch) watch->propertyRead(state.id, property->name, ok, out);
  return ok;
}

bool writeProperty(CorvelNativePropertyBase& object, unsigned int row, const _CorvelNativeVariant& value) {
  CorvelNativeObjectState& state = *object.state();
  const CorvelNativeProperty* const property = state.row(row);
  if (property == nullptr) return false;
  const bool ok = property->setter != nullptr ? runSetter(object, *property, value) : storeWrite(state, row, value);
  if (const Watch watch; watch) watch->propertyWritten(state.id, property->name, value, ok);
  return ok;
}

bool callMethod(CorvelNativePropertyBase& object, unsigned int row, const _CorvelNativeVariant* args, unsigned int argc,
                _CorvelNativeVariant& result) {
  const CorvelNativeObjectState& state = *object.state();
  const CorvelNativeMethod* const method = state.method(row);
  if (method == nullptr) return false;
  if (args == nullptr && argc != 0) return false;
  makeUndefined(result);
  static const _CorvelNativeVariant none;  // methods may read their first slot whatever argc says
  const bool ok = method->function(&object, argc == 0 ? &none : args, argc, &result);
  if (!ok) makeUndefined(result);
  if (const Watch watch; watch) watch->methodCalled(state.id, method->name, args, argc, ok, result);
  return ok;
}

bool readProperty(CorvelNativePropertyBase& object, std::string_view name, _CorvelNativeVariant& out) {
  const int row = findProperty(object, name);
  return row >= 0 && readProperty(object, static_cast<unsigned int>(row), out);
}

bool writeProperty(CorvelNativePropertyBase& object, std::string_view name, const _CorvelNativeVariant& value) {
  const int row = findProperty(object, name);
  return row >= 0 && writeProperty(object, static_cast<unsigned int>(row), value);
}

bool callMethod(CorvelNativePropertyBase& object, std::string_view name, const _CorvelNativeVariant* args, unsigned int argc,
                _CorvelNativeVariant& result) {
  const int row = findMethod(object, name);
  return row >= 0 && callMethod(object, static_cast<unsigned int>(row), args, argc, result);
}

void introduceProperty(CorvelNativePropertyBase& object, const char* name, bool value) {
  if (name == nullptr || object.setProperty(name, value)) return;  // a row of that name serves as well
  object.state()->introduce(name, value);
}

bool readIntroduced(CorvelNativePropertyBase& object, const char* name, bool& out) { return object.getProperty(name, out); }

}  // namespace pluginhost
