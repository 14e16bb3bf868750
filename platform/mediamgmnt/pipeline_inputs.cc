// SPDX-License-Identifier: Apache-2.0
// The ends of the decoder's inputs, which are the parsed streams of the source: they need not come at the same time.
#include <algorithm>

#include "platform/mediamgmnt/pipeline.h"

namespace mediamgmnt {
namespace {

/// An input that brings nothing at all ends after this long.
constexpr int kMostEndNaps = 500;
constexpr gulong kEndNapUs = 1000;

bool isPresentedInTime(GstPad* pad) {
  GstStream* const stream = gst_pad_get_stream(pad);
  if (stream == nullptr) return false;
  const bool isPresented = (gst_stream_get_stream_type(stream) & (GST_STREAM_TYPE_AUDIO | GST_STREAM_TYPE_VIDEO)) != 0;
  gst_object_unref(stream);
  return isPresented;
}

}  // namespace

/// Only its streaming thread's.
struct Pipeline::Input {
  const Pipeline* pipeline;
  GstElement* element;  ///< the probe's pad is one of it
  GstSegment segment = {};
  GstClockTime last = 0;  ///< where its last picture or sound begins
};

void Pipeline::watchInput(GstElement* element) {
  GstPad* const pad = gst_element_get_static_pad(element, "sink");
  constexpr auto kData = static_cast<GstPadProbeType>(GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM | GST_PAD_PROBE_TYPE_BUFFER);
  gst_pad_add_probe(pad, kData, &Pipeline::onInputData, new Input{this, element},
                    [](gpointer input) { delete static_cast<Input*>(input); });
  gst_object_unref(pad);
}

GstPadProbeReturn Pipeline::onInputData(GstPad* pad, GstPadProbeInfo* info, gpointer data) {
  auto& input = *static_cast<Input*>(data);
  if (input.pipeline->m_adaptive) return GST_PAD_PROBE_OK;  // what it has it hands on in order, from one thread
  if ((GST_PAD_PROBE_INFO_TYPE(info) & GST_PAD_PROBE_TYPE_BUFFER) != 0) {
    const GstClockTime time = GST_BUFFER_PTS(GST_PAD_PROBE_INFO_BUFFER(info));
    if (GST_CLOCK_TIME_IS_VALID(time)) input.last = std::max(input.last, time);
    return GST_PAD_PROBE_OK;
  }
  GstEvent* const event = GST_PAD_PROBE_INFO_EVENT(info);
  if (GST_EVENT_TYPE(event) == GST_EVENT_SEGMENT) {
    gst_event_copy_segment(event, &input.segment);
    input.last = input.segment.start;
  } else if (GST_EVENT_TYPE(event) == GST_EVENT_EOS) {
    input.pipeline->holdEarlyEnd();
    if (isPresentedInTime(pad)) goOnWithout(input);
  }
  return GST_PAD_PROBE_OK;
}

/// GStreamer 1.22 forgets an input that ends while another one has not begun, and crashes over it when the pipeline is closed. So
/// the end of a short one waits for the start of all.
void Pipeline::holdEarlyEnd() const {
  for (int nap = 0; !m_endsPass && nap < kMostEndNaps; ++nap) g_usleep(kEndNapUs);
}

/// The decoder of GStreamer 1.22 keeps the end of a stream back until all have ended: without a gap its sink would wait for it when
/// the others are sought behind that end. Backwards, every stream ends at its beginning.
void Pipeline::goOnWithout(const Input& input) {
  if (input.segment.format != GST_FORMAT_TIME || input.segment.rate < 0) return;
  GstPad* const out = gst_element_get_static_pad(input.element, "src");
  gst_pad_push_event(out, gst_event_new_gap(std::min(input.last, input.segment.stop), GST_CLOCK_TIME_NONE));
  gst_object_unref(out);
}

}  // namespace mediamgmnt
