// SPDX-License-Identifier: Apache-2.0
// Does the steps of the command line with the loaded page, one after another. Window's process, main thread.
#pragma once

#include <webkit2/webkit2.h>

#include <functional>
#include <string>
#include <vector>

#include "platform/browser/options.h"
#include "platform/browser/tv_window.h"

namespace browser {

class Automation {
 public:
  /// @p failed gets one line for a step that could not be done; the steps go on. @p done is called after the last one.
  Automation(const std::vector<Step>& steps, WebKitWebView* view, TvWindow& window, std::function<void(const std::string&)> failed,
             std::function<void()> done);
  Automation(const Automation&) = delete;
  Automation& operator=(const Automation&) = delete;
  ~Automation();

  /// The page has been loaded; the first time starts the steps.
  void loaded();
  /// @return what is wrong with a step that can never be done, or "". Not before there is a web view: the engine must be made
  /// first.
  std::string wrongStep() const;
  /// Where the steps are, for a line that says so.
  std::string place() const;
  bool finished() const { return m_started && m_at == m_steps.size(); }

 private:
  void next();
  void run(const Step& step);
  void runScript(const std::string& file);
  void scriptRun(const GError* error);
  void pressKeys(const std::vector<std::string>& keys, std::size_t at);
  void wait(const std::string& expression);
  void waited(bool holds);
  void tellStatus(bool lookedAlready);
  void shoot(const Step& step);
  void awaitSettled(std::function<void()> action);
  void settled(bool isSettled, std::function<void()> action);
  void shootNow(const std::string& file);
  void later(double seconds, std::function<void()> action);
  void afterFrames(std::function<void()> action);

  std::vector<Step> m_steps;
  WebKitWebView* m_view;
  TvWindow& m_window;
  std::function<void(const std::string&)> m_failed;
  std::function<void()> m_done;
  GCancellable* m_cancel;
  std::size_t m_at = 0;
  bool m_started = false;
  gint64 m_loadedAt = 0;
  gint64 m_settleUntil = 0;
  guint m_timer = 0;
  std::function<void()> m_later;
};

}  // namespace browser
