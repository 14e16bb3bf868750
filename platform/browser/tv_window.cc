// SPDX-License-Identifier: Apache-2.0
#include "platform/browser/tv_window.h"

#include <algorithm>
#include <utility>

#include "platform/browser/page_view.h"
#include "platform/browser/remote_keys.h"
#include "platform/browser/window_picture.h"

namespace browser {

namespace {

constexpr std::size_t kMostPassed = 64;
constexpr float kAspect = static_cast<float>(kMediaPlaneWidth) / kMediaPlaneHeight;

GtkWidget* widget(WebKitWebView* view) { return GTK_WIDGET(view); }

void makeBlack(GtkWidget* window) {
  GtkCssProvider* const css = gtk_css_provider_new();
  gtk_css_provider_load_from_data(css, "window { background: #000; } frame > border { border: none; padding: 0; }", -1, nullptr);
  gtk_style_context_add_provider_for_screen(gtk_widget_get_screen(window), GTK_STYLE_PROVIDER(css),
                                            GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
  g_object_unref(css);
}

}  // namespace

TvWindow::TvWindow(WebKitWebView* view, PlaneView& plane, Handlers handlers)
    : m_view(view),
      m_plane(plane),
      m_handlers(std::move(handlers)),
      m_window(gtk_window_new(GTK_WINDOW_TOPLEVEL)),
      m_content(gtk_aspect_frame_new(nullptr, 0.5, 0.5, kAspect, FALSE)) {
  const GdkRGBA transparent = {0, 0, 0, 0};
  webkit_web_view_set_background_color(view, &transparent);
  makeBlack(m_window);
  gtk_container_add(GTK_CONTAINER(m_content), widget(view));
  gtk_container_add(GTK_CONTAINER(m_window), m_content);
  g_signal_connect(view, "size-allocate", G_CALLBACK(onSize), this);
  g_signal_connect(view, "draw", G_CALLBACK(onDraw), this);
  g_signal_connect_after(view, "draw", G_CALLBACK(onDrawn), this);
  onRedrawAsked(view, [this] {
    if (!m_redraws) m_plane.pageChanges();
  });
  g_signal_connect(view, "key-press-event", G_CALLBACK(onKey), this);
  g_signal_connect(view, "key-release-event", G_CALLBACK(onKey), this);
  g_signal_connect(view, "focus-out-event", G_CALLBACK(onFocusOut), this);
  g_signal_connect(m_window, "delete-event", G_CALLBACK(onDelete), this);
}

TvWindow::~TvWindow() {
  g_signal_handlers_disconnect_by_data(m_view, this);
  onRedrawAsked(m_view, nullptr);
  m_film.reset();
  if (m_painted != 0) g_signal_handler_disconnect(gtk_widget_get_frame_clock(m_window), m_painted);
  gtk_widget_destroy(m_window);
}

void TvWindow::show(int width, int height, bool fullScreen) {
  gtk_window_set_default_size(GTK_WINDOW(m_window), width, height);
  if (fullScreen) toggleFullScreen();
  gtk_widget_show_all(m_window);
  gtk_widget_grab_focus(widget(m_view));
}

void TvWindow::setTitle(const std::string& title) { gtk_window_set_title(GTK_WINDOW(m_window), title.c_str()); }

void TvWindow::toggleFullScreen() {
  m_fullScreen = !m_fullScreen;
  m_fullScreen ? gtk_window_fullscreen(GTK_WINDOW(m_window)) : gtk_window_unfullscreen(GTK_WINDOW(m_window));
}

void TvWindow::redraw() {
  m_redraws = true;
  gtk_widget_queue_draw(widget(m_view));
  m_redraws = false;
}

// The page is 1280 CSS pixels wide in a view of any size.
void TvWindow::onSize(GtkWidget* view, GtkAllocation* size, gpointer) {
  webkit_web_view_set_zoom_level(WEBKIT_WEB_VIEW(view), static_cast<double>(size->width) / kMediaPlaneWidth);
}

gboolean TvWindow::onDraw(GtkWidget* view, cairo_t* cairo, gpointer self) {
  static_cast<TvWindow*>(self)->m_plane.paint(cairo, gtk_widget_get_allocated_width(view), gtk_widget_get_allocated_height(view));
  return FALSE;  // the page comes above
}

gboolean TvWindow::onDrawn(GtkWidget* view, cairo_t* cairo, gpointer self) {
  const auto& window = *static_cast<TvWindow*>(self);
  window.m_handlers.paintAbove(cairo, gtk_widget_get_allocated_width(view), gtk_widget_get_allocated_height(view));
  if (window.m_film != nullptr) window.m_film->expose();
  return FALSE;
}

gboolean TvWindow::onKey(GtkWidget*, GdkEventKey* event, gpointer self) {
  auto& window = *static_cast<TvWindow*>(self);
  if (window.isReturned(*event)) return FALSE;
  const guint16 place = event->hardware_keycode;  // the symbol depends on modifiers, which may be let go of first
  if (event->type == GDK_KEY_RELEASE) {
    window.m_pageKeys.erase(place);
    if (window.m_ownKeys.erase(place) != 0) return TRUE;
  } else {
    if (window.m_ownKeys.count(place) != 0) return TRUE;  // held
    const bool held = window.m_pageKeys.count(place) != 0;
    if (window.m_handlers.key(event->keyval, static_cast<GdkModifierType>(event->state), held)) {
      if (!held) window.m_ownKeys.insert(place);
      return TRUE;
    }
    window.m_pageKeys.insert(place);
  }
  event->keyval = remoteKeyFor(event->keyval);
  if (event->type == GDK_KEY_PRESS) window.notePassed(*event);
  return FALSE;
}

bool TvWindow::isReturned(const GdkEventKey& event) const {
  return event.type == GDK_KEY_PRESS &&
         std::find(m_passed.begin(), m_passed.end(), std::pair(event.time, event.keyval)) != m_passed.end();
}

void TvWindow::notePassed(const GdkEventKey& event) {
  m_passed.emplace_back(event.time, event.keyval);
  if (m_passed.size() > kMostPassed) m_passed.pop_front();
}

/// What is let go of from now on, another window hears.
gboolean TvWindow::onFocusOut(GtkWidget*, GdkEvent*, gpointer self) {
  static_cast<TvWindow*>(self)->m_ownKeys.clear();
  static_cast<TvWindow*>(self)->m_pageKeys.clear();
  return FALSE;
}

gboolean TvWindow::onDelete(GtkWidget*, GdkEvent*, gpointer self) {
  static_cast<TvWindow*>(self)->m_handlers.closed();
  return TRUE;  // the window goes when everything in it has ended
}

void TvWindow::press(guint sentKey) {
  sendKey(sentKey, GDK_KEY_PRESS);
  sendKey(sentKey, GDK_KEY_RELEASE);
}

void TvWindow::sendKey(guint sentKey, GdkEventType type) {
  GdkDisplay* const display = gtk_widget_get_display(m_window);
  GdkEvent* const event = gdk_event_new(type);
  event->key.window = GDK_WINDOW(g_object_ref(gtk_widget_get_window(widget(m_view))));
  m_sentAt = std::max(m_sentAt + 1, static_cast<guint32>(g_get_monotonic_time() / 1000));  // the X server's clock
  event->key.time = m_sentAt;
  event->key.keyval = sentKey;
  GdkKeymapKey* places = nullptr;
  gint count = 0;
  if (gdk_keymap_get_entries_for_keyval(gdk_keymap_get_for_display(display), sentKey, &places, &count) && count > 0) {
    event->key.hardware_keycode = static_cast<guint16>(places[0].keycode);
  }
  g_free(places);
  gdk_event_set_device(event, gdk_seat_get_keyboard(gdk_display_get_default_seat(display)));
  gtk_widget_event(widget(m_view), event);
  gdk_event_free(event);
}

void TvWindow::whenDrawn(std::function<void()> done) {
  m_whenDrawn = std::move(done);
  m_plane.stopWaiting();
  GdkFrameClock* const clock = gtk_widget_get_frame_clock(m_window);
  if (m_painted == 0) m_painted = g_signal_connect(clock, "after-paint", G_CALLBACK(onPainted), this);
  redraw();
}

void TvWindow::onPainted(GdkFrameClock* clock, gpointer self) {
  auto& window = *static_cast<TvWindow*>(self);
  g_signal_handler_disconnect(clock, std::exchange(window.m_painted, 0));
  const auto done = std::exchange(window.m_whenDrawn, nullptr);
  done();
}

void TvWindow::beginFilm(std::unique_ptr<Film> film) {
  m_film = std::move(film);
  m_film->begin(m_content);
}

bool TvWindow::endFilm() {
  const std::unique_ptr<Film> film = std::move(m_film);
  return film == nullptr || film->end();
}

bool TvWindow::screenshot(const std::string& path, std::string& error) const {
  GdkPixbuf* const picture = pictureOf(m_content, {});
  if (picture == nullptr) {
    error = "the window gave no picture for " + path;
    return false;
  }
  GError* problem = nullptr;
  const bool saved = gdk_pixbuf_save(picture, path.c_str(), "png", &problem, nullptr);
  if (!saved) error = "cannot write the screenshot " + path + ": " + problem->message;
  g_clear_error(&problem);
  g_object_unref(picture);
  return saved;
}

}  // namespace browser
