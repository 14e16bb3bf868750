// SPDX-License-Identifier: Apache-2.0
// What the shell paints over page and video: status, help, loading. Window's process, main thread.
#pragma once

#include <cairo.h>

#include <string>

namespace browser {

class Overlay {
 public:
  bool statusShown = false;
  bool helpShown = false;
  std::string status;   ///< the lines to show
  double loading = 1;   ///< part of the page that has been loaded; below 1 a bar is shown
  std::string notice;   ///< a word to the viewer, when not empty
  std::string crashed;  ///< when not empty, takes the place of the page

  /// Paints over @p width times @p height pixels.
  void paint(cairo_t* cairo, int width, int height) const;
};

/// A whole page with a heading and a text.
std::string noticePage(const std::string& heading, const std::string& text);

}  // namespace browser
