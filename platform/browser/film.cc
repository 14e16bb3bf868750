// SPDX-License-Identifier: Apache-2.0
#include "platform/browser/film.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace browser {

std::unique_ptr<Film> Film::open(const std::string& path, const FilmFrame& frame, std::string& error) {
  std::FILE* const file = std::fopen(path.c_str(), "wbe");
  if (file != nullptr) return std::unique_ptr<Film>(new Film(file, frame));
  error = "cannot write the film " + path + ": " + g_strerror(errno);
  return nullptr;
}

Film::~Film() { end(); }

bool Film::end() {
  if (m_handler != 0) g_signal_handler_disconnect(gtk_widget_get_frame_clock(m_window), std::exchange(m_handler, 0));
  if (m_file != nullptr && std::fclose(std::exchange(m_file, nullptr)) != 0) m_good = false;
  return m_good;
}

void Film::begin(GtkWidget* window) {
  m_window = window;
  m_handler = g_signal_connect(gtk_widget_get_frame_clock(window), "after-paint", G_CALLBACK(onPainted), this);
}

// The clock ticks also when there is nothing to paint.
void Film::onPainted(GdkFrameClock*, gpointer self) {
  auto& film = *static_cast<Film*>(self);
  if (std::exchange(film.m_exposed, false)) film.take();
}

void Film::take() {
  GdkWindow* const window = gtk_widget_get_window(m_window);
  const int x = std::min(m_frame.x, gdk_window_get_width(window) - 1);
  const int y = std::min(m_frame.y, gdk_window_get_height(window) - 1);
  const int wide = gdk_window_get_width(window) - x;
  const int high = gdk_window_get_height(window) - y;
  GdkPixbuf* const picture = gdk_pixbuf_get_from_window(window, x, y, m_frame.width == 0 ? wide : std::min(m_frame.width, wide),
                                                        m_frame.height == 0 ? high : std::min(m_frame.height, high));
  if (picture == nullptr) return;
  write(picture);
  g_object_unref(picture);
}

void Film::write(const GdkPixbuf* picture) {
  const int width = gdk_pixbuf_get_width(picture);
  const int height = gdk_pixbuf_get_height(picture);
  const int channels = gdk_pixbuf_get_n_channels(picture);
  const guint8* const pixels = gdk_pixbuf_read_pixels(picture);
  std::string out =
      "P6\n# " + std::to_string(g_get_real_time()) + "\n" + std::to_string(width) + " " + std::to_string(height) + "\n255\n";
  for (int line = 0; line < height; ++line) {
    const guint8* pixel = pixels + std::ptrdiff_t{line} * gdk_pixbuf_get_rowstride(picture);
    for (int i = 0; i < width; ++i, pixel += channels) out.append(reinterpret_cast<const char*>(pixel), 3);
  }
  m_good = std::fwrite(out.data(), 1, out.size(), m_file) == out.size() && m_good;
}

}  // namespace browser
