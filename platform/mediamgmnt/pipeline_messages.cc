// SPDX-License-Identifier: Apache-2.0
// What the pipeline's elements say, and what it means. The messages are only queued on the thread that posts them.
#include <cstring>

#include "platform/mediamgmnt/content_choice.h"
#include "platform/mediamgmnt/pipeline.h"

namespace mediamgmnt {
namespace {

bool isHandled(GstMessage* message, GstElement* pipeline) {
  switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_STATE_CHANGED: return GST_MESSAGE_SRC(message) == GST_OBJECT(pipeline);
    case GST_MESSAGE_ERROR:
    case GST_MESSAGE_EOS:
    case GST_MESSAGE_BUFFERING:
    case GST_MESSAGE_ELEMENT:
    case GST_MESSAGE_STREAM_COLLECTION:
    case GST_MESSAGE_STREAMS_SELECTED:
    case GST_MESSAGE_ASYNC_DONE: return true;
    default: return false;
  }
}

bool startsWith(const char* text, const char* prefix) { return std::strncmp(text, prefix, std::strlen(prefix)) == 0; }

bool isAdaptiveDemux(GstObject* object) {
  if (object == nullptr || !GST_IS_ELEMENT(object)) return false;
  GstElementFactory* const factory = gst_element_get_factory(GST_ELEMENT(object));
  if (factory == nullptr) return false;
  const char* const name = GST_OBJECT_NAME(factory);
  return std::strcmp(name, "dashdemux2") == 0 || std::strcmp(name, "hlsdemux2") == 0;
}

/// A GstBaseSrc, looked up by name so that the base library need not be linked.
bool isSource(GstObject* object) {
  const GType type = g_type_from_name("GstBaseSrc");
  return object != nullptr && type != 0 && g_type_is_a(G_OBJECT_TYPE(object), type);
}

/// Streams that playback can do without.
bool isTextLike(const char* mediaType) {
  return startsWith(mediaType, "text/") || startsWith(mediaType, "subpicture/") || startsWith(mediaType, "subtitle/") ||
         startsWith(mediaType, "closedcaption/") || startsWith(mediaType, "application/x-teletext") ||
         startsWith(mediaType, "application/x-subtitle") || startsWith(mediaType, "meta/") || startsWith(mediaType, "private/");
}

/// The names of headers are as the server wrote them.
gboolean noteContentType(GQuark name, const GValue* value, gpointer out) {
  if (g_ascii_strcasecmp(g_quark_to_string(name), "content-type") != 0 || !G_VALUE_HOLDS_STRING(value)) return TRUE;
  *static_cast<std::string*>(out) = g_value_get_string(value);
  return FALSE;
}

std::string servedType(const GstStructure& httpHeaders) {
  const GValue* const headers = gst_structure_get_value(&httpHeaders, "response-headers");
  std::string type;
  if (headers != nullptr && GST_VALUE_HOLDS_STRUCTURE(headers)) {
    gst_structure_foreach(gst_value_get_structure(headers), noteContentType, &type);
  }
  return type;
}

/// 0 where the error is none of a server's.
unsigned int httpStatusOf(GstMessage* message) {
  const GstStructure* details = nullptr;
  guint status = 0;
  gst_message_parse_error_details(message, &details);
  if (details != nullptr) gst_structure_get_uint(details, "http-status-code", &status);
  return status;
}

}  // namespace

GstBusSyncReply Pipeline::onBusMessage(GstBus*, GstMessage* message, gpointer self) {
  auto* const pipeline = static_cast<Pipeline*>(self);
  if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_STREAM_COLLECTION) pipeline->takeCollection(message);
  if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_ELEMENT) pipeline->takeSection(message);
  if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_NEED_CONTEXT) pipeline->answerContext(message);
  if (isHandled(message, pipeline->m_pipeline)) {
    std::shared_ptr<GstMessage> kept(gst_message_ref(message), gst_message_unref);
    pipeline->m_loop.post([pipeline, alive = std::weak_ptr<bool>(pipeline->m_alive), kept] {
      if (!alive.expired()) pipeline->handle(kept.get());
    });
  }
  gst_message_unref(message);
  return GST_BUS_DROP;
}

