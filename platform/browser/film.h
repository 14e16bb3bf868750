// SPDX-License-Identifier: Apache-2.0
// Every frame that the window paints, in a file: portable pixmaps, one after another, each with the time at which it was painted.
// Window's process, main thread.
#pragma once

#include <gtk/gtk.h>

#include <cstdio>
#include <memory>
#include <string>

namespace browser {

/// A part of the window, in its pixels.
struct FilmFrame {
  int x = 0;
  int y = 0;
  int width = 0;  ///< 0: to the edges of the window
  int height = 0;
};

class Film {
 public:
  /// @return null, with one line in @p error, when the file cannot be written.
  static std::unique_ptr<Film> open(const std::string& path, const FilmFrame& frame, std::string& error);
  Film(const Film&) = delete;
  Film& operator=(const Film&) = delete;
  ~Film();

  /// Films @p window, which is shown already, until the end of the film. It must outlive the film.
  void begin(GtkWidget* window);
  /// Something is being painted: what the window shows then is the next frame.
  void expose() { m_exposed = true; }
  /// No more frames. @return false when something could not be written.
  bool end();

 private:
  Film(std::FILE* file, const FilmFrame& frame) : m_file(file), m_frame(frame) {}
  static void onPainted(GdkFrameClock* clock, gpointer self);
  void take();
  void write(const GdkPixbuf* picture);

  std::FILE* m_file;
  FilmFrame m_frame;
  GtkWidget* m_window = nullptr;
  gulong m_handler = 0;
  bool m_exposed = false;
  bool m_good = true;
};

}  // namespace browser
