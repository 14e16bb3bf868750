// SPDX-License-Identifier: Apache-2.0
#include "tests/unit/script/script_fixture.h"

#include <iterator>

#include "platform/script/js_text.h"

extern "C" void JSSynchronousGarbageCollectForDebugging(JSContextRef context);

int TellingObject::destroyed = 0;

namespace {

std::string shown(const _CorvelNativeVariant& value) {
  const std::string type = std::to_string(value.details.type);
  switch (value.details.type) {
    case CORVEL_BOOLEAN: return type + ":" + (value.boolean ? "true" : "false");
    case CORVEL_INTEGER: return type + ":" + std::to_string(value.integer);
    case CORVEL_STRING:
      return type + ":" + std::to_string(value.string.length) + ":" + std::string(value.string.text, value.string.length);
    case CORVEL_OBJECT: return type + ":" + (value.object.object == nullptr ? "null" : "object");
    default: return type;
  }
}

bool tell(CorvelNativePropertyBase*, const _CorvelNativeVariant* args, unsigned int argc, _CorvelNativeVariant* result) {
  std::string out;
  for (unsigned int i = 0; i < argc; ++i) out += (i == 0 ? "" : "|") + shown(args[i]);
  cvnplUtil::set(out.data(), *result, static_cast<int>(out.size()), true);
  return true;
}

bool item(CorvelNativePropertyBase* self, const _CorvelNativeVariant* args, unsigned int, _CorvelNativeVariant* result) {
  const bool inside = args[0].details.type == CORVEL_INTEGER && args[0].integer < static_cast<NumberList*>(self)->length;
  if (inside) cvnplUtil::set(args[0].integer * 10, *result);
  return inside;
}

bool lengthOf(CorvelNativePropertyBase* self, _CorvelNativeVariant* result) {
  auto* const list = static_cast<NumberList*>(self);
  cvnplUtil::set(list->length, *result);
  list->length -= list->lostAtARead;
  return true;
}

bool malformed(CorvelNativePropertyBase*, _CorvelNativeVariant* result) {
  cvnplUtil::set("a\xFFz", *result, true);
  return true;
}

bool infinite(CorvelNativePropertyBase*, _CorvelNativeVariant* result) {
  cvnplUtil::set(std::numeric_limits<double>::infinity(), *result);
  return true;
}

bool nullText(CorvelNativePropertyBase*, _CorvelNativeVariant* result) {
  cvnplUtil::set(static_cast<const char*>(nullptr), *result, false);
  return true;
}

_CorvelNativeVariant integerRow(int access) {
  _CorvelNativeVariant value;
  cvnplUtil::set(0, value);
  value.details.access = access;
  return value;
}

CorvelNativeProperty g_telling[] = {{"malformed", 0, integerRow(CORVEL_PLUGIN_ONLY), malformed, nullptr},
                                    {"infinite", 0, integerRow(CORVEL_PLUGIN_ONLY), infinite, nullptr},
                                    {"nullText", 0, integerRow(CORVEL_PLUGIN_ONLY), nullText, nullptr}};
const CorvelNativeMethod g_tellingMethods[] = {{"tell", tell}};

CorvelNativeProperty g_list[] = {{"length", 0, integerRow(CORVEL_PLUGIN_ONLY), lengthOf, nullptr}};
const CorvelNativeMethod g_listMethods[] = {{"item", item}};

}  // namespace

bool TellingObject::install() { return install(g_telling, std::size(g_telling), g_tellingMethods, std::size(g_tellingMethods)); }
bool NumberList::install() { return install(g_list, std::size(g_list), g_listMethods, std::size(g_listMethods)); }

ScriptTest::ScriptTest(const char* pluginLibrary) {
  m_pump.emplace([this](const pluginhost::Event& event) {
    events.push_back(event);
    if (onEvent) onEvent(event);
  });
  std::string error;
  auto library = pluginhost::PluginLibrary::load(pluginLibrary, error);
  EXPECT_NE(library, nullptr) << error;
  m_context = JSGlobalContextCreate(nullptr);
  m_binding.emplace(m_context, library);
}

ScriptTest::~ScriptTest() { close(); }

void ScriptTest::close() {
  if (m_context == nullptr) return;
  m_binding.reset();
  JSGlobalContextRelease(m_context);
  m_context = nullptr;
  m_pump.reset();
}

std::string ScriptTest::eval(const std::string& source) {
  JSValueRef exception = nullptr;
  const JSValueRef value = JSEvaluateScript(m_context, script::JsText(source), nullptr, nullptr, 1, &exception);
  return exception != nullptr ? "threw " + script::toUtf8(m_context, exception) : script::toUtf8(m_context, value);
}

void ScriptTest::setGlobal(const char* name, JSValueRef value) {
  script::setProperty(m_context, JSContextGetGlobalObject(m_context), name, value);
}

void ScriptTest::collect() { JSSynchronousGarbageCollectForDebugging(m_context); }
