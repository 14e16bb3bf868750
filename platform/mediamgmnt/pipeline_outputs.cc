// SPDX-License-Identifier: Apache-2.0
// The pipeline's ends: what each decoded stream runs into. All of it on GStreamer's streaming threads.
#include <cstring>

#include "platform/mediamgmnt/audio_output.h"
#include "platform/mediamgmnt/pipeline.h"

namespace mediamgmnt {
namespace {

/// A late picture is only worth drawing while it is not far behind.
constexpr gint64 kLatestPictureNs = 100 * GST_MSECOND;

bool startsWith(const char* text, const char* prefix) { return std::strncmp(text, prefix, std::strlen(prefix)) == 0; }

bool isLinked(GstElement* queue) {
  GstPad* const pad = gst_element_get_static_pad(queue, "sink");
  const bool linked = gst_pad_is_linked(pad) != FALSE;
  gst_object_unref(pad);
  return linked;
}

void linkTo(GstElement* element, GstPad* pad) {
  GstPad* const sink = gst_element_get_static_pad(element, "sink");
  gst_pad_link(pad, sink);
  gst_object_unref(sink);
}

}  // namespace

void Pipeline::onPadAdded(GstElement*, GstPad* pad, gpointer self) {
  auto* const pipeline = static_cast<Pipeline*>(self);
  const char* const name = GST_PAD_NAME(pad);
  if (startsWith(name, "video")) {
    pipeline->attach(Kind::Video, pad);
  } else if (startsWith(name, "audio")) {
    pipeline->attach(Kind::Audio, pad);
  } else if (startsWith(name, "text")) {
    pipeline->attach(Kind::Subtitle, pad);
  } else {
    pipeline->discard(pad);
  }
}

void Pipeline::attach(Kind kind, GstPad* pad) {
  std::lock_guard lock(m_padMutex);
  Output& output = m_outputs[static_cast<int>(kind)];
  if (output.queue != nullptr) {
    // A stream that takes the place of one that has gone uses its output; a second one at a time is not shown.
    if (isLinked(output.queue)) return discard(pad);
    return linkTo(output.queue, pad);
  }
  if (!makeOutput(kind, output)) return discard(pad);
  linkTo(output.queue, pad);
  if (kind != Kind::Subtitle) ++m_linked;
}

/// The sink is in its state before the stream is linked and counted: whoever sees the count finds the pipeline not prerolled yet.
bool Pipeline::makeOutput(Kind kind, Output& output) {
  // No store for sound: another language is heard when what is on its way has been played. The decoder has a thread for each
  // stream.
  GstElement* const queue = gst_element_factory_make(kind == Kind::Audio ? "identity" : "queue", nullptr);
  if (queue == nullptr) return false;
  GstElement* const sink = kind == Kind::Video   ? makeVideoSink()
                           : kind == Kind::Audio ? makeAudioOutput(m_settings.player)
                                                 : makeTextSink();
  if (sink == nullptr) {
    gst_object_unref(gst_object_ref_sink(queue));
    return false;
  }
  if (kind != Kind::Audio) g_object_set(queue, "max-size-buffers", 3, "max-size-bytes", 0, "max-size-time", guint64{0}, nullptr);
  gst_bin_add_many(GST_BIN(m_pipeline), queue, sink, nullptr);
  gst_element_sync_state_with_parent(sink);
  gst_element_link(queue, kind == Kind::Video ? deinterlacerOf(sink) : sink);
  gst_element_sync_state_with_parent(queue);
  output = {queue, sink};
  if (kind == Kind::Audio) setMuted(sink, !m_shown[indexOf(kind)]);
  watchOutput(kind, queue);
  return true;
}

/// What comes before the sink: pictures of two fields become two pictures, as on a television; all others pass untouched.
GstElement* Pipeline::deinterlacerOf(GstElement* sink) {
  GstElement* const fields = gst_element_factory_make("deinterlace", nullptr);
  if (fields == nullptr) return sink;
  gst_util_set_object_arg(G_OBJECT(fields), "method", "greedyl");
  gst_bin_add(GST_BIN(m_pipeline), fields);
  gst_element_link(fields, sink);
  gst_element_sync_state_with_parent(fields);
  return fields;
}

GstElement* Pipeline::makeVideoSink() {
  GstElement* const sink = gst_element_factory_make("appsink", nullptr);
  if (sink == nullptr) return nullptr;
  GstCaps* const caps = gst_caps_new_empty_simple("video/x-raw");
  g_object_set(sink, "caps", caps, "max-buffers", 2, "drop", TRUE, "qos", TRUE, "max-lateness", kLatestPictureNs,
               "enable-last-sample", FALSE, nullptr);
  gst_caps_unref(caps);
  GstAppSinkCallbacks callbacks{};
  callbacks.new_preroll = &Pipeline::onPreroll;
  callbacks.new_sample = &Pipeline::onSample;
  gst_app_sink_set_callbacks(GST_APP_SINK(sink), &callbacks, this, nullptr);
  return sink;
}

/// An output without a receiver would stop its whole source.
void Pipeline::discard(GstPad* pad) {
  GstElement* const sink = gst_element_factory_make("fakesink", nullptr);
  if (sink == nullptr) return;
  g_object_set(sink, "async", FALSE, "sync", FALSE, nullptr);
  gst_bin_add(GST_BIN(m_pipeline), sink);
  gst_element_sync_state_with_parent(sink);
  linkTo(sink, pad);
}

void Pipeline::paint(GstSample* sample) {
  if (m_unseen) return;
  tellRatingsOf(sample);
  std::lock_guard lock(m_showMutex);
  if (m_shown[indexOf(Kind::Video)]) m_surface.paint(sample);
}

GstFlowReturn Pipeline::onPreroll(GstAppSink* sink, gpointer self) {
  GstSample* const sample = gst_app_sink_pull_preroll(sink);
  if (sample == nullptr) return GST_FLOW_OK;
  static_cast<Pipeline*>(self)->paint(sample);
  gst_sample_unref(sample);
  return GST_FLOW_OK;
}

GstFlowReturn Pipeline::onSample(GstAppSink* sink, gpointer self) {
  GstSample* const sample = gst_app_sink_pull_sample(sink);
  if (sample == nullptr) return GST_FLOW_OK;
  static_cast<Pipeline*>(self)->paint(sample);
  gst_sample_unref(sample);
  return GST_FLOW_OK;
}

}  // namespace mediamgmnt
