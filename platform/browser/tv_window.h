// SPDX-License-Identifier: Apache-2.0
// The window: the page, always 1280x720 CSS pixels and transparent, scaled over the video plane, black around both.
// Window's process, main thread.
#pragma once

#include <webkit2/webkit2.h>

#include <deque>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <utility>

#include "platform/browser/film.h"
#include "platform/browser/plane_view.h"

namespace browser {

class TvWindow {
 public:
  struct Handlers {
    std::function<void()> closed;  ///< by the user
    /// @param held the page has got it already. @return true for a key that is not the page's.
    std::function<bool(guint pcKey, GdkModifierType modifiers, bool held)> key;
    std::function<void(cairo_t*, int width, int height)> paintAbove;  ///< draws over page and plane
  };

  /// The window takes the view and stays hidden until show().
  TvWindow(WebKitWebView* view, PlaneView& plane, Handlers handlers);
  TvWindow(const TvWindow&) = delete;
  TvWindow& operator=(const TvWindow&) = delete;
  ~TvWindow();

  void show(int width, int height, bool fullScreen);
  void setTitle(const std::string& title);
  void toggleFullScreen();
  /// Draws everything again. Part of the view would not do: the engine then draws another part of the page.
  void redraw();
  /// Presses and releases a key of the remote control, as the keyboard would.
  void press(guint sentKey);
  /// Calls @p done after the next picture has reached the window.
  void whenDrawn(std::function<void()> done);
  /// Every frame from now on belongs into the film. After show().
  void beginFilm(std::unique_ptr<Film> film);
  /// @return false when there was a film and something of it could not be written.
  bool endFilm();
  /// Writes what the window shows. @return false, with one line in @p error.
  bool screenshot(const std::string& path, std::string& error) const;

 private:
  static void onSize(GtkWidget* view, GtkAllocation* size, gpointer self);
  static gboolean onDraw(GtkWidget* view, cairo_t* cairo, gpointer self);
  static gboolean onDrawn(GtkWidget* view, cairo_t* cairo, gpointer self);
  static gboolean onKey(GtkWidget* view, GdkEventKey* event, gpointer self);
  static gboolean onFocusOut(GtkWidget* view, GdkEvent* event, gpointer self);
  static gboolean onDelete(GtkWidget* window, GdkEvent* event, gpointer self);
  static void onPainted(GdkFrameClock* clock, gpointer self);

  void sendKey(guint sentKey, GdkEventType type);
  /// Whether the engine gives back a press that the page had and left alone. It goes past this window, as the engine expects.
  bool isReturned(const GdkEventKey& event) const;
  void notePassed(const GdkEventKey& event);

  WebKitWebView* m_view;
  PlaneView& m_plane;
  Handlers m_handlers;
  GtkWidget* m_window;
  GtkWidget* m_content;  ///< keeps the view in the television's shape
  std::function<void()> m_whenDrawn;
  gulong m_painted = 0;
  std::set<guint16> m_ownKeys;                     ///< pressed ones that were not the page's; nor is their release
  std::set<guint16> m_pageKeys;                    ///< pressed ones that were
  std::deque<std::pair<guint32, guint>> m_passed;  ///< time and symbol of the latest presses that the page has got
  guint32 m_sentAt = 0;                            ///< time of the latest event made here, in ms; no two have the same
  std::unique_ptr<Film> m_film;
  bool m_fullScreen = false;
  bool m_redraws = false;  ///< it is the window itself that asks for it
};

}  // namespace browser
