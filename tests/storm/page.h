// SPDX-License-Identifier: Apache-2.0
// The page's side of a storm: a script thread's main loop with one element at a time.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "platform/pluginhost/shell.h"
#include "plugin/av_control_plugin.h"

namespace storm {

/// Runs events as a shell does: woken from any thread, drained on the thread that owns the page. Thread: the test's.
class Page {
 public:
  using Handler = std::function<void(AVControlPlugin& element, const pluginhost::Event& event)>;

  Page();
  Page(const Page&) = delete;
  Page& operator=(const Page&) = delete;
  ~Page();

  /// Makes the element with a document address. @return the element; the page owns it.
  AVControlPlugin& create();
  AVControlPlugin& element() { return *m_element; }
  bool hasElement() const { return m_element != nullptr; }
  /// What the shell does when the element has left the page. Never from inside a handler.
  void destroy();
  /// The element that was destroyed last is released by everybody. @return false when the deadline passed first.
  bool waitUntilReleased(std::chrono::seconds limit);

  void onEvent(Handler handler) { m_handler = std::move(handler); }
  /// Runs the handlers of what is queued now. @return how many ran.
  int runQueued();
  /// Runs handlers until @p done or the deadline. @return whether done.
  bool runUntil(const std::function<bool()>& done, std::chrono::seconds limit);

  // Script's writes and calls, as the host's thunks make them.
  static bool setData(AVControlPlugin& element, const std::string& url);
  static bool queue(AVControlPlugin& element, const std::string& url);

 private:
  void wake();

  std::mutex m_mutex;
  std::condition_variable m_woken;
  bool m_wakeUp = false;
  pluginhost::EventQueue m_events;
  std::shared_ptr<AVControlPlugin> m_element;
  std::weak_ptr<AVControlPlugin> m_last;
  Handler m_handler;
};

}  // namespace storm
