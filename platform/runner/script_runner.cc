// SPDX-License-Identifier: Apache-2.0
#include "platform/runner/script_runner.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <utility>

#include "platform/runner/snapshot.h"
#include "platform/script/callable.h"
#include "platform/script/embedded.h"
#include "platform/script/js_text.h"
#include "platform/script/native_api.h"
#include "platform/shell/subtitle_settings.h"

// Parts of the engine's C interface that it exports without a header.
extern "C" {
void JSGlobalContextSetUnhandledRejectionCallback(JSGlobalContextRef context, JSObjectRef function, JSValueRef* exception);
void JSContextGroupSetExecutionTimeLimit(JSContextGroupRef group, double seconds, bool (*shouldTerminate)(JSContextRef, void*),
                                         void* user);
void JSContextGroupClearExecutionTimeLimit(JSContextGroupRef group);
}

namespace runner {

namespace {

/// A script that does not return is looked at this often, and at the deadline. Seldom, because JavaScriptCore 2.50 now and then
/// aborts the process when it looks while a script is just returning.
constexpr double kScriptCheckSeconds = 1;
constexpr double kShortestCheckSeconds = 0.1;
constexpr guint kTickMilliseconds = 100;
constexpr int kSignalStatus = 128;

guint milliseconds(double seconds) { return static_cast<guint>(seconds * 1000); }

// As short as it can be, and with a point in every locale.
std::string secondsText(double seconds) {
  std::array<char, 32> text{};
  const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), seconds, std::chars_format::fixed);
  return error == std::errc() ? std::string(text.data(), end) : "";
}

std::string position(JSContextRef context, JSObjectRef error) {
  const auto read = [&](const char* name) {
    const JSValueRef value = script::property(context, error, name);
    return JSValueIsUndefined(context, value) ? std::string() : script::toUtf8(context, value);
  };
  const std::string file = read("sourceURL");
  const std::string line = read("line");
  if (file.empty() || line.empty()) return "";
  const std::string column = read("column");  // none in errors of syntax
  return file + ":" + line + (column.empty() ? "" : ":" + column) + ": ";
}

}  // namespace

ScriptRunner::ScriptRunner(const Options& options, const std::string& documentUrl,
                           std::shared_ptr<pluginhost::PluginLibrary> plugin, const shell::MediaLibrary& media)
    : m_options(options), m_media(media), m_context(nullptr) {
  m_pump.emplace([this](const pluginhost::Event& event) { deliver(event); });
  m_context = JSGlobalContextCreate(nullptr);
  m_binding.emplace(m_context, std::move(plugin));
  m_timers.emplace(m_context, [this](JSObjectRef function) { runFunction(function); });
  m_signals.emplace([this] { end(); });
  makePage(documentUrl);
  watchRejections();
  limitTime();
}

ScriptRunner::~ScriptRunner() {
  for (const guint source : {m_tick, m_limit, m_shot}) {
    if (source != 0) g_source_remove(source);
  }
  JSContextGroupClearExecutionTimeLimit(JSContextGetGroup(m_context));
  m_timers.reset();
  m_ended = true;  // what an object still says on its way out reaches no script
  callPage("destroyAll", {});
  JSValueUnprotect(m_context, m_page);
  m_binding.reset();
  JSGlobalContextRelease(m_context);
  m_pump.reset();
}

