// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/ttml_passthrough.h"

#include <gst/gst.h>

namespace {

constexpr char kOutputCaps[] =
    "text/x-raw, format=(string)utf8, ttml=(boolean)true, original-media-type=(string)application/ttml+xml";

struct AvcTtmlPassThrough {
  GstElement element;
  GstPad* sink;
  GstPad* source;
  bool backwards;
  GQueue*
      held;  ///< while playing backwards: documents of one run in the order of their times, which is not that in which they are due
};

struct AvcTtmlPassThroughClass {
  GstElementClass parent;
};

G_DEFINE_TYPE(AvcTtmlPassThrough, avc_ttml_pass_through, GST_TYPE_ELEMENT)

GstStaticPadTemplate sinkTemplate =
    GST_STATIC_PAD_TEMPLATE("sink", GST_PAD_SINK, GST_PAD_ALWAYS, GST_STATIC_CAPS("application/ttml+xml"));
GstStaticPadTemplate sourceTemplate = GST_STATIC_PAD_TEMPLATE("src", GST_PAD_SRC, GST_PAD_ALWAYS, GST_STATIC_CAPS(kOutputCaps));

AvcTtmlPassThrough* self(GstObject* object) { return reinterpret_cast<AvcTtmlPassThrough*>(object); }

GstFlowReturn releaseHeld(AvcTtmlPassThrough* element) {
  GstFlowReturn result = GST_FLOW_OK;
  while (void* const last = g_queue_pop_tail(element->held)) result = gst_pad_push(element->source, static_cast<GstBuffer*>(last));
  return result;
}

void dropHeld(AvcTtmlPassThrough* element) {
  while (void* const last = g_queue_pop_tail(element->held)) gst_buffer_unref(static_cast<GstBuffer*>(last));
}

/// Backwards, demuxers give run after run, each of them forwards: a run is over when a time is less than the one before it.
GstFlowReturn passBuffer(GstPad*, GstObject* parent, GstBuffer* buffer) {
  AvcTtmlPassThrough* const element = self(parent);
  if (!element->backwards) return gst_pad_push(element->source, buffer);
  const auto* const last = static_cast<GstBuffer*>(g_queue_peek_tail(element->held));
  const bool isNewRun = last != nullptr && GST_BUFFER_PTS(buffer) < GST_BUFFER_PTS(last);
  const GstFlowReturn result = isNewRun ? releaseHeld(element) : GST_FLOW_OK;
  g_queue_push_tail(element->held, buffer);
  return result;
}

void followSegment(AvcTtmlPassThrough* element, GstEvent* event) {
  const GstSegment* segment = nullptr;
  gst_event_parse_segment(event, &segment);
  releaseHeld(element);
  element->backwards = segment->rate < 0;
}

gboolean passEvent(GstPad* pad, GstObject* parent, GstEvent* event) {
  switch (GST_EVENT_TYPE(event)) {
    case GST_EVENT_CAPS: break;
    case GST_EVENT_SEGMENT: followSegment(self(parent), event); return gst_pad_event_default(pad, parent, event);
    case GST_EVENT_EOS: releaseHeld(self(parent)); return gst_pad_event_default(pad, parent, event);
    case GST_EVENT_FLUSH_STOP: dropHeld(self(parent)); return gst_pad_event_default(pad, parent, event);
    default: return gst_pad_event_default(pad, parent, event);
  }
  gst_event_unref(event);
  GstCaps* const caps = gst_caps_from_string(kOutputCaps);
  const gboolean accepted = gst_pad_push_event(self(parent)->source, gst_event_new_caps(caps));
  gst_caps_unref(caps);
  return accepted;
}

void avc_ttml_pass_through_finalize(GObject* object) {
  auto* const element = reinterpret_cast<AvcTtmlPassThrough*>(object);
  dropHeld(element);
  g_queue_free(element->held);
  G_OBJECT_CLASS(avc_ttml_pass_through_parent_class)->finalize(object);
}

void avc_ttml_pass_through_init(AvcTtmlPassThrough* element) {
  element->backwards = false;
  element->held = g_queue_new();
  element->sink = gst_pad_new_from_static_template(&sinkTemplate, "sink");
  element->source = gst_pad_new_from_static_template(&sourceTemplate, "src");
  gst_pad_set_chain_function(element->sink, passBuffer);
  gst_pad_set_event_function(element->sink, passEvent);
  gst_pad_use_fixed_caps(element->source);
  gst_element_add_pad(&element->element, element->sink);
  gst_element_add_pad(&element->element, element->source);
}

void avc_ttml_pass_through_class_init(AvcTtmlPassThroughClass* type) {
  GstElementClass* const elementClass = &type->parent;
  G_OBJECT_CLASS(type)->finalize = avc_ttml_pass_through_finalize;
  gst_element_class_add_static_pad_template(elementClass, &sinkTemplate);
  gst_element_class_add_static_pad_template(elementClass, &sourceTemplate);
  // A parser, not a decoder: a decoder here leaves TTML tracks inside MP4 without a stream type, so that they cannot be selected.
  gst_element_class_set_static_metadata(elementClass, "TTML pass-through", "Codec/Parser/Subtitle",
                                        "Hands TTML documents through as text/x-raw", "A/V Control reference platform");
}

}  // namespace

namespace mediamgmnt {

bool registerTtmlPassThrough() {
  return gst_element_register(nullptr, "avcttmlpassthrough", GST_RANK_PRIMARY, avc_ttml_pass_through_get_type()) != FALSE;
}

}  // namespace mediamgmnt
