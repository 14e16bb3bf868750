// SPDX-License-Identifier: Apache-2.0
#include "platform/browser/film.h"

#include <cerrno>
#include <utility>

namespace browser {

std::unique_ptr<Film> Film::open(const std::string& path, const WindowPart& part, std::string& error) {
  std::FILE* const file = std::fopen(path.c_str(), "wbe");
  if (file != nullptr) return std::unique_ptr<Film>(new Film(file, part));
  error = "cannot write the film " + path + ": " + g_strerror(errno);
  return nullptr;
}

Film::~Film() { end(); }

bool Film::end() {
  if (m_handler != 0) g_signal_handler_disconnect(gtk_widget_get_frame_clock(m_content), std::exchange(m_handler, 0));
  if (m_file != nullptr && std::fclose(std::exchange(m_file, nullptr)) != 0) m_good = false;
  return m_good;
}

void Film::begin(GtkWidget* content) {
  m_content = content;
  m_handler = g_signal_connect(gtk_widget_get_frame_clock(content), "after-paint", G_CALLBACK(onPainted), this);
}

// The clock ticks also when there is nothing to paint. To take the picture may mean to paint once more: that is no next frame.
void Film::onPainted(GdkFrameClock*, gpointer self) {
  auto& film = *static_cast<Film*>(self);
  if (!film.m_exposed) return;
  film.take();
  film.m_exposed = false;
}

void Film::take() {
  GdkPixbuf* const picture = pictureOf(m_content, m_part);
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
