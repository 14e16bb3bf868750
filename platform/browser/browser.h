// SPDX-License-Identifier: Apache-2.0
// The television browser: its window, its page, and their end. Window's process, main thread.
#pragma once

#include <webkit2/webkit2.h>

#include <memory>
#include <optional>
#include <string>

#include "platform/browser/automation.h"
#include "platform/browser/option_list.h"
#include "platform/browser/options.h"
#include "platform/browser/overlay.h"
#include "platform/browser/plane_view.h"
#include "platform/browser/subtitle_switch.h"
#include "platform/browser/tv_window.h"

namespace browser {

class Browser {
 public:
  /// GTK must have been initialised. @p film may be null.
  Browser(const Options& options, std::unique_ptr<Film> film);
  Browser(const Browser&) = delete;
  Browser& operator=(const Browser&) = delete;
  ~Browser();

  /// @return what is wrong with the steps, or "".
  std::string wrongStep() const { return m_automation->wrongStep(); }
  /// Shows the page and runs until the end. @return the exit status.
  int run();

 private:
  enum class Ending { none, asked, ended };

  void makeContext();
  void makeView();
  static void onInitializeExtensions(WebKitWebContext* context, gpointer self);
  static gboolean onMessage(WebKitWebView* view, WebKitUserMessage* message, gpointer self);
  static gboolean onDecidePolicy(WebKitWebView* view, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type, gpointer self);
  /// @return why the response is not shown, "" when it is; a page that the server calls wrong is told of and shown.
  std::string whyNotShown(WebKitResponsePolicyDecision* answer);
  gboolean refuseToLeave(WebKitPolicyDecision* decision, const char* address);
  static void onLoadChanged(WebKitWebView* view, WebKitLoadEvent event, gpointer self);
  static gboolean onLoadFailed(WebKitWebView* view, WebKitLoadEvent event, const char* url, GError* error, gpointer self);
  static void onTerminated(WebKitWebView* view, WebKitWebProcessTerminationReason reason, gpointer self);
  static void onProgress(GObject* view, GParamSpec* property, gpointer self);
  static void onTitle(GObject* view, GParamSpec* property, gpointer self);
  template <int kSignal>
  static gboolean onSignal(gpointer self);

  void takePlane(WebKitUserMessage* message);
  void printConsole(GVariant* parameters);
  bool isKeptFromFirstPage() const;
  void refusePort();
  void printUncaught(GVariant* parameters);
  const char* adviceOn(const std::string& error) const;
  bool key(guint pcKey, GdkModifierType modifiers);
  void toggleStatus();
  void toggleSubtitles();
  void notice(const std::string& text);
  void askStatus();
  void crashed();
  void restart();
  void printNotLoaded(const std::string& address, const std::string& why);
  void fail(const std::string& problem, int status);
  void timeOut();
  void stepsDone();
  /// Brings everything to rest and ends run(); the first call counts.
  void end(int status);
  void ended();

  const Options& m_options;
  std::unique_ptr<Film> m_film;  ///< until run()
  PlaneView m_plane;
  Overlay m_overlay;
  SubtitleSwitch m_subtitles;
  WebKitWebContext* m_context = nullptr;
  WebKitWebView* m_view = nullptr;
  std::unique_ptr<TvWindow> m_window;
  std::unique_ptr<OptionList> m_optionList;
  std::unique_ptr<Automation> m_automation;
  GMainLoop* m_loop;
  Ending m_ending = Ending::none;
  int m_status = 0;
  int m_signal = 0;  ///< the signal that ended it, or 0
  bool m_failed = false;
  std::string m_notShown;  ///< why not, while what came is given up
  bool m_shown = false;    ///< something of what was loaded last
  bool m_hasPage = false;  ///< something was ever shown
  bool m_down = false;     ///< the page's process has ended
  bool m_traceUsed = false;
  guint m_limit = 0;
  guint m_patience = 0;
  guint m_statusTimer = 0;
  guint m_noticeTimer = 0;
  GCancellable* m_cancel;
};

}  // namespace browser
