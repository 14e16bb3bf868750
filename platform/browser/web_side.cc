// SPDX-License-Identifier: Apache-2.0
#include "platform/browser/web_side.h"

#include <gio/gunixfdlist.h>
#include <malloc.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

#include "host/mediamgmnt.h"
#include "platform/browser/messages.h"
#include "platform/browser/overlap.h"
#include "platform/browser/settings_text.h"
#include "platform/browser/status_text.h"
#include "platform/mediamgmnt/media_report.h"
#include "platform/shell/protection_options.h"
#include "platform/shell/subtitle_settings.h"

namespace browser {

namespace {

constexpr guint kTickMilliseconds = 40;
constexpr int kRestMilliseconds = 2000;
constexpr guint kReturnMilliseconds = 1000;  ///< what a page's objects leave to their own threads is done by then

const std::string& at(const std::map<std::string, std::string>& start, const char* name) {
  static const std::string none;
  const auto found = start.find(name);
  return found == start.end() ? none : found->second;
}

/// A message takes texts up to the first NUL only.
std::string whole(std::string text) {
  for (std::size_t at = text.find('\0'); at != std::string::npos; at = text.find('\0', at)) text.replace(at, 1, "\\x00");
  return text;
}

}  // namespace

WebSide::WebSide(const std::map<std::string, std::string>& start)
    : m_settings(settingsText(start)), m_flush([this] { flushAll(); }), m_bury([this] { destroyRetired(); }) {
  load(start);
}

WebSide::~WebSide() {
  if (m_tick != 0) g_source_remove(m_tick);
  if (m_return != 0) g_source_remove(m_return);
  m_frames.clear();
  m_retired.clear();
}

// The trace comes before the first object, the queue of events as well.
void WebSide::load(const std::map<std::string, std::string>& start) {
  m_media = shell::MediaLibrary::load(at(start, kStartMediaLibrary), m_error);
  if (m_media == nullptr) return;
  m_media->preferLanguages(at(start, kStartAudioLanguages),
                           at(start, kStartSubtitleLanguages));  // one that does not ask has its own
  const std::string& subtitles = at(start, kStartSubtitleSettings);
  if (!subtitles.empty() && !changeSubtitles(subtitles)) {
    m_error = "this media library takes no subtitle settings; leave --subtitle-settings out or give another --media-library";
    return;
  }
  shell::ProtectionOptions protection;
  if (!protection.unpack(at(start, kStartProtection), m_error) || !protection.apply(*m_media, m_error)) return;
  const std::string& trace = at(start, kStartTrace);
  if (!trace.empty()) m_trace = shell::Trace::open(trace, m_error);
  if (!m_error.empty()) return;
  m_plugin = pluginhost::PluginLibrary::load(at(start, kStartPlugin), m_error);
  if (m_plugin == nullptr) return;
  m_pump.emplace([this](const pluginhost::Event& event) { deliver(event); });
  learnTables();
}

// The elements must know the rows before the first object of a page is made: one object that no page sees tells.
void WebSide::learnTables() {
  const auto sample = m_plugin->create();
  if (sample == nullptr) {
    m_error = "the plugin makes no objects";
    return;
  }
  m_tables = script::tablesOf(*sample);
  sample->willBeDestroyed();
}

void WebSide::pageCreated(WebKitWebPage* page) {
  m_page = page;
  g_object_weak_ref(G_OBJECT(page), onPageGone, this);
  g_signal_connect(page, "user-message-received", G_CALLBACK(onMessage), this);
  if (!m_error.empty()) {
    send(kMessageFailed, g_variant_new(kFailedType, m_error.c_str()));
  } else {
    sendPlane();
  }
}

void WebSide::windowCleared(WebKitScriptWorld* world, WebKitFrame* frame) {
  const auto known = m_frames.find(frame);
  if (known == m_frames.end()) {
    g_object_weak_ref(G_OBJECT(frame), onFrameGone, this);
  } else {
    retire(known);
  }
  if (!m_error.empty() || m_atEnd) {
    m_frames[frame] = nullptr;
    return;
  }
  G_GNUC_BEGIN_IGNORE_DEPRECATIONS
  JSGlobalContextRef context = webkit_frame_get_javascript_context_for_script_world(frame, world);
  G_GNUC_END_IGNORE_DEPRECATIONS
  m_frames[frame] = std::make_unique<FrameScript>(*this, context, m_plugin, m_tables, m_settings);
}

void WebSide::send(const char* name, GVariant* parameters, GUnixFDList* descriptors) {
  if (m_page == nullptr) {
    g_variant_unref(g_variant_ref_sink(parameters));
    return;
  }
  WebKitUserMessage* message = webkit_user_message_new_with_fd_list(name, parameters, descriptors);
  webkit_web_page_send_message_to_view(m_page, message, nullptr, nullptr, nullptr);
}

void WebSide::sendPlane() {
  MediaPlaneExport plane{};
  if (!m_media->exportPlane(plane)) return;
  GUnixFDList* descriptors = g_unix_fd_list_new();
  g_unix_fd_list_append(descriptors, plane.memoryFd, nullptr);
  g_unix_fd_list_append(descriptors, plane.tickFd, nullptr);
  send(kMessagePlane, g_variant_new(kPlaneType, plane.memoryBytes), descriptors);
  g_object_unref(descriptors);
}

void WebSide::print(const std::string& level, const std::string& text, const std::string& source, unsigned line) {
  send(kMessageConsole, g_variant_new(kConsoleType, level.c_str(), whole(text).c_str(), whole(source).c_str(), line));
}

void WebSide::uncaught(const std::string& text, const std::string& source, unsigned line) {
  send(kMessageUncaught, g_variant_new(kUncaughtType, whole(text).c_str(), whole(source).c_str(), line));
}

void WebSide::ended(FrameScript& frame) {
  for (auto at = m_frames.begin(); at != m_frames.end(); ++at) {
    if (at->second.get() == &frame) return retire(at);
  }
}

std::vector<FrameScript*> WebSide::framesWithObjects() const {
  std::vector<FrameScript*> out;
  for (const auto& [frame, script] : m_frames) {
    if (script != nullptr && script->hasObjects()) out.push_back(script.get());
  }
  return out;
}

bool WebSide::othersHaveObjects(const FrameScript& frame) const {
  return std::ranges::any_of(m_frames, [&](const auto& each) {
    return each.second != nullptr && each.second.get() != &frame && each.second->hasObjects();
  });
}

void WebSide::placeOthers(const FrameScript& frame) {
  for (FrameScript* script : framesWithObjects()) {
    if (script != &frame) script->placeObjects();  // one that retires meanwhile is silent and lives until the next turn
  }
}

// Where no two objects share a part of the plane, which is almost everywhere, there is nothing to be stacked.
bool WebSide::objectsOverlap() const {
  std::size_t objects = 0;
  for (const auto& [frame, script] : m_frames) objects += script == nullptr ? 0 : script->objectCount();
  if (objects < 2) return false;
  std::vector<script::PlaneWindow> windows;
  for (const FrameScript* script : framesWithObjects()) {
    for (const auto& [player, window] : script->binding().windows()) windows.push_back(window);
  }
  return anyOverlap(windows);
}

/// Puts the objects one above the other as the page's engine paints their elements. @return true when they were not so before.
bool WebSide::stackAsPainted() {
  if (!objectsOverlap()) return false;
  const auto top = std::ranges::find_if(m_frames, [](const auto& each) { return webkit_frame_is_main_frame(each.first); });
  if (top == m_frames.end() || top->second == nullptr) return false;
  std::vector<unsigned long> players;
  top->second->appendPlayers(players);
  std::ranges::reverse(players);
  if (players == m_stacked) return false;
  m_stacked = std::move(players);
  return m_media->arrangePlane(m_stacked);
}

FrameScript* WebSide::frameOf(JSObjectRef window) {
  for (const auto& [frame, script] : m_frames) {
    if (script != nullptr && script->window() == window) return script.get();
  }
  return nullptr;
}

// The place stays: the engine's frame may get its next window. A script may be running in the window that goes, so it goes later.
void WebSide::retire(Frames::iterator frame) {
  if (frame->second == nullptr) return;
  frame->second->silence();
  m_retired.push_back(std::move(frame->second));
  m_bury.schedule();
}

void WebSide::destroyRetired() {
  const auto retired = std::exchange(m_retired, {});  // destroying objects runs no script, but keep clear of what they may do
  for (const auto& script : retired) script->forget();
  if (!retired.empty()) returnMemorySoon();
}

// What a page gave back stays with the C library, in pieces among as many arenas as there were threads. The next page's threads
// find others, so that a process would grow for dozens of pages although it uses no more.
void WebSide::returnMemorySoon() {
  if (m_return != 0) return;
  const auto run = [](gpointer data) -> gboolean {
    static_cast<WebSide*>(data)->m_return = 0;
    malloc_trim(0);
    return G_SOURCE_REMOVE;
  };
  m_return = g_timeout_add_full(G_PRIORITY_LOW, kReturnMilliseconds, run, this, nullptr);
}

void WebSide::onFrameGone(gpointer self, GObject* frame) {
  auto& side = *static_cast<WebSide*>(self);
  const auto known = side.m_frames.find(reinterpret_cast<WebKitFrame*>(frame));
  if (known == side.m_frames.end()) return;
  side.retire(known);
  side.m_frames.erase(known);
}

// The window's process has gone, or is about to: nobody calls this process's main loop for long any more.
void WebSide::onPageGone(gpointer self, GObject* page) {
  auto& side = *static_cast<WebSide*>(self);
  if (reinterpret_cast<GObject*>(side.m_page) != page) return;
  side.m_page = nullptr;
  side.comeToRest();
}

bool WebSide::comeToRest() {
  for (auto at = m_frames.begin(); at != m_frames.end(); ++at) retire(at);
  destroyRetired();
  return m_media == nullptr || m_media->waitIdle(kRestMilliseconds);
}

void WebSide::finishTrace() {
  std::string error;
  if (m_trace != nullptr && !m_trace->finish(error)) std::fprintf(stderr, "avc-browser: %s\n", error.c_str());
  m_trace.reset();
}

gboolean WebSide::onMessage(WebKitWebPage*, WebKitUserMessage* message, gpointer self) {
  auto& side = *static_cast<WebSide*>(self);
  const std::string name = webkit_user_message_get_name(message);
  if (name == kMessageEnd) {
    side.m_atEnd = true;
    GVariant* rested = g_variant_new(kEndType, side.comeToRest() ? TRUE : FALSE);
    side.finishTrace();
    webkit_user_message_send_reply(message, webkit_user_message_new(kMessageEnd, rested));
    return TRUE;
  }
  if (name == kMessageStatus) {
    webkit_user_message_send_reply(message, webkit_user_message_new(kMessageStatus, side.status()));
    return TRUE;
  }
  if (name == kMessageSubtitles) {
    GVariant* const parameters = webkit_user_message_get_parameters(message);
    const char* settings = "";
    if (parameters != nullptr) g_variant_get(parameters, "(&s)", &settings);
    GVariant* const taken = g_variant_new(kSubtitlesTakenType, side.changeSubtitles(settings) ? TRUE : FALSE);
    webkit_user_message_send_reply(message, webkit_user_message_new(kMessageSubtitles, taken));
    return TRUE;
  }
  if (name == kMessageSettled) {
    GVariant* const settled = g_variant_new(kSettledType, side.isSettled() ? TRUE : FALSE);
    webkit_user_message_send_reply(message, webkit_user_message_new(kMessageSettled, settled));
    return TRUE;
  }
  return FALSE;
}

// @return false for a media library that takes none.
bool WebSide::changeSubtitles(const std::string& settings) {
  _SubtitleSettingsParams parsed;
  if (m_media == nullptr || !shell::parseSubtitleSettings(settings, parsed)) return false;
  m_subtitlesEnabled = parsed.value != 0;
  return m_media->changeSubtitleSettings(parsed);
}

// A window passes two queues, the plugin's and the media library's, before pictures are where it says. A library that does not tell
// is taken to be quick; objects that have gone have left the plane when their threads have.
bool WebSide::isSettled() {
  if (stackAsPainted()) return false;
  if (!m_retired.empty() || (m_media != nullptr && !m_media->waitIdle(0))) return false;
  for (const auto& [frame, script] : m_frames) {
    if (script == nullptr) continue;
    for (const auto& [player, window] : script->binding().windows()) {
      char inForce[64];
      const bool told = getPlayerProperty(player, mediamgmnt::report::kWindow, inForce, sizeof inForce) != 0;
      if (told && window.text() != inForce) return false;
    }
  }
  return true;
}

GVariant* WebSide::status() {
  std::string out;
  for (const auto& [frame, script] : m_frames) {
    if (script == nullptr) continue;
    for (CorvelNativePluginBase* object : script->binding().plugins()) out += describeObject(*object);
  }
  if (out.empty()) out = "no A/V Control object\n";
  const unsigned long frames = m_media == nullptr ? 0 : m_media->planeFrames();
  const gint64 now = g_get_monotonic_time();
  const double seconds = static_cast<double>(now - m_framesAt) / G_USEC_PER_SEC;
  const double rate = m_framesAt == 0 || seconds <= 0 ? 0 : static_cast<double>(frames - m_framesSeen) / seconds;
  m_framesSeen = frames;
  m_framesAt = now;
  out += std::to_string(std::lround(rate)) + " pictures a second, " + std::to_string(frames) + " in all";
  return g_variant_new(kStatusType, out.c_str());
}

void WebSide::deliver(const pluginhost::Event& event) {
  for (const auto& [frame, script] : m_frames) {
    if (script == nullptr || !script->owns(event.objectId)) continue;
    script->deliver(event);  // may change m_frames
    break;
  }
  stackAsPainted();  // the object may have another player now, or fill the plane
}

void WebSide::flushAll() {
  std::vector<FrameScript*> frames;
  for (const auto& [frame, script] : m_frames) {
    if (script != nullptr) frames.push_back(script.get());
  }
  for (FrameScript* script : frames) script->flush();  // one that retires meanwhile is silent and lives until the next turn
  keepTicking();
}

void WebSide::keepTicking() {
  if (m_tick != 0) return;
  const auto tick = [](gpointer data) -> gboolean {
    auto& side = *static_cast<WebSide*>(data);
    const std::vector<FrameScript*> frames = side.framesWithObjects();
    for (FrameScript* script : frames) script->tick();
    side.stackAsPainted();
    if (!frames.empty()) return G_SOURCE_CONTINUE;
    side.m_tick = 0;
    return G_SOURCE_REMOVE;
  };
  m_tick = g_timeout_add(kTickMilliseconds, tick, this);
}

}  // namespace browser
