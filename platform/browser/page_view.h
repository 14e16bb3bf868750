// SPDX-License-Identifier: Apache-2.0
// The engine's view of the page, which also tells when the page has something new to paint. Window's process, main thread.
#pragma once

#include <webkit2/webkit2.h>

#include <functional>

namespace browser {

/// A type of its own for the sake of onRedrawAsked; made as any WebKitWebView.
GType pageViewType();
/// @p asked is called whenever somebody asks to draw @p view, until the view ends or another function takes its place.
void onRedrawAsked(WebKitWebView* view, std::function<void()> asked);

}  // namespace browser
