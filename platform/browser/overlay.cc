// SPDX-License-Identifier: Apache-2.0
#include "platform/browser/overlay.h"

#include <glib.h>
#include <pango/pangocairo.h>

#include <algorithm>

#include "platform/browser/remote_keys.h"

namespace browser {

namespace {

constexpr double kPageWidth = 1280;
constexpr double kPageHeight = 720;
constexpr double kMargin = 32;
constexpr double kPadding = 16;

// Everything is painted in page pixels.
void scaleToPage(cairo_t* cairo, int width, int height) { cairo_scale(cairo, width / kPageWidth, height / kPageHeight); }

PangoLayout* makeLayout(cairo_t* cairo, const std::string& text, const char* font) {
  PangoLayout* const layout = pango_cairo_create_layout(cairo);
  PangoFontDescription* const description = pango_font_description_from_string(font);
  pango_layout_set_font_description(layout, description);
  pango_font_description_free(description);
  pango_layout_set_text(layout, text.c_str(), -1);
  return layout;
}

void paintCentred(cairo_t* cairo, const std::string& text, const char* font, double y) {
  PangoLayout* const layout = makeLayout(cairo, text, font);
  int width = 0;
  pango_layout_get_pixel_size(layout, &width, nullptr);
  cairo_move_to(cairo, (kPageWidth - width) / 2, y);
  pango_cairo_show_layout(cairo, layout);
  g_object_unref(layout);
}

// What is too high for the page, as fonts differ, is made smaller.
void paintPanel(cairo_t* cairo, const std::string& text, const char* font, double x, double y) {
  PangoLayout* const layout = makeLayout(cairo, text, font);
  int width = 0;
  int height = 0;
  pango_layout_get_pixel_size(layout, &width, &height);
  const double scale = std::min(1.0, (kPageHeight - kMargin - y) / (height + 2 * kPadding));
  cairo_save(cairo);
  cairo_translate(cairo, x, y);
  cairo_scale(cairo, scale, scale);
  cairo_set_source_rgba(cairo, 0.04, 0.06, 0.08, 0.82);
  cairo_rectangle(cairo, 0, 0, width + 2 * kPadding, height + 2 * kPadding);
  cairo_fill(cairo);
  cairo_set_source_rgb(cairo, 0.91, 0.93, 0.95);
  cairo_move_to(cairo, kPadding, kPadding);
  pango_cairo_show_layout(cairo, layout);
  cairo_restore(cairo);
  g_object_unref(layout);
}

std::string padded(std::string text, std::size_t width) {
  if (text.size() < width) text.append(width - text.size(), ' ');
  return text;
}

std::string helpText() {
  std::string out = "Remote control   Keyboard\n";
  for (const RemoteKey& key : remoteKeys()) {
    const std::string name = key.name;
    if (name.size() > 1) out += padded(name, 17) + key.keyboard + "\n";
  }
  return out +
         "0 to 9           0 to 9\n\nStatus           F11\nThis help        F12\nFull screen      Alt+Enter\nQuit             "
         "Ctrl+Q";
}

}  // namespace

void Overlay::paint(cairo_t* cairo, int width, int height) const {
  cairo_save(cairo);
  if (!crashed.empty()) {
    cairo_set_source_rgb(cairo, 0.06, 0.08, 0.1);
    cairo_paint(cairo);
  }
  scaleToPage(cairo, width, height);
  if (!crashed.empty()) {
    cairo_set_source_rgb(cairo, 0.91, 0.93, 0.95);
    paintCentred(cairo, crashed, "sans 28", 290);
    paintCentred(cairo, "Enter starts the page again.", "sans 18", 360);
  }
  if (loading < 1) {
    cairo_set_source_rgb(cairo, 0.2, 0.6, 0.9);
    cairo_rectangle(cairo, 0, 0, kPageWidth * loading, 4);
    cairo_fill(cairo);
  }
  if (statusShown) paintPanel(cairo, status, "monospace 12", kMargin, kMargin);
  if (!notice.empty()) paintPanel(cairo, notice, "sans 18", 560, 610);
  if (helpShown) paintPanel(cairo, helpText(), "monospace 13", 820, kMargin);
  cairo_restore(cairo);
}

std::string noticePage(const std::string& heading, const std::string& text) {
  char* const safeHeading = g_markup_escape_text(heading.c_str(), -1);
  char* const safeText = g_markup_escape_text(text.c_str(), -1);
  std::string out = std::string("<!DOCTYPE html><title>") + safeHeading +
                    "</title><body style='margin:0;background:#101418;color:#e8ecf0;font-family:sans-serif;text-align:center'>"
                    "<h1 style='margin:280px 0 24px;font-weight:normal'>" +
                    safeHeading + "</h1><p style='font-size:22px'>" + safeText + "</p>";
  g_free(safeText);
  g_free(safeHeading);
  return out;
}

}  // namespace browser
