// SPDX-License-Identifier: Apache-2.0
#include "platform/browser/notice.h"

#include <glib.h>
#include <pango/pangocairo.h>

namespace browser {

namespace {

std::string escaped(const std::string& text) {
  char* const markup = g_markup_escape_text(text.c_str(), -1);
  const std::string out = markup;
  g_free(markup);
  return out;
}

void write(cairo_t* cairo, const std::string& text, const char* font, double centre, double y) {
  PangoLayout* const layout = pango_cairo_create_layout(cairo);
  PangoFontDescription* const description = pango_font_description_from_string(font);
  pango_layout_set_font_description(layout, description);
  pango_font_description_free(description);
  pango_layout_set_text(layout, text.c_str(), -1);
  int width = 0;
  pango_layout_get_pixel_size(layout, &width, nullptr);
  cairo_move_to(cairo, centre - width / 2.0, y);
  pango_cairo_show_layout(cairo, layout);
  g_object_unref(layout);
}

}  // namespace

std::string noticePage(const std::string& heading, const std::string& text) {
  return "<!DOCTYPE html><title>" + escaped(heading) +
         "</title><body style='margin:0;background:#101418;color:#e8ecf0;font-family:sans-serif;text-align:center'>"
         "<h1 style='margin:280px 0 24px;font-weight:normal'>" +
         escaped(heading) + "</h1><p style='font-size:22px'>" + escaped(text) + "</p>";
}

void paintNotice(cairo_t* cairo, int width, int height, const std::string& heading, const std::string& text) {
  cairo_save(cairo);
  cairo_set_source_rgb(cairo, 0.06, 0.08, 0.1);
  cairo_paint(cairo);
  cairo_scale(cairo, width / 1280.0, height / 720.0);
  cairo_set_source_rgb(cairo, 0.91, 0.93, 0.95);
  write(cairo, heading, "sans 28", 640, 290);
  write(cairo, text, "sans 18", 640, 360);
  cairo_restore(cairo);
}

}  // namespace browser
