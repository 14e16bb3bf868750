// SPDX-License-Identifier: Apache-2.0
#include "platform/browser/frame_script.h"

#include <cmath>
#include <utility>

#include "platform/browser/page/embedded.h"
#include "platform/script/callable.h"
#include "platform/script/embedded.h"
#include "platform/script/js_text.h"
#include "platform/script/native_api.h"

namespace browser {

FrameScript::FrameScript(FrameOwner& owner, JSGlobalContextRef context, std::shared_ptr<pluginhost::PluginLibrary> plugin,
                         const script::Tables& tables, const std::string& settings)
    : m_owner(owner),
      m_context(JSGlobalContextRetain(context)),
      m_binding(std::make_unique<script::Binding>(m_context, std::move(plugin))) {
  m_binding->setKnownTables(&tables);
  JSObjectRef make = script::asFunction(m_context, compile("avc-browser:page", script::kBrowserPageSource));
  const JSValueRef arguments[] = {makeHost(settings), script::makeNativeApi(*m_binding),
                                  compile("avc-browser:element", script::kAvElementSource), makeParts()};
  JSValueRef exception = nullptr;
  const JSValueRef page = make == nullptr ? nullptr : JSObjectCallAsFunction(m_context, make, nullptr, 4, arguments, &exception);
  if (exception != nullptr) reportFault(exception);
  m_page = page == nullptr ? JSObjectMake(m_context, nullptr, nullptr) : JSValueToObject(m_context, page, nullptr);
  JSValueProtect(m_context, m_page);
}

FrameScript::~FrameScript() {
  m_silent = true;
  *m_self = nullptr;
  JSValueUnprotect(m_context, m_page);
  m_binding.reset();
  JSGlobalContextRelease(m_context);
}

JSObjectRef FrameScript::makeHost(const std::string& settings) {
  JSObjectRef host = JSObjectMake(m_context, nullptr, nullptr);
  script::setProperty(m_context, host, "settings", script::makeString(m_context, settings));
  addHostFunction(host, "print", 4, &FrameScript::hostPrint);
  addHostFunction(host, "uncaught", 3, &FrameScript::hostUncaught);
  addHostFunction(host, "wake", 0, &FrameScript::hostWake);
  addHostFunction(host, "ended", 0, &FrameScript::hostEnded);
  addHostFunction(host, "frameOffset", 1, &FrameScript::hostFrameOffset);
  addHostFunction(host, "othersHaveObjects", 0, &FrameScript::hostOthersHaveObjects);
  addHostFunction(host, "placeOthers", 0, &FrameScript::hostPlaceOthers);
  addHostFunction(host, "subtitlesEnabled", 0, &FrameScript::hostSubtitlesEnabled);
  addHostFunction(host, "stackAll", 0, &FrameScript::hostStackAll);
  return host;
}

// A window that has ended may still run script: its objects are empty by then, and so are these functions.
void FrameScript::addHostFunction(JSObjectRef host, const char* name, std::size_t arguments, HostFunction function) {
  const auto run = [self = m_self, context = m_context, function](Arguments values, JSValueRef*) {
    return *self == nullptr ? JSValueMakeUndefined(context) : ((*self)->*function)(values);
  };
  script::setProperty(m_context, host, name, script::makeCallable(m_context, arguments, run));
}

JSObjectRef FrameScript::makeParts() {
  JSObjectRef parts = JSObjectMake(m_context, nullptr, nullptr);
  script::setProperty(m_context, parts, "inspect", compile("avc-browser:inspect", script::kInspectSource));
  script::setProperty(m_context, parts, "screen", compile("avc-browser:screen", script::kScreenSource));
  script::setProperty(m_context, parts, "keys", compile("avc-browser:keys", script::kRemoteKeysSource));
  script::setProperty(m_context, parts, "bodyKeys", compile("avc-browser:body-keys", script::kBodyKeysSource));
  script::setProperty(m_context, parts, "keyPress", compile("avc-browser:key-press", script::kKeyPressSource));
  script::setProperty(m_context, parts, "environment", compile("avc-browser:environment", script::kEnvironmentSource));
  script::setProperty(m_context, parts, "stacking", compile("avc-browser:stacking", script::kStackingSource));
  script::setProperty(m_context, parts, "elements", compile("avc-browser:elements", script::kElementsSource));
  script::setProperty(m_context, parts, "results", compile("avc-browser:results", script::kResultsSource));
  script::setProperty(m_context, parts, "boxes", compile("avc-browser:boxes", script::kBoxesSource));
  script::setProperty(m_context, parts, "cover", compile("avc-browser:cover", script::kCoverSource));
  script::setProperty(m_context, parts, "videoHole", compile("avc-browser:video-hole", script::kVideoHoleSource));
  script::setProperty(m_context, parts, "namedEntities", compile("avc-browser:named-entities", script::kNamedEntitiesSource));
  script::setProperty(m_context, parts, "tvMedium", compile("avc-browser:tv-medium", script::kTvMediumSource));
  script::setProperty(m_context, parts, "applicationTable",
                      compile("avc-browser:application-table", script::kApplicationTableSource));
  script::setProperty(m_context, parts, "controls", compile("avc-browser:controls", script::kControlsSource));
  script::setProperty(m_context, parts, "listeners", compile("avc-browser:listeners", script::kListenersSource));
  script::setProperty(m_context, parts, "directedFocus", compile("avc-browser:directed-focus", script::kDirectedFocusSource));
  return parts;
}

JSValueRef FrameScript::compile(const char* name, const char* source) {
  JSValueRef exception = nullptr;
  const JSValueRef value = JSEvaluateScript(m_context, script::JsText(source), nullptr, script::JsText(name), 1, &exception);
  if (exception != nullptr) reportFault(exception);
  return value == nullptr ? undefined() : value;
}

JSValueRef FrameScript::call(const char* name, const std::vector<JSValueRef>& arguments) {
  JSObjectRef function = script::asFunction(m_context, script::property(m_context, m_page, name));
  if (function == nullptr) return undefined();
  JSValueRef exception = nullptr;
  const JSValueRef value = JSObjectCallAsFunction(m_context, function, nullptr, arguments.size(), arguments.data(), &exception);
  if (exception != nullptr) reportFault(exception);
  return value == nullptr ? undefined() : value;
}

// Only a page that replaces what the layer stands on can bring it to throw: that is the page's error.
void FrameScript::reportFault(JSValueRef exception) {
  std::string where = "avc-browser:page";
  unsigned line = 0;
  if (JSValueIsObject(m_context, exception)) {
    JSObjectRef object = JSValueToObject(m_context, exception, nullptr);
    where = text(script::property(m_context, object, "sourceURL"));
    line = number(script::property(m_context, object, "line"));
  }
  m_owner.uncaught(script::toUtf8(m_context, exception), where, line);
}

std::string FrameScript::text(JSValueRef value) const { return script::toUtf8(m_context, value); }

unsigned FrameScript::number(JSValueRef value) const {
  const double out = JSValueToNumber(m_context, value, nullptr);
  return std::isfinite(out) && out > 0 && out < 1e9 ? static_cast<unsigned>(out) : 0;
}

void FrameScript::deliver(const pluginhost::Event& event) {
  if (m_silent || !owns(event.objectId)) return;
  const JSValueRef list = script::toScriptList(m_context, event.args, *m_binding);
  const JSValueRef id = JSValueMakeNumber(m_context, static_cast<double>(event.objectId));
  call("fire", {id, script::makeString(m_context, event.name), list});
  flush();
}

void FrameScript::flush() {
  if (!m_silent) call("flush", {});
}

void FrameScript::tick() {
  if (!hasObjects()) return;
  placeObjects();
  call("tick", {});
}

void FrameScript::placeObjects() { call("placeWindows", {}); }

JSValueRef FrameScript::offsetOf(JSObjectRef child) { return m_silent ? JSValueMakeNull(m_context) : call("offsetOf", {child}); }

// The page hands over a chain: {value, next}, the value an object's id or the window of a frame.
void FrameScript::appendPlayers(std::vector<unsigned long>& out) {
  JSValueRef item = m_silent ? undefined() : call("stack", {});
  while (JSValueIsObject(m_context, item)) {
    JSObjectRef entry = JSValueToObject(m_context, item, nullptr);
    const JSValueRef value = script::property(m_context, entry, "value");
    if (JSValueIsObject(m_context, value)) {
      FrameScript* const child = m_owner.frameOf(JSValueToObject(m_context, value, nullptr));
      if (child != nullptr) child->appendPlayers(out);
    } else {
      appendPlayer(static_cast<std::uint64_t>(JSValueToNumber(m_context, value, nullptr)), out);
    }
    item = script::property(m_context, entry, "next");
  }
}

void FrameScript::appendPlayer(std::uint64_t objectId, std::vector<unsigned long>& out) const {
  CorvelNativePluginBase* const object = m_binding->plugin(objectId);
  const unsigned long player = object == nullptr ? 0 : object->getNativePlayerHandle();
  if (player != 0) out.push_back(player);
}

JSValueRef FrameScript::hostPrint(Arguments arguments) {
  m_owner.print(text(arguments[0]), text(arguments[1]), text(arguments[2]), number(arguments[3]));
  return undefined();
}

JSValueRef FrameScript::hostUncaught(Arguments arguments) {
  m_owner.uncaught(text(arguments[0]), text(arguments[1]), number(arguments[2]));
  return undefined();
}

JSValueRef FrameScript::hostWake(Arguments) {
  if (!m_silent) m_owner.wake();
  return undefined();
}

JSValueRef FrameScript::hostEnded(Arguments) {
  if (!m_silent) m_owner.ended(*this);
  return undefined();
}

JSValueRef FrameScript::hostOthersHaveObjects(Arguments) {
  return JSValueMakeBoolean(m_context, !m_silent && m_owner.othersHaveObjects(*this));
}

JSValueRef FrameScript::hostPlaceOthers(Arguments) {
  if (!m_silent) m_owner.placeOthers(*this);
  return undefined();
}

JSValueRef FrameScript::hostSubtitlesEnabled(Arguments) { return JSValueMakeBoolean(m_context, m_owner.subtitlesEnabled()); }

JSValueRef FrameScript::hostStackAll(Arguments) {
  if (!m_silent) m_owner.stackObjects();
  return undefined();
}

JSValueRef FrameScript::hostFrameOffset(Arguments arguments) {
  FrameScript* parent = nullptr;
  if (!m_silent && JSValueIsObject(m_context, arguments[0])) {
    parent = m_owner.frameOf(JSValueToObject(m_context, arguments[0], nullptr));
  }
  return parent == nullptr ? JSValueMakeNull(m_context) : parent->offsetOf(window());
}

}  // namespace browser
