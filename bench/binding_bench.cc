// SPDX-License-Identifier: Apache-2.0
// What script pays for reading a row and calling a method, beside a bare JavaScriptCore C accessor in the same engine. The media
// library is one that costs nothing; a queried row asks it.
#include <JavaScriptCore/JavaScript.h>
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "bench/quiet_media_library.h"
#include "platform/pluginhost/shell.h"
#include "platform/script/binding.h"

namespace {

struct Bare {
  double speed = 1.5;
};

JSValueRef bareGet(JSContextRef context, JSObjectRef, JSObjectRef self, size_t, const JSValueRef[], JSValueRef*) {
  const auto* const bare = static_cast<const Bare*>(JSObjectGetPrivate(self));
  return bare != nullptr ? JSValueMakeNumber(context, bare->speed) : JSValueMakeUndefined(context);
}

JSValueRef bareCall(JSContextRef context, JSObjectRef, JSObjectRef self, size_t argc, const JSValueRef argv[],
                    JSValueRef* exception) {
  auto* const bare = static_cast<Bare*>(JSObjectGetPrivate(self));
  if (bare == nullptr) return JSValueMakeUndefined(context);
  if (argc > 0) bare->speed = JSValueToNumber(context, argv[0], exception);
  return JSValueMakeBoolean(context, true);
}

JSStringRef text(const char* utf8) { return JSStringCreateWithUTF8CString(utf8); }

void setGlobal(JSContextRef context, const char* name, JSValueRef value) {
  JSStringRef key = text(name);
  JSObjectSetProperty(context, JSContextGetGlobalObject(context), key, value, kJSPropertyAttributeNone, nullptr);
  JSStringRelease(key);
}

JSValueRef evaluate(JSContextRef context, const std::string& source) {
  JSStringRef script = text(source.c_str());
  JSValueRef exception = nullptr;
  JSValueRef value = JSEvaluateScript(context, script, nullptr, nullptr, 1, &exception);
  JSStringRelease(script);
  if (exception != nullptr) {
    std::fprintf(stderr, "binding_bench: the script threw: %s\n", source.c_str());
    std::exit(1);
  }
  return value;
}

/// A context with `bare` (an object with C accessors on its prototype), `av` (a live A/V Control object) and `audio` (its
/// collection of a hundred audio components).
class Engine {
 public:
  Engine() : m_context(JSGlobalContextCreate(nullptr)), m_events([] {}) {
    std::string error;
    auto library = pluginhost::PluginLibrary::load(AVC_PLUGIN_PATH, error);
    if (library == nullptr) {
      std::fprintf(stderr, "binding_bench: %s\n", error.c_str());
      std::exit(1);
    }
    m_binding = std::make_unique<script::Binding>(m_context, library);
    setGlobal(m_context, "av", m_binding->create());
    quiet::listAudio(100);
    evaluate(m_context, "globalThis.audio = av.getComponents(1)");
    makeBare();
  }
  ~Engine() {
    m_binding->destroyAll();
    m_binding.reset();
    JSGlobalContextRelease(m_context);
    JSClassRelease(m_class);
  }

  JSObjectRef loop(const std::string& body) {
    const std::string source = "(function(n) { let sum = 0; for (let i = 0; i < n; ++i) { " + body + " } return sum; })";
    auto* const function = JSValueToObject(m_context, evaluate(m_context, source), nullptr);
    JSValueProtect(m_context, function);
    return function;
  }

  void run(JSObjectRef function, int count) {
    JSValueRef argument = JSValueMakeNumber(m_context, count);
    JSValueRef exception = nullptr;
    JSObjectCallAsFunction(m_context, function, nullptr, 1, &argument, &exception);
    if (exception != nullptr) std::exit(1);
  }

 private:
  void makeBare() {
    JSClassDefinition definition = kJSClassDefinitionEmpty;
    definition.className = "Bare";
    m_class = JSClassCreate(&definition);
    setGlobal(m_context, "bare", JSObjectMake(m_context, m_class, &m_bare));
    setGlobal(m_context, "bareGet", JSObjectMakeFunctionWithCallback(m_context, nullptr, bareGet));
    setGlobal(m_context, "bareCall", JSObjectMakeFunctionWithCallback(m_context, nullptr, bareCall));
    evaluate(m_context,
             "{ const prototype = {}; Object.defineProperty(prototype, 'speed', { get: bareGet, enumerable: true });"
             "  prototype.call = bareCall; Object.setPrototypeOf(bare, prototype); }");
  }

  Bare m_bare;
  JSClassRef m_class = nullptr;
  JSGlobalContextRef m_context;
  pluginhost::EventQueue m_events;
  std::unique_ptr<script::Binding> m_binding;
};

Engine& engine() {
  static Engine instance;
  return instance;
}

void measure(benchmark::State& state, const char* body) {
  constexpr int kBatch = 10000;
  const JSObjectRef function = engine().loop(body);
  engine().run(function, kBatch);  // let the engine compile it first
  for (auto _ : state) engine().run(function, kBatch);
  state.SetItemsProcessed(state.iterations() * kBatch);  // an item is one access
}

#define MEASURE(name, body)                                      \
  void name(benchmark::State& state) { measure(state, (body)); } \
  BENCHMARK(name)->Unit(benchmark::kMicrosecond)

MEASURE(BM_BareAccessor, "sum += bare.speed;");
MEASURE(BM_StoredRow_playState, "sum += av.playState;");
MEASURE(BM_QueriedRow_playPosition, "sum += av.playPosition;");
MEASURE(BM_QueriedRow_speed, "sum += av.speed;");
MEASURE(BM_BareMethod, "sum += bare.call(i);");
MEASURE(BM_Method_setVolume, "sum += av.setVolume(i);");
MEASURE(BM_Collection_length, "sum += audio.length;");
MEASURE(BM_Collection_item, "sum += audio.item(i % 100).pid;");
MEASURE(BM_Collection_index, "sum += audio[i % 100].pid;");

}  // namespace

BENCHMARK_MAIN();
