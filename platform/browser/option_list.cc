// SPDX-License-Identifier: Apache-2.0
#include "platform/browser/option_list.h"

#include <gdk/gdkkeysyms.h>
#include <pango/pangocairo.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "platform/mediamgmnt/media_plane.h"

namespace browser {

namespace {

constexpr int kRow = 32;
constexpr int kMostRows = 16;
constexpr int kPadding = 12;
constexpr int kIndent = 16;
constexpr int kLeastWidth = 160;
constexpr int kMostWidth = 640;
constexpr int kMargin = 8;  // to the edges of the page
constexpr std::size_t kMostBytes = 200;

constexpr gint64 kLatestUs = 1'000'000;
constexpr guint kWatchMilliseconds = 100;
// Whether what had the focus at the first look still has it, and a place on the page. In a world of its own, which ends with its
// page.
constexpr char kOwnerIsThere[] =
    "let at = document.activeElement;"
    "for (let next = at; next; next = at.shadowRoot?.activeElement ?? at.contentDocument?.activeElement) at = next;"
    "if (isFirstLook) globalThis.listOwner = at;"
    "return at !== null && at === globalThis.listOwner && at.getClientRects().length > 0;";

// The engine hears of it only once it has handed the menu over.
void closeSoon(WebKitOptionMenu* menu) {
  const auto close = +[](gpointer data) -> gboolean {
    webkit_option_menu_close(WEBKIT_OPTION_MENU(data));
    return G_SOURCE_REMOVE;
  };
  g_idle_add_full(G_PRIORITY_DEFAULT, close, g_object_ref(menu), &g_object_unref);
}

int itemsOf(WebKitOptionMenu* menu) { return static_cast<int>(webkit_option_menu_get_n_items(menu)); }

WebKitOptionMenuItem* itemAt(WebKitOptionMenu* menu, int index) {
  return webkit_option_menu_get_item(menu, static_cast<guint>(index));
}

bool canBeChosen(WebKitOptionMenu* menu, int index) {
  WebKitOptionMenuItem* const item = itemAt(menu, index);
  return webkit_option_menu_item_is_enabled(item) != FALSE && webkit_option_menu_item_is_group_label(item) == FALSE;
}

PangoLayout* makeLayout(cairo_t* cairo, WebKitOptionMenuItem* item) {
  const char* const label = webkit_option_menu_item_get_label(item);
  std::string text = label == nullptr ? "" : label;
  if (text.size() > kMostBytes)
    text.resize(static_cast<std::size_t>(g_utf8_find_prev_char(text.c_str(), text.c_str() + kMostBytes) - text.c_str()));
  PangoLayout* const layout = pango_cairo_create_layout(cairo);
  PangoFontDescription* const font =
      pango_font_description_from_string(webkit_option_menu_item_is_group_label(item) != FALSE ? "sans bold 14" : "sans 14");
  pango_layout_set_font_description(layout, font);
  pango_font_description_free(font);
  pango_layout_set_single_paragraph_mode(layout, TRUE);
  pango_layout_set_ellipsize(layout, PANGO_ELLIPSIZE_END);
  pango_layout_set_text(layout, text.c_str(), -1);
  return layout;
}

int indentOf(WebKitOptionMenuItem* item) { return webkit_option_menu_item_is_group_child(item) != FALSE ? kIndent : 0; }

int widthOf(cairo_t* cairo, WebKitOptionMenuItem* item) {
  PangoLayout* const layout = makeLayout(cairo, item);
  int width = 0;
  pango_layout_get_pixel_size(layout, &width, nullptr);
  g_object_unref(layout);
  return width + indentOf(item) + 2 * kPadding;
}

void paintRow(cairo_t* cairo, WebKitOptionMenuItem* item, int width, bool marked) {
  if (marked) {
    cairo_set_source_rgb(cairo, 0.2, 0.6, 0.9);
    cairo_rectangle(cairo, 0, 0, width, kRow);
    cairo_fill(cairo);
  }
  const double brightness = webkit_option_menu_item_is_enabled(item) != FALSE ? 0.95 : 0.5;
  cairo_set_source_rgb(cairo, brightness, brightness, brightness);
  const int left = kPadding + indentOf(item);
  PangoLayout* const layout = makeLayout(cairo, item);
  pango_layout_set_width(layout, std::max(0, width - left - kPadding) * PANGO_SCALE);
  int height = 0;
  pango_layout_get_pixel_size(layout, nullptr, &height);
  cairo_move_to(cairo, left, (kRow - height) / 2.0);
  pango_cairo_show_layout(cairo, layout);
  g_object_unref(layout);
}

}  // namespace

OptionList::OptionList(WebKitWebView* view, std::function<void()> changed) : m_view(view), m_changed(std::move(changed)) {
  g_signal_connect(view, "show-option-menu", G_CALLBACK(onShow), this);
}

OptionList::~OptionList() {
  g_signal_handlers_disconnect_by_data(m_view, this);
  forget();
}

void OptionList::keyPassed(guint sentKey) {
  if (sentKey == GDK_KEY_Return || sentKey == GDK_KEY_KP_Enter) m_enterUs = g_get_monotonic_time();
}

// Whoever clicks has a pointer and takes the desktop's menu.
gboolean OptionList::onShow(WebKitWebView*, WebKitOptionMenu* menu, GdkEvent* event, GdkRectangle* place, gpointer self) {
  if (event != nullptr && event->type == GDK_BUTTON_PRESS) return FALSE;
  auto& list = *static_cast<OptionList*>(self);
  const bool isAskedFor = g_get_monotonic_time() - list.m_enterUs < kLatestUs;
  isAskedFor ? list.show(menu, *place) : closeSoon(menu);
  return TRUE;
}

void OptionList::onClose(WebKitOptionMenu*, gpointer self) {
  auto& list = *static_cast<OptionList*>(self);
  list.forget();
  list.m_changed();
}

void OptionList::show(WebKitOptionMenu* menu, const GdkRectangle& place) {
  close();
  m_menu = WEBKIT_OPTION_MENU(g_object_ref(menu));
  g_signal_connect(menu, "close", G_CALLBACK(onClose), this);
  const double scale = static_cast<double>(kMediaPlaneWidth) / std::max(1, gtk_widget_get_allocated_width(GTK_WIDGET(m_view)));
  const auto inPage = [scale](int length) { return static_cast<int>(std::lround(length * scale)); };
  m_place = {inPage(place.x), inPage(place.y), inPage(place.width), inPage(place.height)};
  m_marked = -1;
  for (int i = 0; i < itemsOf(menu); ++i) {
    if (webkit_option_menu_item_is_selected(itemAt(menu, i)) != FALSE) m_marked = i;
  }
  m_changed();
  watchOwner();
}

// The engine leaves the list to whoever shows it also when its element goes.
void OptionList::watchOwner() {
  m_looks = g_cancellable_new();
  lookForOwner(true);
  const auto look = [](gpointer self) -> gboolean {
    static_cast<OptionList*>(self)->lookForOwner(false);
    return G_SOURCE_CONTINUE;
  };
  m_watch = g_timeout_add(kWatchMilliseconds, look, this);
}

void OptionList::lookForOwner(bool isFirst) {
  const auto finish = [](GObject* view, GAsyncResult* result, gpointer self) {
    GError* error = nullptr;
    JSCValue* const value = webkit_web_view_call_async_javascript_function_finish(WEBKIT_WEB_VIEW(view), result, &error);
    // No answer comes from a page that is being replaced, which closes the list by itself.
    const bool isThere = value == nullptr || jsc_value_to_boolean(value) != FALSE;
    if (value != nullptr) g_object_unref(value);
    if (!g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED) && !isThere) static_cast<OptionList*>(self)->close();
    g_clear_error(&error);
  };
  const std::string look = std::string("const isFirstLook = ") + (isFirst ? "true;" : "false;") + kOwnerIsThere;
  webkit_web_view_call_async_javascript_function(m_view, look.c_str(), -1, nullptr, "avc-browser", "avc-browser:options", m_looks,
                                                 finish, this);
}

