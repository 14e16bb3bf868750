// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/webvtt_element.h"

#include <gst/gst.h>

#include <algorithm>
#include <string>

#include "platform/mediamgmnt/webvtt.h"

namespace {

using mediamgmnt::WebVttCue;
using mediamgmnt::WebVttCues;

constexpr char kOutputCaps[] =
    "text/x-raw, format=(string)utf8, ttml=(boolean)true, original-media-type=(string)application/x-subtitle-vtt";

struct AvcWebVtt {
  GstElement element;
  GstPad* sink;
  GstPad* source;
  GstSegment segment;
  WebVttCues* running;  ///< of the segments before, not over yet when the last one began
};

struct AvcWebVttClass {
  GstElementClass parent;
};

G_DEFINE_TYPE(AvcWebVtt, avc_web_vtt, GST_TYPE_ELEMENT)

GstStaticPadTemplate sinkTemplate =
    GST_STATIC_PAD_TEMPLATE("sink", GST_PAD_SINK, GST_PAD_ALWAYS, GST_STATIC_CAPS("application/x-subtitle-vtt"));
GstStaticPadTemplate sourceTemplate = GST_STATIC_PAD_TEMPLATE("src", GST_PAD_SRC, GST_PAD_ALWAYS, GST_STATIC_CAPS(kOutputCaps));

AvcWebVtt* self(GstObject* object) { return reinterpret_cast<AvcWebVtt*>(object); }

std::string textOf(GstBuffer* buffer) {
  std::string text(gst_buffer_get_size(buffer), '\0');
  text.resize(gst_buffer_extract(buffer, 0, text.data(), text.size()));
  return text;
}

/// The place on the presentation's time line, where the cue has that of the stream.
std::int64_t presentedAt(const GstSegment& segment, std::int64_t ms) {
  if (segment.format != GST_FORMAT_TIME) return ms;
  guint64 time = 0;
  const int sign = gst_segment_to_stream_time_full(&segment, GST_FORMAT_TIME, static_cast<guint64>(ms) * GST_MSECOND, &time);
  return sign > 0 ? static_cast<std::int64_t>(time / GST_MSECOND) : 0;
}

/// A document takes the place of the one before it, so it also has what of that one is still to be seen.
void addRunning(WebVttCues& running, WebVttCues& cues) {
  const std::int64_t start = cues.front().start;
  std::erase_if(running, [&](const WebVttCue& each) {
    const bool spans = each.start < start && each.end > start;
    return !spans || std::find(cues.begin(), cues.end(), each) != cues.end();
  });
  const WebVttCues own = cues;
  cues.insert(cues.begin(), running.begin(), running.end());
  running.insert(running.end(), own.begin(), own.end());
}

GstFlowReturn convert(GstPad*, GstObject* parent, GstBuffer* buffer) {
  AvcWebVtt* const element = self(parent);
  WebVttCues cues = mediamgmnt::readWebVtt(textOf(buffer));
  gst_buffer_unref(buffer);
  if (cues.empty()) return GST_FLOW_OK;
  std::sort(cues.begin(), cues.end(), [](const WebVttCue& one, const WebVttCue& other) { return one.start < other.start; });
  const std::int64_t start = cues.front().start;
  addRunning(*element->running, cues);
  std::int64_t end = start;
  for (WebVttCue& each : cues) {
    end = std::max(end, each.end);
    each.start = presentedAt(element->segment, each.start);
    each.end = presentedAt(element->segment, each.end);
  }
  std::erase_if(cues, [](const WebVttCue& each) { return each.end <= each.start; });
  const std::string document = mediamgmnt::ttmlOf(cues);
  GstBuffer* const out = gst_buffer_new_memdup(document.data(), document.size());
  GST_BUFFER_PTS(out) = static_cast<GstClockTime>(start) * GST_MSECOND;
  GST_BUFFER_DURATION(out) = static_cast<GstClockTime>(end - start) * GST_MSECOND;
  return gst_pad_push(element->source, out);
}

gboolean takeEvent(GstPad* pad, GstObject* parent, GstEvent* event) {
  AvcWebVtt* const element = self(parent);
  switch (GST_EVENT_TYPE(event)) {
    case GST_EVENT_CAPS: {
      gst_event_unref(event);
      GstCaps* const caps = gst_caps_from_string(kOutputCaps);
      const gboolean accepted = gst_pad_push_event(element->source, gst_event_new_caps(caps));
      gst_caps_unref(caps);
      return accepted;
    }
    case GST_EVENT_SEGMENT: gst_event_copy_segment(event, &element->segment); break;
    case GST_EVENT_FLUSH_STOP: element->running->clear(); break;
    default: break;
  }
  return gst_pad_event_default(pad, parent, event);
}

void avc_web_vtt_finalize(GObject* object) {
  delete reinterpret_cast<AvcWebVtt*>(object)->running;
  G_OBJECT_CLASS(avc_web_vtt_parent_class)->finalize(object);
}

void avc_web_vtt_init(AvcWebVtt* element) {
  gst_segment_init(&element->segment, GST_FORMAT_UNDEFINED);
  element->running = new WebVttCues;
  element->sink = gst_pad_new_from_static_template(&sinkTemplate, "sink");
  element->source = gst_pad_new_from_static_template(&sourceTemplate, "src");
  gst_pad_set_chain_function(element->sink, convert);
  gst_pad_set_event_function(element->sink, takeEvent);
  gst_pad_use_fixed_caps(element->source);
  gst_element_add_pad(&element->element, element->sink);
  gst_element_add_pad(&element->element, element->source);
}

void avc_web_vtt_class_init(AvcWebVttClass* type) {
  GstElementClass* const elementClass = &type->parent;
  G_OBJECT_CLASS(type)->finalize = avc_web_vtt_finalize;
  gst_element_class_add_static_pad_template(elementClass, &sinkTemplate);
  gst_element_class_add_static_pad_template(elementClass, &sourceTemplate);
  gst_element_class_set_static_metadata(elementClass, "WebVTT to TTML", "Codec/Parser/Subtitle",
                                        "Makes timed-text documents of WebVTT", "A/V Control reference platform");
}

}  // namespace

namespace mediamgmnt {

/// Before GStreamer's own parser, which loses where a cue is shown.
bool registerWebVttElement() {
  return gst_element_register(nullptr, "avcwebvtt", GST_RANK_PRIMARY + 1, avc_web_vtt_get_type()) != FALSE;
}

}  // namespace mediamgmnt
