// SPDX-License-Identifier: Apache-2.0
// The pipeline's text output: documents on their way to the page, at the moment when they are due on the pipeline's clock.
#include <utility>

#include "platform/mediamgmnt/pipeline.h"

namespace mediamgmnt {
namespace {

/// What our own elements make of TTML and WebVTT; other text comes as rendered cues.
bool isTimedText(GstSample* sample) {
  GstCaps* const caps = gst_sample_get_caps(sample);
  gboolean timed = FALSE;
  return caps != nullptr && gst_structure_get_boolean(gst_caps_get_structure(caps, 0), "ttml", &timed) && timed;
}

std::int64_t streamTime(const GstSegment& segment, GstClockTime time) {
  guint64 converted = 0;
  if (!GST_CLOCK_TIME_IS_VALID(time)) return TimedDocument::kUnknown;
  const int sign = gst_segment_to_stream_time_full(&segment, GST_FORMAT_TIME, time, &converted);
  return sign < 0 ? -static_cast<std::int64_t>(converted) - 1 : static_cast<std::int64_t>(converted);
}

GstClockTime endOf(GstBuffer* buffer) {
  const GstClockTime start = GST_BUFFER_PTS(buffer);
  const GstClockTime duration = GST_BUFFER_DURATION(buffer);
  return GST_CLOCK_TIME_IS_VALID(start) && GST_CLOCK_TIME_IS_VALID(duration) ? start + duration : GST_CLOCK_TIME_NONE;
}

/// While nothing runs, the document at the place that was sought is due, and the one that follows is not.
bool isDueAtStart(const GstSegment& segment, GstBuffer* buffer) {
  if (segment.rate < 0) return !GST_CLOCK_TIME_IS_VALID(endOf(buffer)) || endOf(buffer) >= segment.stop;
  return !GST_BUFFER_PTS_IS_VALID(buffer) || GST_BUFFER_PTS(buffer) <= segment.start;
}

SharedText textOf(GstBuffer* buffer) {
  std::string text(gst_buffer_get_size(buffer), '\0');
  text.resize(gst_buffer_extract(buffer, 0, text.data(), text.size()));
  return std::make_shared<const std::string>(std::move(text));
}

}  // namespace

GstElement* Pipeline::makeTextSink() {
  GstElement* const sink = gst_element_factory_make("appsink", nullptr);
  if (sink == nullptr) return nullptr;
  // Text comes rarely: nothing may wait for the first one.
  g_object_set(sink, "async", FALSE, "max-buffers", 8, "drop", TRUE, "enable-last-sample", FALSE, nullptr);
  GstAppSinkCallbacks callbacks{};
  callbacks.new_preroll = &Pipeline::onTextPreroll;
  callbacks.new_sample = &Pipeline::onTextSample;
  gst_app_sink_set_callbacks(GST_APP_SINK(sink), &callbacks, this, nullptr);
  return sink;
}

GstFlowReturn Pipeline::onTextPreroll(GstAppSink* sink, gpointer self) {
  GstSample* const sample = gst_app_sink_pull_preroll(sink);
  if (sample == nullptr) return GST_FLOW_OK;
  if (isDueAtStart(*gst_sample_get_segment(sample), gst_sample_get_buffer(sample))) {
    static_cast<Pipeline*>(self)->feedText(sample);
  }
  gst_sample_unref(sample);
  return GST_FLOW_OK;
}

GstFlowReturn Pipeline::onTextSample(GstAppSink* sink, gpointer self) {
  GstSample* const sample = gst_app_sink_pull_sample(sink);
  if (sample == nullptr) return GST_FLOW_OK;
  static_cast<Pipeline*>(self)->feedText(sample);
  gst_sample_unref(sample);
  return GST_FLOW_OK;
}

/// On the thread that also announces the streams, so what has arrived last is the document's.
void Pipeline::feedText(GstSample* sample) {
  if (m_unseen) return;
  if (!isTimedText(sample)) return;
  GstBuffer* const buffer = gst_sample_get_buffer(sample);
  const GstSegment& segment = *gst_sample_get_segment(sample);
  m_subtitles.due(m_arrivals[indexOf(Kind::Subtitle)].present,
                  {textOf(buffer), streamTime(segment, GST_BUFFER_PTS(buffer)), streamTime(segment, endOf(buffer))});
}

/// A sink that nothing waits for runs on through a seek, by the time from before it: all that comes would be due at once.
void Pipeline::holdText() {
  GstElement* const sink = sinkOf(Kind::Subtitle);
  if (sink == nullptr) return;
  gst_element_set_locked_state(sink, TRUE);
  gst_element_set_state(sink, GST_STATE_PAUSED);
  gst_object_unref(sink);
  m_textHeld = true;
}

void Pipeline::releaseText() {
  if (!std::exchange(m_textHeld, false)) return;
  GstElement* const sink = sinkOf(Kind::Subtitle);
  gst_element_set_locked_state(sink, FALSE);
  gst_element_sync_state_with_parent(sink);
  gst_object_unref(sink);
}

}  // namespace mediamgmnt
