// SPDX-License-Identifier: Apache-2.0
// One run of avc-run: a script context with its page, its objects and its main loop. Main thread only.
#pragma once

#include <JavaScriptCore/JavaScript.h>
#include <glib.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/pluginhost/shell.h"
#include "platform/runner/options.h"
#include "platform/runner/page_host.h"
#include "platform/runner/signals.h"
#include "platform/runner/timers.h"
#include "platform/script/binding.h"
#include "platform/script/event_pump.h"
#include "platform/shell/media_library.h"

namespace runner {

struct Script {
  std::string path;
  std::string text;
};

class ScriptRunner {
 public:
  /// What is passed in must outlive the runner. The objects are destroyed by its destructor, in order, before the context ends.
  ScriptRunner(const Options& options, const std::string& documentUrl, std::shared_ptr<pluginhost::PluginLibrary> plugin,
               const shell::MediaLibrary& media);
  ScriptRunner(const ScriptRunner&) = delete;
  ScriptRunner& operator=(const ScriptRunner&) = delete;
  ~ScriptRunner();

  /// Runs the scripts and then the main loop until nothing can happen any more. @return the exit status.
  int run(const std::vector<Script>& scripts);

 private:
  static bool shouldTerminate(JSContextRef context, void* self);

  void makePage(const std::string& documentUrl);
  void watchRejections();
  void limitTime();
  void watchScript();
  bool evaluate(const Script& script);
  void loop();
  bool nothingLeft();

  void deliver(const pluginhost::Event& event);
  void runFunction(JSObjectRef function);
  JSValueRef callPage(const char* name, const std::vector<JSValueRef>& arguments);
  void afterScript();
  void keepTicking();

  void reportUncaught(JSValueRef error, const char* what);
  void end() { m_ended = true; }
  void exitWith(int status);
  void timeOut();
  void takeSnapshot();
  int status() const;

  const Options& m_options;
  const shell::MediaLibrary& m_media;
  std::optional<script::EventPump> m_pump;  ///< outlives all objects, and so the context
  JSGlobalContextRef m_context;
  std::optional<script::Binding> m_binding;
  std::optional<Timers> m_timers;
  PageHost m_host;
  JSObjectRef m_page = nullptr;
  std::optional<Signals> m_signals;
  guint m_tick = 0;
  guint m_limit = 0;
  guint m_shot = 0;
  gint64 m_deadline = 0;  ///< monotonic microseconds; 0: none
  bool m_ended = false;
  bool m_uncaught = false;
  bool m_timedOut = false;
  bool m_snapshotDue = false;
  bool m_snapshotFailed = false;
  std::optional<int> m_exitStatus;
};

}  // namespace runner
