// SPDX-License-Identifier: Apache-2.0
#include "tests/unit/pluginhost/fake_plugin.h"

#include <iterator>
#include <sstream>

namespace {

FakePlugin& self(CorvelNativePropertyBase* object) {
  auto& plugin = static_cast<FakePlugin&>(*object);
  if (plugin.insideThunk) plugin.insideThunk();
  return plugin;
}

bool answerGetter(CorvelNativePropertyBase* object, _CorvelNativeVariant* result) {
  ++self(object).getterCalls;
  cvnplUtil::set(42, *result);
  return true;
}

bool failingGetter(CorvelNativePropertyBase* object, _CorvelNativeVariant* result) {
  ++self(object).getterCalls;
  cvnplUtil::set(1, *result);
  return false;
}

bool noValueGetter(CorvelNativePropertyBase*, _CorvelNativeVariant* result) {
  result->details.type = CORVEL_NO_VALUE;
  return true;
}

template <const char* Row>
bool recordingSetter(CorvelNativePropertyBase* object, const _CorvelNativeVariant* value) {
  FakePlugin& plugin = self(object);
  const bool readable = value->string.length > 0;
  plugin.setterCalls.push_back({Row, value->details.type, value->string.text == nullptr,
                                readable ? std::string(value->string.text, value->string.length) : std::string()});
  return plugin.setterResult;
}

bool integerSetter(CorvelNativePropertyBase* object, const _CorvelNativeVariant* value) {
  self(object).setterCalls.push_back({"index", value->details.type, false, std::to_string(value->integer)});
  return value->details.type == CORVEL_INTEGER;
}

bool echo(CorvelNativePropertyBase* object, const _CorvelNativeVariant* args, unsigned int argc, _CorvelNativeVariant* result) {
  self(object);
  if (argc > 0) *result = args[0];
  return true;
}

bool fail(CorvelNativePropertyBase*, const _CorvelNativeVariant*, unsigned int, _CorvelNativeVariant* result) {
  cvnplUtil::set(1, *result);
  return false;
}

bool firstSlot(CorvelNativePropertyBase*, const _CorvelNativeVariant* args, unsigned int argc, _CorvelNativeVariant* result) {
  const bool zeroed =
      args[0].details.type == 0 && args[0].integer == 0 && args[0].string.text == nullptr && args[0].string.length == 0;
  cvnplUtil::set(argc == 0 && zeroed, *result);
  return true;
}

bool nullObject(CorvelNativePropertyBase*, const _CorvelNativeVariant*, unsigned int, _CorvelNativeVariant* result) {
  cvnplUtil::set(std::shared_ptr<CorvelNativePropertyBase>(), *result);
  return true;
}

/// A scriptable object of the same library.
bool child(CorvelNativePropertyBase* object, const _CorvelNativeVariant*, unsigned int, _CorvelNativeVariant* result) {
  const std::shared_ptr<FakePlugin> made(new FakePlugin(object));  // no make_shared: its unique symbol would pin the library
  cvnplUtil::set(std::shared_ptr<CorvelNativePropertyBase>(made), *result);
  return made->install();
}

template <typename Value>
_CorvelNativeVariant initial(std::int32_t access, Value value) {
  _CorvelNativeVariant variant;
  cvnplUtil::set(value, variant);
  variant.details.access = access;
  return variant;
}

_CorvelNativeVariant initialText(std::int32_t access, const char* text) {
  _CorvelNativeVariant variant;
  cvnplUtil::set(text, variant, false);
  variant.details.access = access;
  return variant;
}

_CorvelNativeVariant of(std::int32_t type, std::int32_t access) {
  _CorvelNativeVariant variant;
  variant.details = {type, access};
  return variant;
}

_CorvelNativeVariant integerUnderDouble() {
  _CorvelNativeVariant variant = initial(CORVEL_ORDINARY, 0);
  variant.details.type = CORVEL_DOUBLE;
  return variant;
}

constexpr char kSize[] = "size";
constexpr char kLink[] = "link";

// Built by a static initialiser, as plugin libraries do it.
CorvelNativeProperty g_properties[] = {
    {"title", 0, initialText(CORVEL_ORDINARY, ""), nullptr, nullptr},
    {"count", 0, initial(CORVEL_PLUGIN_ONLY, 7), nullptr, nullptr},
    {"level", 0, initial(CORVEL_ORDINARY, 3), nullptr, nullptr},
    {"ratio", 0, integerUnderDouble(), nullptr, nullptr},
    {"flag", 0, initial(CORVEL_ORDINARY, false), nullptr, nullptr},
    {"onThing", 0, of(CORVEL_EVENT_HANDLER, CORVEL_ORDINARY), nullptr, nullptr},
    {kSize, 0, initialText(CORVEL_ATTRIBUTE, ""), nullptr, recordingSetter<kSize>},
    {kLink, 0, initialText(CORVEL_ORDINARY, ""), nullptr, recordingSetter<kLink>},
    {"answer", 0, initial(CORVEL_PLUGIN_ONLY, 1), answerGetter, nullptr},
    {"index", 0, initial(CORVEL_ORDINARY, 0), nullptr, integerSetter},
    {"label", 0, initialText(CORVEL_ORDINARY, "first label"), nullptr, nullptr},
    {"broken", 0, initial(CORVEL_PLUGIN_ONLY, 0), failingGetter, nullptr},
    {"locked", 0, initialText(CORVEL_PLUGIN_ONLY, ""), nullptr, nullptr},
    {"attribute", 0, initialText(CORVEL_ATTRIBUTE, ""), nullptr, nullptr},
    {"nothing", 0, initial(CORVEL_PLUGIN_ONLY, 0), noValueGetter, nullptr},
    {"speed", 0, initial(CORVEL_ORDINARY, 1.0), nullptr, nullptr},
};

const CorvelNativeMethod g_methods[] = {
    {"echo", echo}, {"fail", fail}, {"firstSlot", firstSlot}, {"nullObject", nullObject}, {"child", child}};

}  // namespace

