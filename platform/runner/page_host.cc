// SPDX-License-Identifier: Apache-2.0
#include "platform/runner/page_host.h"

#include <glib.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <span>

#include "platform/script/callable.h"
#include "platform/script/js_text.h"

namespace runner {

namespace {

using Arguments = std::span<const JSValueRef>;
using HostFunction = JSValueRef (*)(JSGlobalContextRef context, const PageHost& host, Arguments arguments, JSValueRef* exception);

constexpr char kUserAgent[] = "Mozilla/5.0 (Linux) HbbTV/1.7.1 (+DRM; avcontrol; avc-run; " AVC_VERSION "; pc; avcontrol;)";

double numberOf(JSGlobalContextRef context, JSValueRef value) {
  const double out = JSValueToNumber(context, value, nullptr);
  return std::isfinite(out) ? out : 0;
}

// Warnings and errors go to standard error, everything else to standard output, in the order of the calls.
JSValueRef print(JSGlobalContextRef context, const PageHost& host, Arguments arguments, JSValueRef*) {
  const std::string level = script::toUtf8(context, arguments[0]);
  const std::string text = script::toUtf8(context, arguments[1]);
  const bool serious = level == "warn" || level == "error";
  std::FILE* const stream = serious ? stderr : stdout;
  if (serious || !host.quiet) {
    std::fprintf(stream, "%s%s\n", level == "warn" ? "warning: " : "", text.c_str());
    std::fflush(stream);
  }
  return JSValueMakeUndefined(context);
}

JSValueRef setTimer(JSGlobalContextRef context, const PageHost& host, Arguments arguments, JSValueRef*) {
  JSObjectRef function = script::asFunction(context, arguments[0]);
  if (function == nullptr) return JSValueMakeNumber(context, 0);
  const bool repeats = JSValueToBoolean(context, arguments[2]);
  return JSValueMakeNumber(context, host.timers->start(function, numberOf(context, arguments[1]), repeats));
}

JSValueRef clearTimer(JSGlobalContextRef context, const PageHost& host, Arguments arguments, JSValueRef*) {
  host.timers->clear(static_cast<int>(std::fmin(std::fmax(numberOf(context, arguments[0]), 0), 0x7FFFFFFF)));
  return JSValueMakeUndefined(context);
}

JSValueRef now(JSGlobalContextRef context, const PageHost&, Arguments, JSValueRef*) {
  static const gint64 start = g_get_monotonic_time();
  return JSValueMakeNumber(context, static_cast<double>(g_get_monotonic_time() - start) / 1000.0);
}

// The script ends here: the exception leaves it, and whoever runs scripts knows that it means the end.
JSValueRef exitRun(JSGlobalContextRef context, const PageHost& host, Arguments arguments, JSValueRef* exception) {
  host.exit(static_cast<int>(numberOf(context, arguments[0])) & 0xFF);
  *exception = script::makeError(context, "Error", "exit");
  return JSValueMakeUndefined(context);
}

JSValueRef readFile(JSGlobalContextRef context, const PageHost&, Arguments arguments, JSValueRef* exception) {
  std::string text;
  std::string error;
  if (readTextFile(script::toUtf8(context, arguments[0]), text, error)) return script::makeString(context, text);
  *exception = script::makeError(context, "Error", error);
  return JSValueMakeUndefined(context);
}

JSValueRef reportError(JSGlobalContextRef context, const PageHost& host, Arguments arguments, JSValueRef*) {
  host.reportError(arguments[0]);
  return JSValueMakeUndefined(context);
}

// The viewer's wish, as if from the television's own menu.
JSValueRef setParentalLimit(JSGlobalContextRef context, const PageHost& host, Arguments arguments, JSValueRef*) {
  const double age = std::fmin(std::fmax(numberOf(context, arguments[0]), -1), 1000);
  return JSValueMakeBoolean(context, host.setParentalLimit(static_cast<int>(age)));
}

JSValueRef changeSubtitleSettings(JSGlobalContextRef context, const PageHost& host, Arguments arguments, JSValueRef*) {
  const int value = static_cast<int>(std::clamp(numberOf(context, arguments[0]), -2147483648.0, 2147483647.0));
  return JSValueMakeBoolean(context, host.changeSubtitleSettings(value, script::toUtf8(context, arguments[1])));
}

JSValueRef resolveUrl(JSGlobalContextRef context, const PageHost&, Arguments arguments, JSValueRef*) {
  const std::string reference = script::toUtf8(context, arguments[0]);
  const std::string base = script::toUtf8(context, arguments[1]);
  constexpr auto kFlags = static_cast<GUriFlags>(G_URI_FLAGS_PARSE_RELAXED | G_URI_FLAGS_ENCODED);
  char* const resolved = g_uri_resolve_relative(base.empty() ? nullptr : base.c_str(), reference.c_str(), kFlags, nullptr);
  if (resolved == nullptr) return JSValueMakeNull(context);
  const JSValueRef out = script::makeString(context, resolved);
  g_free(resolved);
  return out;
}

JSValueRef argumentList(JSGlobalContextRef context, const std::vector<std::string>& arguments) {
  JSObjectRef list = JSObjectMakeArray(context, 0, nullptr, nullptr);
  unsigned int index = 0;
  for (const std::string& argument : arguments) {
    JSObjectSetPropertyAtIndex(context, list, index++, script::makeString(context, argument), nullptr);
  }
  return list;
}

}  // namespace

JSObjectRef makePageHost(JSGlobalContextRef context, const PageHost& host) {
  const struct {
    const char* name;
    HostFunction function;
    std::size_t arguments;
  } functions[] = {{"print", print, 2},
                   {"setTimer", setTimer, 3},
                   {"clearTimer", clearTimer, 1},
                   {"now", now, 0},
                   {"exit", exitRun, 1},
                   {"readFile", readFile, 1},
                   {"reportError", reportError, 1},
                   {"resolveUrl", resolveUrl, 2},
                   {"setParentalLimit", setParentalLimit, 1},
                   {"changeSubtitleSettings", changeSubtitleSettings, 2}};
  JSObjectRef api = JSObjectMake(context, nullptr, nullptr);
  for (const auto& row : functions) {
    const auto run = [context, &host, function = row.function](Arguments arguments, JSValueRef* exception) {
      return function(context, host, arguments, exception);
    };
    script::setProperty(context, api, row.name, script::makeCallable(context, row.arguments, run));
  }
  script::setProperty(context, api, "documentUrl", script::makeString(context, host.documentUrl));
  script::setProperty(context, api, "userAgent", script::makeString(context, kUserAgent));
  script::setProperty(context, api, "programArguments", argumentList(context, host.programArguments));
  return api;
}

bool readTextFile(const std::string& path, std::string& out, std::string& error) {
  char* text = nullptr;
  gsize length = 0;
  GError* failure = nullptr;
  if (g_file_get_contents(path.c_str(), &text, &length, &failure)) {
    out.assign(text, length);
    g_free(text);
    return true;
  }
  error = "cannot read the file: " + std::string(failure->message);
  g_error_free(failure);
  return false;
}

}  // namespace runner