void ScriptRunner::makePage(const std::string& documentUrl) {
  m_host.documentUrl = documentUrl;
  m_host.programArguments = m_options.scriptArguments;
  m_host.quiet = m_options.quiet;
  m_host.timers = &*m_timers;
  m_host.exit = [this](int status) { exitWith(status); };
  m_host.setParentalLimit = [this](int age) { return m_media.setParentalLimit(age, m_options.protection.parentalCountry()); };
  m_host.reportError = [this](JSValueRef error) { reportUncaught(error, "uncaught"); };
  m_host.changeSubtitleSettings = [this](int value, const std::string& text) {
    _SubtitleSettingsParams settings;
    return shell::makeSubtitleSettings(value, text, settings) && m_media.changeSubtitleSettings(settings);
  };
  const auto compile = [this](const char* source) {
    JSValueRef exception = nullptr;
    const JSValueRef value = JSEvaluateScript(m_context, script::JsText(source), nullptr, nullptr, 1, &exception);
    if (exception != nullptr) reportUncaught(exception, "fault of the page layer:");
    return value == nullptr ? JSValueMakeUndefined(m_context) : value;
  };
  const JSValueRef arguments[] = {makePageHost(m_context, m_host), script::makeNativeApi(*m_binding),
                                  compile(script::kAvElementSource)};
  JSObjectRef make = script::asFunction(m_context, compile(script::kRunnerPageSource));
  JSValueRef exception = nullptr;
  const JSValueRef page = make == nullptr ? nullptr : JSObjectCallAsFunction(m_context, make, nullptr, 3, arguments, &exception);
  if (exception != nullptr) reportUncaught(exception, "fault of the page layer:");
  m_page = page == nullptr ? JSObjectMake(m_context, nullptr, nullptr) : JSValueToObject(m_context, page, nullptr);
  JSValueProtect(m_context, m_page);
}

void ScriptRunner::watchRejections() {
  const auto report = [this](std::span<const JSValueRef> arguments, JSValueRef*) {
    reportUncaught(arguments[1], "unhandled rejection:");
    return JSValueMakeUndefined(m_context);
  };
  JSValueRef exception = nullptr;
  JSGlobalContextSetUnhandledRejectionCallback(m_context, script::makeCallable(m_context, 2, report), &exception);
}

void ScriptRunner::limitTime() {
  if (m_options.timeoutSeconds > 0) {
    m_deadline = g_get_monotonic_time() + static_cast<gint64>(m_options.timeoutSeconds * G_USEC_PER_SEC);
    const auto expire = [](gpointer self) -> gboolean {
      static_cast<ScriptRunner*>(self)->timeOut();
      return G_SOURCE_CONTINUE;
    };
    m_limit = g_timeout_add(milliseconds(m_options.timeoutSeconds), expire, this);
  }
  watchScript();
}

/// The main loop sees neither the deadline nor a signal while a script does not return.
void ScriptRunner::watchScript() {
  double seconds = kScriptCheckSeconds;
  if (m_deadline != 0) {
    const double rest = static_cast<double>(m_deadline - g_get_monotonic_time()) / G_USEC_PER_SEC;
    seconds = std::clamp(rest, kShortestCheckSeconds, kScriptCheckSeconds);
  }
  JSContextGroupSetExecutionTimeLimit(JSContextGetGroup(m_context), seconds, shouldTerminate, this);
}

bool ScriptRunner::shouldTerminate(JSContextRef, void* self) {
  auto& runner = *static_cast<ScriptRunner*>(self);
  if (runner.m_deadline != 0 && g_get_monotonic_time() >= runner.m_deadline) runner.timeOut();
  if (Signals::received() != 0) runner.end();
  if (!runner.m_ended) runner.watchScript();  // the engine asks once for each limit that it is given
  return runner.m_ended;
}

int ScriptRunner::run(const std::vector<Script>& scripts) {
  m_snapshotDue = !m_options.snapshot.path.empty();
  if (m_snapshotDue && m_options.snapshot.seconds) {
    const auto shoot = [](gpointer self) -> gboolean {
      static_cast<ScriptRunner*>(self)->m_shot = 0;
      static_cast<ScriptRunner*>(self)->takeSnapshot();
      return G_SOURCE_REMOVE;
    };
    m_shot = g_timeout_add(milliseconds(*m_options.snapshot.seconds), shoot, this);
  }
  for (const Script& script : scripts) {
    if (!m_ended && !evaluate(script)) end();
  }
  if (!m_ended) callPage("loaded", {});
  afterScript();
  loop();
  takeSnapshot();
  return status();
}

// @return false when the script threw: what comes after it would run on half of a page.
bool ScriptRunner::evaluate(const Script& script) {
  JSValueRef exception = nullptr;
  JSEvaluateScript(m_context, script::JsText(script.text), nullptr, script::JsText(script.path), 1, &exception);
  if (exception != nullptr) reportUncaught(exception, "uncaught");
  afterScript();
  return exception == nullptr;
}