bool FakePlugin::install() { return install(g_properties, std::size(g_properties), g_methods, std::size(g_methods)); }

namespace fake {

_CorvelNativeVariant undefined() { return {}; }

_CorvelNativeVariant null() { return of(CORVEL_NO_VALUE, 0); }

_CorvelNativeVariant boolean(bool value) { return initial(0, value); }

_CorvelNativeVariant integer(int value) { return initial(0, value); }

_CorvelNativeVariant number(double value) { return initial(0, value); }

_CorvelNativeVariant text(const std::string& value) {
  _CorvelNativeVariant variant;
  cvnplUtil::set(value.data(), variant, static_cast<int>(value.size()), true);
  return variant;
}

_CorvelNativeVariant object(std::shared_ptr<CorvelNativePropertyBase> value) { return initial(0, std::move(value)); }

std::string shown(const _CorvelNativeVariant& value) {
  std::ostringstream out;
  switch (value.details.type) {
    case CORVEL_UNDEFINED: return "undefined";
    case CORVEL_NO_VALUE: return "null";
    case CORVEL_BOOLEAN: return value.boolean ? "bool:1" : "bool:0";
    case CORVEL_INTEGER: return "int:" + std::to_string(value.integer);
    case CORVEL_DOUBLE: out << "double:" << value.number; return out.str();
    case CORVEL_STRING:
      return value.string.text == nullptr ? "text:(null)" : "text:" + std::string(value.string.text, value.string.length);
    default: return value.object.object ? "object" : "object:null";
  }
}

std::string read(CorvelNativePropertyBase& object, std::string_view name) {
  _CorvelNativeVariant value;
  return pluginhost::readProperty(object, name, value) ? shown(value) : "failed";
}

}  // namespace fake