void OptionList::forget() {
  if (m_menu == nullptr) return;
  g_source_remove(std::exchange(m_watch, 0));
  g_cancellable_cancel(m_looks);
  g_clear_object(&m_looks);
  g_signal_handlers_disconnect_by_data(m_menu, this);
  g_object_unref(std::exchange(m_menu, nullptr));
}

void OptionList::close() {
  if (m_menu == nullptr) return;
  WebKitOptionMenu* const menu = WEBKIT_OPTION_MENU(g_object_ref(m_menu));
  forget();
  webkit_option_menu_close(menu);
  g_object_unref(menu);
  m_changed();
}

void OptionList::choose() {
  if (m_marked >= 0) webkit_option_menu_activate_item(m_menu, static_cast<guint>(m_marked));
  close();
}

void OptionList::move(int step) {
  const int count = itemsOf(m_menu);
  int next = m_marked + step;
  while (next >= 0 && next < count && !canBeChosen(m_menu, next)) next += step;
  if (next < 0 || next >= count) return;
  m_marked = next;
  m_changed();
}

bool OptionList::key(guint sentKey) {
  if (m_menu == nullptr) return false;
  switch (sentKey) {
    case GDK_KEY_Up: move(-1); break;
    case GDK_KEY_Down: move(1); break;
    case GDK_KEY_Return:
    case GDK_KEY_KP_Enter: choose(); break;
    case GDK_KEY_Back: close(); break;
    default: break;
  }
  return true;
}

void OptionList::paint(cairo_t* cairo, int windowWidth, int windowHeight) const {
  if (m_menu == nullptr) return;
  cairo_save(cairo);
  cairo_scale(cairo, static_cast<double>(windowWidth) / kMediaPlaneWidth, static_cast<double>(windowHeight) / kMediaPlaneHeight);
  const int count = itemsOf(m_menu);
  const int rows = std::min(count, kMostRows);
  const int first = std::clamp(m_marked - rows / 2, 0, count - rows);
  int width = std::max(kLeastWidth, m_place.width);
  for (int i = first; i < first + rows; ++i) width = std::max(width, widthOf(cairo, itemAt(m_menu, i)));
  width = std::min(width, kMostWidth);
  const int height = rows * kRow;
  const int below = m_place.y + m_place.height;
  const int wanted = below + height + kMargin <= kMediaPlaneHeight ? below : m_place.y - height;
  const int x = std::clamp(m_place.x, kMargin, kMediaPlaneWidth - kMargin - width);
  const int y = std::clamp(wanted, kMargin, kMediaPlaneHeight - kMargin - height);
  cairo_translate(cairo, x, y);
  cairo_set_source_rgba(cairo, 0.04, 0.06, 0.08, 0.95);
  cairo_rectangle(cairo, 0, 0, width, height);
  cairo_fill(cairo);
  for (int i = first; i < first + rows; ++i) {
    paintRow(cairo, itemAt(m_menu, i), width, i == m_marked);
    cairo_translate(cairo, 0, kRow);
  }
  cairo_restore(cairo);
}

}  // namespace browser