void ScriptRunner::loop() {
  while (!m_ended && !nothingLeft()) g_main_context_iteration(nullptr, TRUE);
}

bool ScriptRunner::nothingLeft() {
  if (!m_timers->empty() || !m_pump->empty()) return false;
  const JSValueRef busy = callPage("busy", {});
  return !JSValueToBoolean(m_context, busy) && m_timers->empty() && m_pump->empty();
}

void ScriptRunner::deliver(const pluginhost::Event& event) {
  if (m_ended || m_binding->plugin(event.objectId) == nullptr) return;
  const JSValueRef list = script::toScriptList(m_context, event.args, *m_binding);
  const JSValueRef id = JSValueMakeNumber(m_context, static_cast<double>(event.objectId));
  callPage("fire", {id, script::makeString(m_context, event.name), list});
  afterScript();
}

void ScriptRunner::runFunction(JSObjectRef function) {
  if (m_ended) return;
  JSValueRef exception = nullptr;
  JSObjectCallAsFunction(m_context, function, nullptr, 0, nullptr, &exception);
  if (exception != nullptr) reportUncaught(exception, "uncaught");
  afterScript();
}

JSValueRef ScriptRunner::callPage(const char* name, const std::vector<JSValueRef>& arguments) {
  JSObjectRef function = script::asFunction(m_context, script::property(m_context, m_page, name));
  if (function == nullptr) return JSValueMakeUndefined(m_context);
  JSValueRef exception = nullptr;
  const JSValueRef value = JSObjectCallAsFunction(m_context, function, nullptr, arguments.size(), arguments.data(), &exception);
  if (exception != nullptr) reportUncaught(exception, "uncaught");
  return value == nullptr ? JSValueMakeUndefined(m_context) : value;
}

// No script is on the stack here: objects that were given up can go.
void ScriptRunner::afterScript() {
  callPage("flush", {});
  keepTicking();
}

void ScriptRunner::keepTicking() {
  if (m_tick != 0 || m_binding->pluginCount() == 0) return;
  const auto tick = [](gpointer self) -> gboolean {
    auto& runner = *static_cast<ScriptRunner*>(self);
    if (!runner.m_ended) runner.callPage("tick", {});
    if (runner.m_binding->pluginCount() > 0) return G_SOURCE_CONTINUE;
    runner.m_tick = 0;
    return G_SOURCE_REMOVE;
  };
  m_tick = g_timeout_add(kTickMilliseconds, tick, this);
}

void ScriptRunner::reportUncaught(JSValueRef error, const char* what) {
  if (m_ended) return;  // an exit leaves the script as an exception, and ends what it leaves half done
  m_uncaught = true;
  JSObjectRef object = JSValueIsObject(m_context, error) ? JSValueToObject(m_context, error, nullptr) : nullptr;
  const std::string where = object == nullptr ? "" : position(m_context, object);
  std::fflush(stdout);
  std::fprintf(stderr, "avc-run: %s%s %s\n", where.c_str(), what, script::toUtf8(m_context, error).c_str());
}

void ScriptRunner::exitWith(int status) {
  if (!m_ended) m_exitStatus = status;
  end();
}

void ScriptRunner::timeOut() {
  if (m_ended) return;
  m_timedOut = true;
  std::fflush(stdout);
  std::fprintf(stderr, "avc-run: time-out: the run was not over after %s s; give a longer --timeout or call exit()\n",
               secondsText(m_options.timeoutSeconds).c_str());
  end();
}

void ScriptRunner::takeSnapshot() {
  if (!std::exchange(m_snapshotDue, false)) return;
  std::string error;
  if (writeSnapshot(m_media, m_options.snapshot.path, error)) return;
  m_snapshotFailed = true;
  std::fprintf(stderr, "avc-run: %s\n", error.c_str());
}

int ScriptRunner::status() const {
  if (m_timedOut) return kExitTimeout;
  if (m_exitStatus.value_or(0) != 0) return *m_exitStatus;
  if (m_uncaught || m_snapshotFailed) return kExitUncaught;
  if (!m_exitStatus.has_value() && Signals::received() != 0) return kSignalStatus + Signals::received();
  return 0;
}

}  // namespace runner
