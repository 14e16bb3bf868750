// SPDX-License-Identifier: Apache-2.0
#include "platform/browser/automation.h"

#include <glib/gstdio.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <sstream>
#include <utility>

#include "platform/browser/messages.h"
#include "platform/browser/page_question.h"
#include "platform/browser/remote_keys.h"

namespace browser {

namespace {

constexpr double kLookSeconds = 0.03;
constexpr gint64 kSettleMicroseconds = 10 * G_USEC_PER_SEC;  // a page that moves its video all the time is never settled
// Ends when the page has drawn what it had to draw; a page that is not shown draws nothing, so there is a limit.
constexpr char kAfterFrames[] =
    "return new Promise((done) => { let frames = 3; const next = () => { frames -= 1; if (frames < 0) done(''); "
    "else requestAnimationFrame(next); }; next(); setTimeout(done, 2000, ''); });";

// A script's last value is nobody's, and the engine refuses to hand over some.
constexpr char kNoValue[] = "\n;void 0";

// What the engine says to an expression that is none, "" to one that is.
std::string wrongExpression(const std::string& text) {
  JSCContext* const context = jsc_context_new();
  JSCException* problem = nullptr;
  jsc_context_check_syntax(context, ("(" + text + "\n)").c_str(), -1, JSC_CHECK_SYNTAX_MODE_SCRIPT, nullptr, 1, &problem);
  std::string out = problem == nullptr ? "" : jsc_exception_get_message(problem);
  g_clear_object(&problem);
  g_object_unref(context);
  return out;
}

// The address that the file would have there: of errors in a script from elsewhere a page is told neither text nor place.
std::string besidePage(WebKitWebView* view, const std::string& file) {
  const char* const page = webkit_web_view_get_uri(view);
  char* const name = g_path_get_basename(file.c_str());
  char* const address = g_uri_resolve_relative(page == nullptr ? "" : page, name, G_URI_FLAGS_PARSE_RELAXED, nullptr);
  std::string out = address == nullptr ? addressOf(file) : address;
  g_free(address);
  g_free(name);
  return out;
}

void printStatus(const std::string& lines) {
  std::istringstream in(lines);
  for (std::string line; std::getline(in, line);) std::printf("status: %s\n", line.c_str());
  std::fflush(stdout);
}

}  // namespace

Automation::Automation(const std::vector<Step>& steps, WebKitWebView* view, TvWindow& window,
                       std::function<void(const std::string&)> failed, std::function<void()> done)
    : m_steps(steps),
      m_view(view),
      m_window(window),
      m_failed(std::move(failed)),
      m_done(std::move(done)),
      m_cancel(g_cancellable_new()) {}

Automation::~Automation() {
  if (m_timer != 0) g_source_remove(m_timer);
  g_cancellable_cancel(m_cancel);
  g_object_unref(m_cancel);
}

void Automation::loaded() {
  if (std::exchange(m_started, true)) return;
  m_loadedAt = g_get_monotonic_time();
  if (m_steps.empty()) return;
  run(m_steps.front());
}

std::string Automation::wrongStep() const {
  for (const Step& step : m_steps) {
    if (step.kind == Step::Kind::script && g_access(step.text.c_str(), R_OK) != 0) {
      return "--script needs a file that can be read, not \"" + step.text + "\": " + g_strerror(errno);
    }
    const std::string problem = step.kind == Step::Kind::wait ? wrongExpression(step.text) : "";
    if (!problem.empty()) return "--wait needs an expression of JavaScript, not \"" + step.text + "\": " + problem;
  }
  return "";
}

std::string Automation::place() const {
  static const char* const kNames[] = {"--script", "--keys", "--wait", "--screenshot", "--status"};
  if (!m_started) return "before the page was loaded";
  const Step& step = m_steps[m_at];
  std::string out = std::string("in step ") + std::to_string(m_at + 1) + ", \"" + kNames[static_cast<int>(step.kind)];
  for (std::size_t i = 0; i < step.keys.size(); ++i) out.append(i == 0 ? " " : ",").append(step.keys[i]);
  return out + (step.text.empty() ? "" : " " + step.text) + "\"";
}

void Automation::next() {
  m_at += 1;
  if (m_at < m_steps.size()) {
    run(m_steps[m_at]);
  } else {
    m_done();
  }
}

void Automation::run(const Step& step) {
  switch (step.kind) {
    case Step::Kind::script: return runScript(step.text);
    case Step::Kind::keys: return pressKeys(step.keys, 0);
    case Step::Kind::wait: return wait(step.text);
    case Step::Kind::screenshot: return shoot(step);
    case Step::Kind::status: return tellStatus(false);
  }
}

void Automation::runScript(const std::string& file) {
  char* text = nullptr;
  gsize length = 0;
  GError* problem = nullptr;
  if (!g_file_get_contents(file.c_str(), &text, &length, &problem)) {
    m_failed(problem->message);
    g_error_free(problem);
    return next();
  }
  if (!g_utf8_validate_len(text, length, nullptr)) {
    m_failed(file + ": is no text in UTF-8; save it as one");
    g_free(text);
    return next();
  }
  const auto finish = [](GObject* view, GAsyncResult* result, gpointer self) {
    GError* error = nullptr;
    JSCValue* value = webkit_web_view_evaluate_javascript_finish(WEBKIT_WEB_VIEW(view), result, &error);
    if (value != nullptr) g_object_unref(value);
    if (!g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED)) static_cast<Automation*>(self)->scriptRun(error);
    g_clear_error(&error);
  };
  webkit_web_view_evaluate_javascript(m_view, (text + std::string(kNoValue)).c_str(), -1, nullptr, besidePage(m_view, file).c_str(),
                                      m_cancel, finish, this);
  g_free(text);
}

