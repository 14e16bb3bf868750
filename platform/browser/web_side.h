// SPDX-License-Identifier: Apache-2.0
// The page's process: the plugin, the media library, the events, and the windows of the page. One per process, from the loading
// of the extension until the end. Main thread only.
#pragma once

#include <webkit2/webkit-web-extension.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/browser/deferred.h"
#include "platform/browser/frame_script.h"
#include "platform/script/event_pump.h"
#include "platform/shell/media_library.h"
#include "platform/shell/trace.h"

namespace browser {

class WebSide : public FrameOwner {
 public:
  /// @p start is what the window's process said when it loaded the extension, by the names in messages.h.
  explicit WebSide(const std::map<std::string, std::string>& start);
  WebSide(const WebSide&) = delete;
  WebSide& operator=(const WebSide&) = delete;
  ~WebSide() override;

  void pageCreated(WebKitWebPage* page);
  /// Before the first script of each window, also of one that a page writes anew.
  void windowCleared(WebKitScriptWorld* world, WebKitFrame* frame);

  void print(const std::string& level, const std::string& text, const std::string& source, unsigned line) override;
  void uncaught(const std::string& text, const std::string& source, unsigned line) override;
  void wake() override { m_flush.schedule(); }
  void ended(FrameScript& frame) override;
  bool othersHaveObjects(const FrameScript& frame) const override;
  void placeOthers(const FrameScript& frame) override;
  void stackObjects() override { stackAsPainted(); }
  FrameScript* frameOf(JSObjectRef window) override;
  bool subtitlesEnabled() const override { return m_subtitlesEnabled; }

 private:
  using Frames = std::map<WebKitFrame*, std::unique_ptr<FrameScript>>;

  static gboolean onMessage(WebKitWebPage* page, WebKitUserMessage* message, gpointer self);
  static void onFrameGone(gpointer self, GObject* frame);
  static void onPageGone(gpointer self, GObject* page);

  void load(const std::map<std::string, std::string>& start);
  void learnTables();
  void send(const char* name, GVariant* parameters, GUnixFDList* descriptors = nullptr);
  void sendPlane();
  void retire(Frames::iterator frame);
  void destroyRetired();
  void returnMemorySoon();
  void deliver(const pluginhost::Event& event);
  void flushAll();
  void keepTicking();
  std::vector<FrameScript*> framesWithObjects() const;
  bool comeToRest();
  void finishTrace();
  GVariant* status();
  bool changeSubtitles(const std::string& settings);
  bool objectsOverlap() const;
  bool stackAsPainted();
  bool isSettled();

  std::string m_error;  ///< why nothing can play, or ""
  std::string m_settings;
  std::unique_ptr<shell::MediaLibrary> m_media;
  std::unique_ptr<shell::Trace> m_trace;
  std::shared_ptr<pluginhost::PluginLibrary> m_plugin;
  std::optional<script::EventPump> m_pump;
  script::Tables m_tables;
  WebKitWebPage* m_page = nullptr;
  Frames m_frames;
  std::vector<std::unique_ptr<FrameScript>> m_retired;
  Deferred m_flush;
  Deferred m_bury;
  std::vector<unsigned long> m_stacked;  ///< the players as the plane has them, the lowest first
  unsigned long m_framesSeen = 0;        ///< of the plane, when the status was asked for last
  gint64 m_framesAt = 0;
  guint m_tick = 0;
  guint m_return = 0;
  bool m_subtitlesEnabled = true;  ///< unless the viewer's settings say otherwise
  bool m_atEnd = false;
};

}  // namespace browser
