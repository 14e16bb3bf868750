// SPDX-License-Identifier: Apache-2.0
#include "platform/browser/browser.h"

#include <glib-unix.h>

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/browser/console_text.h"
#include "platform/browser/language_tags.h"
#include "platform/browser/messages.h"
#include "platform/browser/no_desktop.h"
#include "platform/browser/page/embedded.h"
#include "platform/browser/page_question.h"
#include "platform/browser/page_view.h"
#include "platform/browser/remote_keys.h"
#include "platform/shell/library_paths.h"

namespace browser {

namespace {

constexpr guint kRestMilliseconds = 4000;  // a page that does not come to rest by then is ended
constexpr guint kStatusMilliseconds = 250;
constexpr guint kNoticeMilliseconds = 2500;
constexpr int kSignalStatus = 128;
constexpr char kTelevisionXhtml[] = "application/vnd.hbbtv.xhtml+xml";
constexpr char kApplicationTable[] = "application/vnd.dvb.ait+xml";  // the page side goes on to what it names
constexpr char kHbbTv[] = " HbbTV/1.7.1 (+DRM;AVControl;avc-browser;" AVC_VERSION ";PC;avcontrol;)";

// Where the extension is, in a folder of its own: WebKit loads every library of the folder.
std::string extensionFolder() { return (std::filesystem::path(shell::defaultPluginPath()).parent_path() / "avc-browser").string(); }

std::string userAgent(const Options& options) {
  if (!options.preferences.userAgent.empty()) return options.preferences.userAgent;
  WebKitSettings* const settings = webkit_settings_new();
  const std::string own = webkit_settings_get_user_agent(settings);
  g_object_unref(settings);
  return own + kHbbTv;
}

WebKitSettings* makeSettings(const Options& options) {
  WebKitSettings* const settings = webkit_settings_new();
  webkit_settings_set_user_agent(settings, userAgent(options).c_str());
  // A page in the back/forward cache would keep its players without any word of it.
  webkit_settings_set_enable_page_cache(settings, FALSE);
  webkit_settings_set_hardware_acceleration_policy(settings, WEBKIT_HARDWARE_ACCELERATION_POLICY_ALWAYS);
  webkit_settings_set_enable_media(settings, FALSE);
  webkit_settings_set_enable_spatial_navigation(settings, TRUE);  // a remote control has arrows and no Tab
  webkit_settings_set_javascript_can_access_clipboard(settings, FALSE);
  webkit_settings_set_javascript_can_open_windows_automatically(settings, FALSE);
  return settings;
}

// The television's language is the viewer's, whatever language the desktop of its developer has. An engine without any would take
// the desktop's, which may be "C".
void setLanguages(WebKitWebContext* context, const Preferences& preferences) {
  std::vector<std::string> tags = languageTags(preferences.uiLanguages);
  if (tags.empty()) tags.emplace_back("en");
  std::vector<const char*> texts;
  for (const std::string& tag : tags) texts.push_back(tag.c_str());
  texts.push_back(nullptr);
  webkit_web_context_set_preferred_languages(context, texts.data());
}

WebKitWebsiteDataManager* makeData(const Options& options) {
  if (options.keepNothing) return webkit_website_data_manager_new_ephemeral();
  const std::string data = std::string(g_get_user_data_dir()) + "/avcontrol/browser";
  const std::string cache = std::string(g_get_user_cache_dir()) + "/avcontrol/browser";
  return webkit_website_data_manager_new("base-data-directory", data.c_str(), "base-cache-directory", cache.c_str(), nullptr);
}

std::string place(const char* source, unsigned line) {
  std::string out;
  if (source == nullptr || *source == '\0') return out;
  out.append(" (").append(source);
  if (line != 0) out.append(":").append(std::to_string(line));
  return out.append(")");
}

}  // namespace

Browser::Browser(const Options& options, std::unique_ptr<Film> film)
    : m_options(options),
      m_film(std::move(film)),
      m_plane([this] { m_window->redraw(); }),
      m_subtitles(options.subtitleSettings),
      m_loop(g_main_loop_new(nullptr, FALSE)),
      m_cancel(g_cancellable_new()) {
  makeContext();
  makeView();
  m_window = std::make_unique<TvWindow>(m_view, m_plane,
                                        TvWindow::Handlers{[this] { end(0); },
                                                           [this](guint pcKey, GdkModifierType modifiers, bool held) {
                                                             return held ? m_optionList->isShown() : key(pcKey, modifiers);
                                                           },
                                                           [this](cairo_t* cairo, int width, int height) {
                                                             m_optionList->paint(cairo, width, height);
                                                             m_overlay.paint(cairo, width, height);
                                                           }});
  m_optionList = std::make_unique<OptionList>(m_view, [this] { m_window->redraw(); });
  m_automation = std::make_unique<Automation>(
      options.steps, m_view, *m_window,
      [this](const std::string& problem) {
        if (m_ending == Ending::none) fail(problem, kExitFailed);  // or it is the end that has stopped the step
      },
      [this] { stepsDone(); });
}

Browser::~Browser() {
  g_cancellable_cancel(m_cancel);
  for (const guint source : {m_limit, m_patience, m_statusTimer, m_noticeTimer}) {
    if (source != 0) g_source_remove(source);
  }
  g_signal_handlers_disconnect_by_data(m_view, this);
  g_signal_handlers_disconnect_by_data(m_context, this);
  m_automation.reset();
  m_optionList.reset();
  m_plane.close();
  m_window.reset();
  g_object_unref(m_view);
  g_object_unref(m_context);
  g_object_unref(m_cancel);
  g_main_loop_unref(m_loop);
}

void Browser::makeContext() {
  WebKitWebsiteDataManager* const data = makeData(m_options);
  m_context = webkit_web_context_new_with_website_data_manager(data);
  g_object_unref(data);
  setLanguages(m_context, m_options.preferences);
  webkit_web_context_set_cache_model(m_context, WEBKIT_CACHE_MODEL_DOCUMENT_VIEWER);
  if (m_options.sandbox) {
    // Without this the extension would be left out in silence.
    const std::string libraries = std::filesystem::path(extensionFolder()).parent_path().string();
    webkit_web_context_add_path_to_sandbox(m_context, libraries.c_str(), TRUE);
    webkit_web_context_set_sandbox_enabled(m_context, TRUE);
  }
  WebKitCookieManager* const cookies = webkit_web_context_get_cookie_manager(m_context);
  // Applications have parts of other hosts, a consent to tracking above all, that know the viewer by a cookie.
  webkit_cookie_manager_set_accept_policy(cookies, WEBKIT_COOKIE_POLICY_ACCEPT_ALWAYS);
  if (!m_options.keepNothing) {
    const std::string file = std::string(g_get_user_data_dir()) + "/avcontrol/browser/cookies";
    webkit_cookie_manager_set_persistent_storage(cookies, file.c_str(), WEBKIT_COOKIE_PERSISTENT_STORAGE_SQLITE);
  }
  g_signal_connect(m_context, "initialize-web-extensions", G_CALLBACK(onInitializeExtensions), this);
}

void Browser::makeView() {
  WebKitUserContentManager* const content = webkit_user_content_manager_new();
  WebKitUserStyleSheet* const sheet = webkit_user_style_sheet_new(script::kTelevisionStyle, WEBKIT_USER_CONTENT_INJECT_ALL_FRAMES,
                                                                  WEBKIT_USER_STYLE_LEVEL_USER, nullptr, nullptr);
  webkit_user_content_manager_add_style_sheet(content, sheet);
  webkit_user_style_sheet_unref(sheet);
  WebKitSettings* const settings = makeSettings(m_options);
  m_view = WEBKIT_WEB_VIEW(g_object_ref_sink(
      g_object_new(pageViewType(), "web-context", m_context, "settings", settings, "user-content-manager", content, nullptr)));
  g_object_unref(settings);
  g_object_unref(content);
  g_signal_connect(m_view, "user-message-received", G_CALLBACK(onMessage), this);
  g_signal_connect(m_view, "decide-policy", G_CALLBACK(onDecidePolicy), this);
  g_signal_connect(m_view, "load-changed", G_CALLBACK(onLoadChanged), this);
  g_signal_connect(m_view, "load-failed", G_CALLBACK(onLoadFailed), this);
  g_signal_connect(m_view, "web-process-terminated", G_CALLBACK(onTerminated), this);
  g_signal_connect(m_view, "notify::estimated-load-progress", G_CALLBACK(onProgress), this);
  g_signal_connect(m_view, "notify::title", G_CALLBACK(onTitle), this);
  keepToTheTelevision(m_view, m_context);
  // What destroyApplication does. A television has no window that a page could close.
  g_signal_connect(m_view, "close",
                   G_CALLBACK(+[](WebKitWebView* view, gpointer) { webkit_web_view_load_uri(view, "about:blank"); }), nullptr);
  // A page may not keep the user from leaving it, nor put up windows of its own; what it would have said in them is a console line.
  g_signal_connect(m_view, "script-dialog", G_CALLBACK(+[](WebKitWebView*, WebKitScriptDialog* dialog, gpointer) -> gboolean {
                     const auto type = webkit_script_dialog_get_dialog_type(dialog);
                     if (type != WEBKIT_SCRIPT_DIALOG_BEFORE_UNLOAD_CONFIRM) {
                       printConsoleLine("alert", webkit_script_dialog_get_message(dialog));
                     }
                     if (type == WEBKIT_SCRIPT_DIALOG_CONFIRM || type == WEBKIT_SCRIPT_DIALOG_BEFORE_UNLOAD_CONFIRM) {
                       webkit_script_dialog_confirm_set_confirmed(dialog, TRUE);
                     }
                     return TRUE;
                   }),
                   nullptr);
}

// Runs for each process that WebKit starts for the page: the second one does not write over the trace of the first.
void Browser::onInitializeExtensions(WebKitWebContext* context, gpointer self) {
  auto& browser = *static_cast<Browser*>(self);
  const Options& options = browser.m_options;
  const auto absolute = [](const std::string& path) { return path.empty() ? path : std::filesystem::absolute(path).string(); };
  const std::string plugin = options.plugin.empty() ? shell::defaultPluginPath() : absolute(options.plugin);
  const std::string media = options.mediaLibrary.empty() ? shell::defaultMediaLibraryPath() : absolute(options.mediaLibrary);
  const std::string trace = std::exchange(browser.m_traceUsed, true) ? "" : absolute(options.traceFile);
  GVariantBuilder start;
  g_variant_builder_init(&start, G_VARIANT_TYPE(kStartType));
  const auto add = [&](const char* name, const std::string& text) { g_variant_builder_add(&start, "{ss}", name, text.c_str()); };
  add(kStartMediaLibrary, media);
  add(kStartPlugin, plugin);
  add(kStartTrace, trace);
  add(kStartUserAgent, userAgent(options));
  add(kStartAudioLanguages, options.preferences.audioLanguages);
  add(kStartSubtitleLanguages, options.preferences.subtitleLanguages);
  add(kStartUiLanguages, options.preferences.uiLanguages);
  add(kStartCountry, options.preferences.country);
  add(kStartSubtitleSettings, browser.m_subtitles.settings());
  add(kStartProtection, options.protection.packed());
  webkit_web_context_set_web_extensions_directory(context, extensionFolder().c_str());
  webkit_web_context_set_web_extensions_initialization_user_data(context, g_variant_builder_end(&start));
}

gboolean Browser::onMessage(WebKitWebView*, WebKitUserMessage* message, gpointer self) {
  auto& browser = *static_cast<Browser*>(self);
  const std::string name = webkit_user_message_get_name(message);
  GVariant* const parameters = webkit_user_message_get_parameters(message);
  const auto is = [&](const char* wanted, const char* type) {
    return name == wanted && parameters != nullptr && g_variant_is_of_type(parameters, G_VARIANT_TYPE(type));
  };
  if (is(kMessagePlane, kPlaneType)) browser.takePlane(message);
  if (is(kMessageConsole, kConsoleType)) browser.printConsole(parameters);
  if (is(kMessageUncaught, kUncaughtType)) browser.printUncaught(parameters);
  if (is(kMessageFailed, kFailedType)) {
    const char* problem = nullptr;
    g_variant_get(parameters, "(&s)", &problem);
    browser.fail(problem, kExitUsage);
    browser.end(kExitUsage);
  }
  return TRUE;
}

void Browser::takePlane(WebKitUserMessage* message) {
  unsigned bytes = 0;
  g_variant_get(webkit_user_message_get_parameters(message), kPlaneType, &bytes);
  if (!m_plane.open(webkit_user_message_get_fd_list(message), bytes)) fail("the video plane cannot be shown", kExitFailed);
}

void Browser::printConsole(GVariant* parameters) {
  const char* level = nullptr;
  const char* text = nullptr;
  const char* source = nullptr;
  unsigned line = 0;
  g_variant_get(parameters, "(&s&s&su)", &level, &text, &source, &line);
  printConsoleLine(level, text + place(source, line));
}

// Of a page that is a file the engine takes the page's own scripts for those of somebody else.
const char* Browser::adviceOn(const std::string& error) const {
  const char* const page = webkit_web_view_get_uri(m_view);
  const bool isMuted = error == "Script error." && page != nullptr && g_str_has_prefix(page, "file:") != FALSE;
  return isMuted
             ? " (of a page from a file the engine tells no more; serve it over HTTP, for example with \"python3 -m http.server\")"
             : "";
}

void Browser::printUncaught(GVariant* parameters) {
  const char* text = nullptr;
  const char* source = nullptr;
  unsigned line = 0;
  g_variant_get(parameters, "(&s&su)", &text, &source, &line);
  std::printf("uncaught: %s%s\n", consoleText(text + place(source, line)).c_str(), adviceOn(text));
  std::fflush(stdout);
  m_failed = true;
}

// As its own scripts' errors are: it is the page that names the frame.
void Browser::printNotLoaded(const std::string& address, const std::string& why) {
  printConsoleLine("error", "cannot be loaded: " + address + ": " + why);
}

std::string Browser::whyNotShown(WebKitResponsePolicyDecision* answer) {
  constexpr guint kFirstError = 400;
  WebKitURIResponse* const response = webkit_response_policy_decision_get_response(answer);
  const char* const address = webkit_uri_response_get_uri(response);
  const char* const type = webkit_uri_response_get_mime_type(response);
  const std::string mime = type == nullptr ? "" : type;
  const guint status = webkit_uri_response_get_status_code(response);
  const bool isFrame = webkit_response_policy_decision_is_main_frame_main_resource(answer) == FALSE;
  const bool isMedia = mime.starts_with("video/") || mime.starts_with("audio/");  // the engine has pages of its own for these
  const bool isPage = g_ascii_strcasecmp(mime.c_str(), kTelevisionXhtml) == 0 ||
                      (!isFrame && g_ascii_strcasecmp(mime.c_str(), kApplicationTable) == 0) ||
                      (webkit_response_policy_decision_is_mime_type_supported(answer) != FALSE && !isMedia);
  std::string problem = status < kFirstError ? "" : "the server answers with status " + std::to_string(status);
  if (problem.empty() && !isPage) problem = mime + " is no type of a page";
  if (!problem.empty()) isFrame ? printNotLoaded(address, problem) : fail(std::string(address) + ": " + problem, kExitFailed);
  return isPage ? "" : problem;
}

// The first page is the user's to name; what is wrong with that is told when it fails.
gboolean Browser::refuseToLeave(WebKitPolicyDecision* decision, const char* address) {
  if (!m_hasPage || canBeGoneTo(address)) return FALSE;
  printNotLoaded(address, "there is no program for such an address here");
  webkit_policy_decision_ignore(decision);
  return TRUE;
}

// WebKit shows the television's type as XML when it is asked to; the page side makes HTML of what scripts create in it.
gboolean Browser::onDecidePolicy(WebKitWebView*, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type, gpointer self) {
  if (type == WEBKIT_POLICY_DECISION_TYPE_NAVIGATION_ACTION) {
    WebKitNavigationAction* const action =
        webkit_navigation_policy_decision_get_navigation_action(WEBKIT_NAVIGATION_POLICY_DECISION(decision));
    return static_cast<Browser*>(self)->refuseToLeave(decision,
                                                      webkit_uri_request_get_uri(webkit_navigation_action_get_request(action)));
  }
  if (type != WEBKIT_POLICY_DECISION_TYPE_RESPONSE) return FALSE;
  auto& browser = *static_cast<Browser*>(self);
  WebKitResponsePolicyDecision* const answer = WEBKIT_RESPONSE_POLICY_DECISION(decision);
  const std::string problem = browser.whyNotShown(answer);
  if (webkit_response_policy_decision_is_main_frame_main_resource(answer) != FALSE) browser.m_notShown = problem;
  problem.empty() ? webkit_policy_decision_use(decision) : webkit_policy_decision_ignore(decision);
  return TRUE;
}

// The engine shows an empty page, without a word, where the port is one of another service's, such as mail.
bool Browser::isKeptFromFirstPage() const {
  constexpr std::string_view kEmptyPage = "about:blank";
  return !m_hasPage && m_options.url != kEmptyPage && webkit_web_view_get_uri(m_view) == kEmptyPage;
}

void Browser::refusePort() {
  const std::string why = "the engine opens no page at this port; serve it at another one, such as 8080";
  fail(m_options.url + ": " + why, kExitFailed);
  webkit_web_view_load_alternate_html(m_view, noticePage("This page cannot be shown", why).c_str(), m_options.url.c_str(), nullptr);
}

void Browser::onLoadChanged(WebKitWebView*, WebKitLoadEvent event, gpointer self) {
  auto& browser = *static_cast<Browser*>(self);
  if (event == WEBKIT_LOAD_STARTED) browser.m_shown = false;
  if (event == WEBKIT_LOAD_COMMITTED && browser.isKeptFromFirstPage()) return browser.refusePort();
  if (event == WEBKIT_LOAD_COMMITTED) {
    browser.m_shown = browser.m_hasPage = true;
    browser.m_optionList->close();
  }
  // What could not be loaded is finished, too, before the page that says so is there.
  if (event == WEBKIT_LOAD_FINISHED && browser.m_shown && !browser.m_down) browser.m_automation->loaded();
}

gboolean Browser::onLoadFailed(WebKitWebView* view, WebKitLoadEvent, const char* url, GError* error, gpointer self) {
  auto& browser = *static_cast<Browser*>(self);
  // A page that is left while it loads has not failed, nor has one that stays because there is nothing to take its place.
  if (g_error_matches(error, WEBKIT_NETWORK_ERROR, WEBKIT_NETWORK_ERROR_CANCELLED)) return TRUE;
  std::string why = std::exchange(browser.m_notShown, "");
  if (g_error_matches(error, WEBKIT_POLICY_ERROR, WEBKIT_POLICY_ERROR_FRAME_LOAD_INTERRUPTED_BY_POLICY_CHANGE) && why.empty()) {
    browser.m_shown = browser.m_hasPage;  // what is there stays
    return TRUE;
  }
  if (why.empty()) browser.fail(std::string(url) + ": " + (why = error->message), kExitFailed);
  webkit_web_view_load_alternate_html(view, noticePage("This page cannot be shown", why).c_str(), url, nullptr);
  return TRUE;
}

void Browser::onProgress(GObject* view, GParamSpec*, gpointer self) {
  auto& browser = *static_cast<Browser*>(self);
  browser.m_overlay.loading = webkit_web_view_get_estimated_load_progress(WEBKIT_WEB_VIEW(view));
  browser.m_window->redraw();
}

void Browser::onTitle(GObject* view, GParamSpec*, gpointer self) {
  const char* const title = webkit_web_view_get_title(WEBKIT_WEB_VIEW(view));
  static_cast<Browser*>(self)->m_window->setTitle(title == nullptr || *title == '\0' ? "avc-browser" : title);
}

void Browser::onTerminated(WebKitWebView*, WebKitWebProcessTerminationReason, gpointer self) {
  static_cast<Browser*>(self)->crashed();
}

// What it played has gone with it. Steps that are left have nothing to work on.
void Browser::crashed() {
  m_plane.close();
  m_optionList->close();
  m_down = true;
  if (m_ending == Ending::asked) return ended();
  fail("the page's process ended unexpectedly", kExitFailed);
  if (!m_options.steps.empty() && !m_automation->finished()) return end(kExitFailed);
  m_overlay.crashed = "The page's process has ended";
  m_overlay.loading = 1;
  m_window->redraw();
}

void Browser::restart() {
  m_down = false;
  m_overlay.crashed.clear();
  webkit_web_view_reload(m_view);
  m_window->redraw();
}

bool Browser::key(guint pcKey, GdkModifierType modifiers) {
  if (m_down && (pcKey == GDK_KEY_Return || pcKey == GDK_KEY_KP_Enter)) {
    restart();
    return true;
  }
  const guint withControl = (modifiers & GDK_CONTROL_MASK) != 0 ? gdk_keyval_to_lower(pcKey) : 0;
  if (withControl == GDK_KEY_q) {
    end(0);
    return true;
  }
  if ((modifiers & GDK_MOD1_MASK) != 0 && pcKey == GDK_KEY_Return) {
    m_window->toggleFullScreen();
    return true;
  }
  if (pcKey == kSubtitleKey || withControl == GDK_KEY_s) {
    toggleSubtitles();
    return true;
  }
  if (pcKey == GDK_KEY_F11) {
    toggleStatus();
    return true;
  }
  if (pcKey == GDK_KEY_F12) {
    m_overlay.helpShown = !m_overlay.helpShown;
    m_window->redraw();
    return true;
  }
  if (m_optionList->key(remoteKeyFor(pcKey))) return true;
  m_optionList->keyPassed(remoteKeyFor(pcKey));
  return false;
}

void Browser::toggleStatus() {
  m_overlay.statusShown = !m_overlay.statusShown;
  m_window->redraw();
  if (!m_overlay.statusShown) {
    g_source_remove(std::exchange(m_statusTimer, 0));
    return;
  }
  askStatus();
  const auto ask = [](gpointer self) -> gboolean {
    static_cast<Browser*>(self)->askStatus();
    return G_SOURCE_CONTINUE;
  };
  m_statusTimer = g_timeout_add(kStatusMilliseconds, ask, this);
}

// A page's process that has ended learns of it when it starts again.
void Browser::toggleSubtitles() {
  m_subtitles.toggle();
  notice(m_subtitles.isOn() ? "Subtitles on" : "Subtitles off");
  const auto answered = [this](GVariant* answer) {
    gboolean isTaken = TRUE;
    if (answer != nullptr) g_variant_get(answer, kSubtitlesTakenType, &isTaken);
    if (isTaken == FALSE) fail("this media library takes no subtitle settings", 0);
  };
  askPage(m_view, kMessageSubtitles, kSubtitlesTakenType, m_cancel, answered,
          g_variant_new(kSubtitlesType, m_subtitles.settings().c_str()));
}

void Browser::notice(const std::string& text) {
  m_overlay.notice = text;
  m_window->redraw();
  if (m_noticeTimer != 0) g_source_remove(m_noticeTimer);
  const auto hide = [](gpointer self) -> gboolean {
    auto& browser = *static_cast<Browser*>(self);
    browser.m_noticeTimer = 0;
    browser.m_overlay.notice.clear();
    browser.m_window->redraw();
    return G_SOURCE_REMOVE;
  };
  m_noticeTimer = g_timeout_add(kNoticeMilliseconds, hide, this);
}

void Browser::askStatus() {
  // A page that is busy or gone does not answer: the next time it may.
  askPage(m_view, kMessageStatus, kStatusType, m_cancel, [this](GVariant* answer) {
    if (answer == nullptr) return;
    const char* lines = nullptr;
    g_variant_get(answer, "(&s)", &lines);
    m_overlay.status = lines;
    m_window->redraw();
  });
}

void Browser::fail(const std::string& problem, int status) {
  std::fflush(stdout);
  std::fprintf(stderr, "avc-browser: %s\n", problem.c_str());
  m_failed = m_failed || status != 0;
}

void Browser::stepsDone() {
  for (const Step& step : m_options.steps) {
    const bool looks = step.kind == Step::Kind::wait || step.kind == Step::Kind::screenshot || step.kind == Step::Kind::status;
    if (looks) return end(0);
  }
}

void Browser::timeOut() {
  if (m_hasPage && (m_options.steps.empty() || m_automation->finished())) return end(0);
  char seconds[32];
  std::snprintf(seconds, sizeof seconds, "%g", m_options.quitSeconds);
  fail(std::string("time-out after ") + seconds + " s, " + m_automation->place() + "; give a longer --quit-after", kExitTimeout);
  end(kExitTimeout);
}

void Browser::end(int status) {
  if (m_ending != Ending::none) return;
  m_ending = Ending::asked;
  m_status = status;
  if (m_down) return ended();
  const auto patience = [](gpointer self) -> gboolean {
    auto& browser = *static_cast<Browser*>(self);
    browser.m_patience = 0;
    webkit_web_view_terminate_web_process(browser.m_view);
    browser.ended();
    return G_SOURCE_REMOVE;
  };
  m_patience = g_timeout_add(kRestMilliseconds, patience, this);
  askPage(m_view, kMessageEnd, kEndType, m_cancel, [this](GVariant*) { ended(); });
}

void Browser::ended() {
  if (std::exchange(m_ending, Ending::ended) == Ending::ended) return;
  g_main_loop_quit(m_loop);
}

template <int kSignal>
gboolean Browser::onSignal(gpointer self) {
  auto& browser = *static_cast<Browser*>(self);
  browser.m_signal = kSignal;
  browser.end(0);
  return G_SOURCE_CONTINUE;
}

int Browser::run() {
  const guint interrupted = g_unix_signal_add(SIGINT, onSignal<SIGINT>, this);
  const guint terminated = g_unix_signal_add(SIGTERM, onSignal<SIGTERM>, this);
  m_window->setTitle("avc-browser");
  m_window->show(m_options.width, m_options.height, m_options.fullScreen);
  if (m_film != nullptr) m_window->beginFilm(std::move(m_film));
  if (m_options.overlay) toggleStatus();
  webkit_web_view_load_uri(m_view, m_options.url.c_str());
  if (m_options.quitSeconds > 0) {
    const auto limit = [](gpointer self) -> gboolean {
      static_cast<Browser*>(self)->m_limit = 0;
      static_cast<Browser*>(self)->timeOut();
      return G_SOURCE_REMOVE;
    };
    m_limit = g_timeout_add(static_cast<guint>(m_options.quitSeconds * 1000), limit, this);
  }
  g_main_loop_run(m_loop);
  g_source_remove(interrupted);
  g_source_remove(terminated);
  if (!m_window->endFilm()) fail("the film could not be written whole", kExitFailed);
  if (m_status != 0) return m_status;
  if (m_failed) return kExitFailed;
  return m_signal == 0 ? 0 : kSignalStatus + m_signal;
}

}  // namespace browser
