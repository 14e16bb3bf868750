// SPDX-License-Identifier: Apache-2.0
// What a window shows, without the frame that a desktop puts around it. Window's process, main thread.
#pragma once

#include <gtk/gtk.h>

namespace browser {

struct WindowPart {
  int x = 0;
  int y = 0;
  int width = 0;  ///< 0: to the edges of the window
  int height = 0;
};

/// A picture of that part of @p content, which fills its window, in pixels of the screen; the caller's. Null when the desktop gives
/// none.
/// Right after the window has been painted: on Wayland nobody can read a window, so its content is painted once more.
GdkPixbuf* pictureOf(GtkWidget* content, const WindowPart& part);

}  // namespace browser
