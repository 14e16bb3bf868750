// SPDX-License-Identifier: Apache-2.0
#include "platform/script/binding.h"

#include <utility>

#include "platform/script/js_text.h"

namespace script {

namespace {

// Identity is kept on the script side, weakly: a reference held from C++ would either keep the object for ever or outlive it.
constexpr char kIdentitySource[] = R"js((function () {
  'use strict';
  // With what a page may put in the place of the engine's functions it would get at the objects: these are taken before.
  const known = Object.defineProperties(new Map(), Object.getOwnPropertyDescriptors(Map.prototype));
  const { WeakRef } = globalThis;
  const deref = Function.prototype.call.bind(WeakRef.prototype.deref);
  const { max } = Math;
  let sweepAt = 64;
  function sweep() {
    known.forEach((weak, id) => { if (deref(weak) === undefined) known.delete(id); });
    sweepAt = max(64, known.size * 2);
  }
  return {
    known(id) { const weak = known.get(id); return weak === undefined ? undefined : deref(weak); },
    remember(id, object) { if (known.size >= sweepAt) sweep(); known.set(id, new WeakRef(object)); },
    defineProperty: Object.defineProperty, functionPrototype: Function.prototype, iterator: Symbol.iterator,
    arrayValues: Array.prototype[Symbol.iterator],
  };
})())js";

JSObjectRef member(JSContextRef context, JSObjectRef holder, const char* name) {
  return JSValueToObject(context, property(context, holder, name), nullptr);
}

// Ids are counted from 1: a double holds every one that a process can reach.
JSValueRef idValue(JSContextRef context, std::uint64_t id) { return JSValueMakeNumber(context, static_cast<double>(id)); }

}  // namespace

Tables tablesOf(const CorvelNativePropertyBase& object) {
  return {pluginhost::propertyRows(object), pluginhost::methodRows(object)};
}

Binding::Binding(JSGlobalContextRef context, std::shared_ptr<pluginhost::PluginLibrary> library)
    : m_context(context),
      m_library(std::move(library)),
      m_numbers(context),
      m_link(std::make_shared<WrapperLink>(WrapperLink{this, &m_numbers})),
      m_self(std::make_shared<Binding*>(this)),
      m_engine(
          JSValueToObject(context, JSEvaluateScript(context, JsText(kIdentitySource), nullptr, nullptr, 1, nullptr), nullptr)) {
  JSValueProtect(context, m_engine);
  m_known = member(context, m_engine, "known");
  m_remember = member(context, m_engine, "remember");
  m_intrinsics = {member(context, m_engine, "defineProperty"), member(context, m_engine, "functionPrototype"),
                  property(context, m_engine, "iterator"), member(context, m_engine, "arrayValues")};
}

Binding::~Binding() {
  destroyAll();
  *m_link = {nullptr, nullptr};
  *m_self = nullptr;
  JSValueUnprotect(m_context, m_engine);
}

JSObjectRef Binding::create() {
  std::shared_ptr<CorvelNativePluginBase> plugin = m_library->create();
  if (plugin == nullptr) return nullptr;
  const std::uint64_t id = pluginhost::objectId(*plugin);
  auto slot = std::make_shared<NativeSlot>(NativeSlot{std::move(plugin)});
  m_plugins.emplace(id, slot);
  return instantiate(id, slot);
}

CorvelNativePluginBase* Binding::plugin(std::uint64_t id) const {
  const auto found = m_plugins.find(id);
  return found == m_plugins.end() ? nullptr : CorvelNativePluginBase::cast(found->second->object.get());
}

std::vector<CorvelNativePluginBase*> Binding::plugins() const {
  std::vector<CorvelNativePluginBase*> out;
  for (const auto& [id, slot] : m_plugins) out.push_back(CorvelNativePluginBase::cast(slot->object.get()));
  return out;
}

std::string PlaneWindow::text() const {
  std::string out;
  for (const int number : {x, y, width, height}) out.append(std::to_string(number)).append("|");
  return out;
}

bool Binding::setWindow(std::uint64_t id, const PlaneWindow& window) {
  CorvelNativePluginBase* const object = plugin(id);
  if (object == nullptr) return false;
  m_windows[id] = window;
  return object->setWindowProperties(window.x, window.y, window.width, window.height);
}

std::map<unsigned long, PlaneWindow> Binding::windows() const {
  std::map<unsigned long, PlaneWindow> out;
  for (const auto& [id, window] : m_windows) out.emplace(plugin(id)->getNativePlayerHandle(), window);
  return out;
}

void Binding::destroy(std::uint64_t id) {
  const auto found = m_plugins.find(id);
  if (found == m_plugins.end()) return;
  const std::shared_ptr<NativeSlot> slot = found->second;
  m_plugins.erase(found);
  m_windows.erase(id);
  // From here on script reads undefined, also from a script call that the wait inside willBeDestroyed could never let in.
  const std::shared_ptr<CorvelNativePropertyBase> object = std::exchange(slot->object, nullptr);
  CorvelNativePluginBase::cast(object.get())->willBeDestroyed();
}

void Binding::destroyAll() {
  while (!m_plugins.empty()) destroy(m_plugins.begin()->first);
}

JSValueRef Binding::wrap(const std::shared_ptr<CorvelNativePropertyBase>& object) {
  const std::uint64_t id = pluginhost::objectId(*object);
  const JSValueRef argument = idValue(m_context, id);
  const JSValueRef known = JSObjectCallAsFunction(m_context, m_known, nullptr, 1, &argument, nullptr);
  if (known != nullptr && JSValueIsObject(m_context, known)) return known;
  return instantiate(id, std::make_shared<NativeSlot>(NativeSlot{object}));
}

JSObjectRef Binding::instantiate(std::uint64_t id, const std::shared_ptr<NativeSlot>& slot) {
  JSObjectRef object = classOf(*slot->object).instantiate(slot);
  const JSValueRef arguments[] = {idValue(m_context, id), object};
  JSObjectCallAsFunction(m_context, m_remember, nullptr, 2, arguments, nullptr);
  return object;
}

const ScriptClass& Binding::classOf(const CorvelNativePropertyBase& object) {
  std::unique_ptr<ScriptClass>& known = m_classes[pluginhost::tableId(object)];
  if (known == nullptr) known = std::make_unique<ScriptClass>(m_context, object, m_link, m_intrinsics);
  return *known;
}

}  // namespace script
