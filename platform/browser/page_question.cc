// SPDX-License-Identifier: Apache-2.0
#include "platform/browser/page_question.h"

#include <memory>
#include <utility>

namespace browser {

namespace {

struct Question {
  const char* type;
  std::function<void(GVariant*)> answered;
};

void onAnswer(GObject* view, GAsyncResult* result, gpointer data) {
  const std::unique_ptr<Question> question(static_cast<Question*>(data));
  GError* error = nullptr;
  WebKitUserMessage* const reply = webkit_web_view_send_message_to_page_finish(WEBKIT_WEB_VIEW(view), result, &error);
  GVariant* const parameters = reply == nullptr ? nullptr : webkit_user_message_get_parameters(reply);
  const bool understood = parameters != nullptr && g_variant_is_of_type(parameters, G_VARIANT_TYPE(question->type));
  if (!g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED)) question->answered(understood ? parameters : nullptr);
  g_clear_error(&error);
  if (reply != nullptr) g_object_unref(reply);
}

}  // namespace

void askPage(WebKitWebView* view, const char* question, const char* type, GCancellable* cancel,
             std::function<void(GVariant* answer)> answered, GVariant* parameters) {
  webkit_web_view_send_message_to_page(view, webkit_user_message_new(question, parameters), cancel, onAnswer,
                                       new Question{type, std::move(answered)});
}

}  // namespace browser