void Automation::scriptRun(const GError* error) {
  if (error != nullptr) m_failed(m_steps[m_at].text + ": " + error->message);
  next();
}

void Automation::pressKeys(const std::vector<std::string>& keys, std::size_t at) {
  if (at == keys.size()) return next();
  m_window.press(sentKeyOf(keys[at]));
  afterFrames([this, &keys, at] { pressKeys(keys, at + 1); });
}

void Automation::wait(const std::string& expression) {
  const auto finish = [](GObject* view, GAsyncResult* result, gpointer self) {
    GError* error = nullptr;
    JSCValue* value = webkit_web_view_evaluate_javascript_finish(WEBKIT_WEB_VIEW(view), result, &error);
    const bool holds = value != nullptr && jsc_value_to_boolean(value);
    if (value != nullptr) g_object_unref(value);
    if (!g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED)) static_cast<Automation*>(self)->waited(holds);
    g_clear_error(&error);
  };
  // Caught here, or the engine would tell the page of it as an error of its own.
  std::string source = "(() => { try { return (";
  source.append(expression).append("\n) ? true : false; } catch { return false; } })()");
  webkit_web_view_evaluate_javascript(m_view, source.c_str(), -1, nullptr, "avc-browser:wait", m_cancel, finish, this);
}

// A page that is just being replaced gives no answer, and one that throws is not ready: not true yet.
void Automation::waited(bool holds) {
  if (holds) return next();
  later(kLookSeconds, [this] { wait(m_steps[m_at].text); });
}

// The first look has the media library look; what it saw then is there with the second one.
void Automation::tellStatus(bool lookedAlready) {
  askPage(m_view, kMessageStatus, kStatusType, m_cancel, [this, lookedAlready](GVariant* answer) {
    if (!lookedAlready) return later(kLookSeconds, [this] { tellStatus(true); });
    const char* lines = "the page does not answer";
    if (answer != nullptr) g_variant_get(answer, "(&s)", &lines);
    printStatus(lines);
    next();
  });
}

void Automation::shoot(const Step& step) {
  const double since = static_cast<double>(g_get_monotonic_time() - m_loadedAt) / G_USEC_PER_SEC;
  if (since < step.seconds) return later(step.seconds - since, [this, &step] { shoot(step); });
  m_settleUntil = g_get_monotonic_time() + kSettleMicroseconds;
  const auto draw = [this, &step] { m_window.whenDrawn([this, &step] { later(0, [this, &step] { shootNow(step.text); }); }); };
  // The video may have settled in another place, which the page has yet to show.
  const auto drawSettled = [this, draw] { afterFrames(draw); };
  afterFrames([this, drawSettled] { awaitSettled(drawSettled); });
}

// What a page does to its layout reaches the video some threads later.
void Automation::awaitSettled(std::function<void()> action) {
  askPage(m_view, kMessageSettled, kSettledType, m_cancel, [this, action = std::move(action)](GVariant* answer) {
    gboolean isSettled = TRUE;  // nobody there to move anything
    if (answer != nullptr) g_variant_get(answer, kSettledType, &isSettled);
    settled(isSettled != FALSE, action);
  });
}

void Automation::settled(bool isSettled, std::function<void()> action) {
  if (isSettled || g_get_monotonic_time() > m_settleUntil) return action();
  later(kLookSeconds, [this, action = std::move(action)] { awaitSettled(action); });
}

void Automation::shootNow(const std::string& file) {
  std::string error;
  if (!m_window.screenshot(file, error)) m_failed(error);
  next();
}

void Automation::later(double seconds, std::function<void()> action) {
  m_later = std::move(action);
  const auto fire = [](gpointer self) -> gboolean {
    auto& automation = *static_cast<Automation*>(self);
    automation.m_timer = 0;
    const auto action = std::exchange(automation.m_later, nullptr);
    action();
    return G_SOURCE_REMOVE;
  };
  m_timer = g_timeout_add(static_cast<guint>(seconds * 1000), fire, this);
}

// In a world of its own, where a page's changes to what the engine offers have no effect.
void Automation::afterFrames(std::function<void()> action) {
  using Action = std::function<void()>;
  const auto finish = [](GObject* view, GAsyncResult* result, gpointer data) {
    const std::unique_ptr<Action> then(static_cast<Action*>(data));
    GError* error = nullptr;
    JSCValue* value = webkit_web_view_call_async_javascript_function_finish(WEBKIT_WEB_VIEW(view), result, &error);
    if (value != nullptr) g_object_unref(value);
    if (!g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED)) (*then)();
    g_clear_error(&error);
  };
  webkit_web_view_call_async_javascript_function(m_view, kAfterFrames, -1, nullptr, "avc-browser", "avc-browser:frames", m_cancel,
                                                 finish, new Action(std::move(action)));
}

}  // namespace browser
