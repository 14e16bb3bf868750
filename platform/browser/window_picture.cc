// SPDX-License-Identifier: Apache-2.0
#include "platform/browser/window_picture.h"

#include <gdk/gdkwayland.h>

#include <algorithm>

namespace browser {

namespace {

// The part within the content, as large as can be.
GdkRectangle clip(const WindowPart& part, int width, int height) {
  const int x = std::min(part.x, width - 1);
  const int y = std::min(part.y, height - 1);
  return {x, y, part.width == 0 ? width - x : std::min(part.width, width - x),
          part.height == 0 ? height - y : std::min(part.height, height - y)};
}

GdkPixbuf* paintAgain(GtkWidget* content, const GdkRectangle& part) {
  const int scale = gtk_widget_get_scale_factor(content);
  const int width = part.width * scale;
  const int height = part.height * scale;
  cairo_surface_t* const surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height);
  cairo_t* const cairo = cairo_create(surface);
  cairo_scale(cairo, scale, scale);
  cairo_translate(cairo, -part.x, -part.y);
  gtk_widget_draw(content, cairo);
  cairo_destroy(cairo);
  GdkPixbuf* const picture = gdk_pixbuf_get_from_surface(surface, 0, 0, width, height);
  cairo_surface_destroy(surface);
  return picture;
}

}  // namespace

GdkPixbuf* pictureOf(GtkWidget* content, const WindowPart& part) {
  const GdkRectangle seen = clip(part, gtk_widget_get_allocated_width(content), gtk_widget_get_allocated_height(content));
  if (GDK_IS_WAYLAND_DISPLAY(gtk_widget_get_display(content)) != 0) return paintAgain(content, seen);
  GtkAllocation place;
  gtk_widget_get_allocation(content, &place);
  return gdk_pixbuf_get_from_window(gtk_widget_get_window(content), place.x + seen.x, place.y + seen.y, seen.width, seen.height);
}

}  // namespace browser
