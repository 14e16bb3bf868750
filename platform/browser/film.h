// SPDX-License-Identifier: Apache-2.0
// Every frame that the window paints, in a file: portable pixmaps, one after another, each with the time at which it was painted.
// Window's process, main thread.
#pragma once

#include <gtk/gtk.h>

#include <cstdio>
#include <memory>
#include <string>

#include "platform/browser/window_picture.h"

namespace browser {

class Film {
 public:
  /// @return null, with one line in @p error, when the file cannot be written.
  static std::unique_ptr<Film> open(const std::string& path, const WindowPart& part, std::string& error);
  Film(const Film&) = delete;
  Film& operator=(const Film&) = delete;
  ~Film();

  /// Films @p content, which fills a window that is shown already, until the end of the film. It must outlive the film.
  void begin(GtkWidget* content);
  /// Something is being painted: what the window shows then is the next frame.
  void expose() { m_exposed = true; }
  /// No more frames. @return false when something could not be written.
  bool end();

 private:
  Film(std::FILE* file, const WindowPart& part) : m_file(file), m_part(part) {}
  static void onPainted(GdkFrameClock* clock, gpointer self);
  void take();
  void write(const GdkPixbuf* picture);

  std::FILE* m_file;
  WindowPart m_part;
  GtkWidget* m_content = nullptr;
  gulong m_handler = 0;
  bool m_exposed = false;
  bool m_good = true;
};

}  // namespace browser
