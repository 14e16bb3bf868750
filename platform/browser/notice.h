// SPDX-License-Identifier: Apache-2.0
// What the shell itself has to say to the viewer. Window's process, main thread.
#pragma once

#include <cairo.h>

#include <string>

namespace browser {

/// A whole page with a heading and a text.
std::string noticePage(const std::string& heading, const std::string& text);
/// The same painted over @p width times @p height, where there is no page.
void paintNotice(cairo_t* cairo, int width, int height, const std::string& heading, const std::string& text);

}  // namespace browser