void Pipeline::handle(GstMessage* message) {
  switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_ERROR: return handleError(message);
    case GST_MESSAGE_EOS: return m_listener.onEnd();
    case GST_MESSAGE_BUFFERING: return m_listener.onBuffering(storedPercent(message));
    case GST_MESSAGE_ELEMENT: return handleElementMessage(message);
    case GST_MESSAGE_STREAM_COLLECTION: reportAnswered(); return m_listener.onTracksChanged();
    case GST_MESSAGE_STREAMS_SELECTED: return handleSelection(message);
    case GST_MESSAGE_ASYNC_DONE: return reportPreroll();
    case GST_MESSAGE_STATE_CHANGED: return handleStateChange(message);
    default: return;  // not among those that are queued
  }
}

void Pipeline::handleElementMessage(GstMessage* message) {
  const GstStructure* const details = gst_message_get_structure(message);
  if (details == nullptr) return;
  if (gst_structure_has_name(details, "http-headers")) return handleHttpHeaders(*details);
  if (gst_structure_has_name(details, "missing-plugin")) return handleMissingPlugin(*details);
}

void Pipeline::handleHttpHeaders(const GstStructure& details) {
  guint status = 0;
  gst_structure_get_uint(&details, "http-status-code", &status);
  if (status < 200 || status > 299) return;
  if (!m_answered && isDescriptorType(servedType(details))) return m_listener.onDescriptorServed();
  reportAnswered();
}

/// GStreamer would go on with what is left, or with nothing at all and without an error.
void Pipeline::handleMissingPlugin(const GstStructure& details) {
  const GstCaps* const caps = gst_structure_has_field_typed(&details, "detail", GST_TYPE_CAPS)
                                  ? gst_value_get_caps(gst_structure_get_value(&details, "detail"))
                                  : nullptr;
  if (caps != nullptr && gst_caps_get_size(caps) > 0 && isTextLike(gst_structure_get_name(gst_caps_get_structure(caps, 0)))) return;
  m_listener.onFailure(Failure::FormatNotSupported);
}

void Pipeline::handleError(GstMessage* message) {
  GError* error = nullptr;
  gst_message_parse_error(message, &error, nullptr);
  GstObject* const origin = GST_MESSAGE_SRC(message);
  const FailureContext context{isSource(origin), isAdaptiveDemux(origin), m_answered, m_mediaArrived, httpStatusOf(message)};
  const Failure failure = classifyError(*error, context);
  g_error_free(error);
  m_listener.onFailure(failure);
}

void Pipeline::handleSelection(GstMessage* message) {
  int selected = 0;
  for (guint i = 0; i < gst_message_streams_selected_get_size(message); ++i) {
    GstStream* const stream = gst_message_streams_selected_get_stream(message, i);
    if ((gst_stream_get_stream_type(stream) & (GST_STREAM_TYPE_AUDIO | GST_STREAM_TYPE_VIDEO)) != 0) ++selected;
    gst_object_unref(stream);
  }
  m_selected = selected;
  reportPreroll();
}

void Pipeline::handleStateChange(GstMessage* message) {
  GstState reached = GST_STATE_NULL;
  GstState pending = GST_STATE_NULL;
  gst_message_parse_state_changed(message, nullptr, &reached, &pending);
  if (pending != GST_STATE_VOID_PENDING) return;
  if (reached == GST_STATE_PAUSED) return reportPreroll();  // a pause overtook a seek while playing, whose end was told on the way
  if (reached != GST_STATE_PLAYING) return;
  releaseText();
  const std::weak_ptr<bool> alive = m_alive;
  reportPreroll();  // a seek while playing may have been between two states when its end was told
  if (!alive.expired()) m_listener.onPlayingReached();
}

void Pipeline::reportAnswered() {
  if (m_answered) return;
  m_answered = true;
  m_listener.onSourceAnswered();
}

/// The state is ahead of what is queued: what is presented first came before.
void Pipeline::reportPreroll() {
  if (m_prerollReported || !isPrerolled()) return;
  const std::weak_ptr<bool> alive = m_alive;
  tellPresented();
  if (alive.expired() || !isPrerolled()) return;  // it was opened anew, or seeks
  m_prerollReported = m_endsPass = true;
  m_listener.onPrerolled();
}

}  // namespace mediamgmnt
