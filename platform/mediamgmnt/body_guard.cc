// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/body_guard.h"

#include <libsoup/soup.h>

#include <atomic>
#include <mutex>

namespace mediamgmnt {
namespace {

constexpr const char* kBodyType = "SoupClientInputStream";  // has no public name of its own
constexpr const char* kFinished = "avc-finished";

using Close = gboolean (*)(GInputStream*, GCancellable*, GError**);
std::atomic<Close> closeOfLibrary = nullptr;

gboolean closeUnlessFinished(GInputStream* body, GCancellable* cancellable, GError** error) {
  SoupMessage* message = nullptr;
  g_object_get(body, "message", &message, nullptr);
  const bool finished = message == nullptr || g_object_get_data(G_OBJECT(message), kFinished) != nullptr;
  g_clear_object(&message);
  return finished ? TRUE : closeOfLibrary.load()(body, cancellable, error);
}

/// The type is there as soon as there is a body.
void takeClosesOver() {
  static std::mutex mutex;
  const std::lock_guard lock(mutex);
  const GType type = g_type_from_name(kBodyType);
  if (closeOfLibrary != nullptr || type == G_TYPE_INVALID) return;
  auto* const bodies = G_INPUT_STREAM_CLASS(g_type_class_ref(type));  // for good
  closeOfLibrary = bodies->close_fn;
  bodies->close_fn = closeUnlessFinished;
}

/// A session says this on its thread when it takes a message up, which may be for another time, and when it has finished with it.
template <bool kIsFinished>
gboolean onMessage(GSignalInvocationHint*, guint, const GValue* values, gpointer) {
  if (kIsFinished) takeClosesOver();
  g_object_set_data(static_cast<GObject*>(g_value_get_object(values + 1)), kFinished, GINT_TO_POINTER(kIsFinished));
  return TRUE;
}

void listen(const char* signal, GSignalEmissionHook hook) {
  g_signal_add_emission_hook(g_signal_lookup(signal, SOUP_TYPE_SESSION), 0, hook, nullptr, nullptr);
}

}  // namespace

void guardCancelledBodies() {
  static std::once_flag begun;
  std::call_once(begun, [] {
    g_type_class_unref(g_type_class_ref(SOUP_TYPE_SESSION));
    listen("request-queued", onMessage<false>);
    listen("request-unqueued", onMessage<true>);
  });
}

}  // namespace mediamgmnt
