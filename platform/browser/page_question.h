// SPDX-License-Identifier: Apache-2.0
// Asks the page's process something. Window's process, main thread.
#pragma once

#include <webkit2/webkit2.h>

#include <functional>

namespace browser {

/// Sends the message @p question of messages.h. @p answered gets the answer, which is of @p type and not its own to keep, or null
/// when there is none: the process is gone, or busy with its end. It is not called when @p cancel came first.
/// @p parameters, which may be floating, go with the question.
void askPage(WebKitWebView* view, const char* question, const char* type, GCancellable* cancel,
             std::function<void(GVariant* answer)> answered, GVariant* parameters = nullptr);

}  // namespace browser
