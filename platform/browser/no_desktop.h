// SPDX-License-Identifier: Apache-2.0
// What a page could do to the viewer's desktop and cannot do to a television: windows to print, to log in, to choose a file or a
// colour, menus, and files in the viewer's folders. Window's process, its main thread.
#pragma once

#include <webkit2/webkit2.h>

namespace browser {

/// Refuses them for good. What a developer would wonder about is a console line.
void keepToTheTelevision(WebKitWebView* view, WebKitWebContext* context);

/// @return false for an address that only another program could open: going there would end the application that asks for it.
bool canBeGoneTo(const char* address);

}  // namespace browser
