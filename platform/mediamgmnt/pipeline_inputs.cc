// SPDX-License-Identifier: Apache-2.0
// The ends of the decoder's inputs, which are the parsed streams of the source: they need not come at the same time.
#include <gst/video/video-event.h>

#include <algorithm>

#include "platform/mediamgmnt/pipeline.h"

namespace mediamgmnt {
namespace {

/// An input that brings nothing at all ends after this long.
constexpr int kMostEndNaps = 500;
constexpr gulong kEndNapUs = 1000;

GstStreamType typeOf(GstPad* pad) {
  GstStream* const stream = gst_pad_get_stream(pad);
  if (stream == nullptr) return GST_STREAM_TYPE_UNKNOWN;
  const GstStreamType type = gst_stream_get_stream_type(stream);
  gst_object_unref(stream);
  return type;
}

bool isMedia(GstStreamType type) { return type == GST_STREAM_TYPE_VIDEO || type == GST_STREAM_TYPE_AUDIO; }

GstClockTime endOf(GstBuffer* buffer) {
  if (!GST_BUFFER_PTS_IS_VALID(buffer)) return 0;
  return GST_BUFFER_PTS(buffer) + (GST_BUFFER_DURATION_IS_VALID(buffer) ? GST_BUFFER_DURATION(buffer) : 0);
}

/// Of the decoder that the element is in.
std::size_t inputsOf(GstElement* element) {
  GstObject* const decoder = gst_object_get_parent(GST_OBJECT(element));
  if (decoder == nullptr) return 0;
  GST_OBJECT_LOCK(decoder);
  const std::size_t inputs = GST_ELEMENT(decoder)->numsinkpads;
  GST_OBJECT_UNLOCK(decoder);
  gst_object_unref(decoder);
  return inputs;
}

/// Going downstream, or nullptr.
GstEvent* eventOf(GstPadProbeInfo* info) {
  return (GST_PAD_PROBE_INFO_TYPE(info) & GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM) != 0 ? GST_PAD_PROBE_INFO_EVENT(info) : nullptr;
}

/// What a manifest says of a track may be several things. With another period's track, the decoder of GStreamer 1.22 is asked about
/// them before the first of that track has come, and complains: what came before will do till then, if it is one of them.
void settleCaps(GstPad* pad, GstEvent* event) {
  if (event == nullptr || GST_EVENT_TYPE(event) != GST_EVENT_STREAM_START) return;
  GstStream* stream = nullptr;
  gst_event_parse_stream(event, &stream);
  if (stream == nullptr) return;
  GstCaps* announced = gst_stream_get_caps(stream);
  GstCaps* current = gst_pad_get_current_caps(pad);
  if (announced != nullptr && current != nullptr && !gst_caps_is_fixed(announced) && gst_caps_can_intersect(announced, current)) {
    gst_stream_set_caps(stream, current);
  }
  gst_clear_caps(&announced);
  gst_clear_caps(&current);
  gst_object_unref(stream);
}

GstSegment segmentFrom(double seconds) {
  GstSegment segment;
  gst_segment_init(&segment, GST_FORMAT_TIME);
  segment.start = segment.time = segment.position = static_cast<GstClockTime>(seconds * static_cast<double>(GST_SECOND));
  return segment;
}

}  // namespace

/// Only its streaming thread's.
struct Pipeline::Input {
  Pipeline* pipeline;
  GstElement* element;  ///< the probe's pad is one of it
  InputProgress::Id id;
  bool hasData = false;  ///< ever
  GstSegment segment = {};
  GstClockTime end = 0;  ///< of its last picture or sound
};

void Pipeline::watchInput(GstElement* element) {
  m_inputsBegun = false;
  GstPad* const pad = gst_element_get_static_pad(element, "sink");
  constexpr auto kData = static_cast<GstPadProbeType>(GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM | GST_PAD_PROBE_TYPE_EVENT_FLUSH |
                                                      GST_PAD_PROBE_TYPE_BUFFER);
  gst_pad_add_probe(pad, kData, &Pipeline::onInputData, new Input{this, element, m_progress.add()},
                    [](gpointer input) { delete static_cast<Input*>(input); });
  gst_object_unref(pad);
}

GstPadProbeReturn Pipeline::onInputData(GstPad* pad, GstPadProbeInfo* info, gpointer data) {
  auto& input = *static_cast<Input*>(data);
  if (input.pipeline->m_adaptive) {
    settleCaps(pad, eventOf(info));
    input.pipeline->makeRoomForTracks(info);
    return input.pipeline->orderEnds(input, info);
  }
  InputProgress& progress = input.pipeline->m_progress;
  if ((GST_PAD_PROBE_INFO_TYPE(info) & GST_PAD_PROBE_TYPE_BUFFER) != 0) {
    input.end = std::max(input.end, endOf(GST_PAD_PROBE_INFO_BUFFER(info)));
    input.hasData = true;
    progress.advance(input.id, std::chrono::nanoseconds(input.end));
    return GST_PAD_PROBE_OK;
  }
  GstEvent* const event = GST_PAD_PROBE_INFO_EVENT(info);
  switch (GST_EVENT_TYPE(event)) {
    case GST_EVENT_FLUSH_STOP:
      input.segment = {};
      progress.restart(input.id);
      break;
    case GST_EVENT_SEGMENT:
      gst_event_copy_segment(event, &input.segment);
      input.end = input.segment.start;
      progress.describe(input.id, isMedia(typeOf(pad)));
      break;
    case GST_EVENT_EOS:
      progress.finish(input.id);
      input.pipeline->holdEarlyEnd();
      if (input.hasData) input.pipeline->goOnWithout(input, typeOf(pad));
      break;
    default: break;
  }
  return GST_PAD_PROBE_OK;
}

bool Pipeline::isAllShorterThan(std::chrono::nanoseconds length) const { return m_adaptive || m_progress.isAllShorterThan(length); }

/// The decoder of GStreamer 1.22 tells no end before that of timed text which goes on for longer.
bool Pipeline::isMediaOver() const {
  constexpr std::chrono::milliseconds kLastPicture{200};
  const std::int64_t now = position();
  return !m_adaptive && now != kUnknown && m_progress.isMediaOverAt(std::chrono::nanoseconds(now) + kLastPicture);
}

/// An adaptive demuxer of GStreamer 1.22 tells of another track, or that there is none, with a lock held, and if the decoder is
/// full it waits with it for room. In a pause there is none before the next seek, and that wants the lock as well. So there is room
/// for what is told.
void Pipeline::makeRoomForTracks(GstPadProbeInfo* info) {
  if ((GST_PAD_PROBE_INFO_TYPE(info) & GST_PAD_PROBE_TYPE_EVENT_FLUSH) != 0) return;  // from the thread that seeks
  GstEvent* const event = eventOf(info);
  const GstEventType type = event != nullptr ? GST_EVENT_TYPE(event) : GST_EVENT_UNKNOWN;
  if (type == GST_EVENT_STREAM_START || type == GST_EVENT_EOS) {
    m_room.open(m_decoder);
  } else if (type != GST_EVENT_STREAM_COLLECTION) {
    m_room.close();
  }
}

/// GStreamer 1.22 forgets an input that ends while another one has not begun, and crashes over it when the pipeline is closed. So
/// the end of a short one waits for the start of all.
void Pipeline::holdEarlyEnd() const {
  for (int nap = 0; !m_endsPass && nap < kMostEndNaps; ++nap) g_usleep(kEndNapUs);
}

/// The same where what the source has is handed on in order, from one thread, which cannot wait: the first buffer of any input
/// begins all, and the end of one that has brought nothing before it, as happens when it cannot be decrypted, follows that buffer.
/// When none brings anything, the last end lets the others pass.
GstPadProbeReturn Pipeline::orderEnds(Input& input, GstPadProbeInfo* info) {
  const auto type = GST_PAD_PROBE_INFO_TYPE(info);
  if ((type & GST_PAD_PROBE_TYPE_EVENT_FLUSH) != 0) {  // from the thread that seeks
    forgetEnd(input.element);
    return GST_PAD_PROBE_OK;
  }
  if (m_inputsBegun) letKeptEndsPass();
  if ((type & GST_PAD_PROBE_TYPE_BUFFER) != 0) {
    input.hasData = m_inputsBegun = true;
    return GST_PAD_PROBE_OK;
  }
  const bool isEarlyEnd = GST_EVENT_TYPE(GST_PAD_PROBE_INFO_EVENT(info)) == GST_EVENT_EOS && !input.hasData && !m_inputsBegun;
  if (!isEarlyEnd) return GST_PAD_PROBE_OK;
  if (keepEnd(input.element)) return GST_PAD_PROBE_DROP;
  letKeptEndsPass();
  return GST_PAD_PROBE_OK;
}

bool Pipeline::keepEnd(GstElement* input) {
  const std::lock_guard lock(m_keptEndsMutex);
  if (m_keptEnds.size() + 1 >= inputsOf(input)) return false;
  m_keptEnds.emplace_back(GST_ELEMENT(gst_object_ref(input)), &gst_object_unref);
  return true;
}

void Pipeline::forgetEnd(GstElement* input) {
  const std::lock_guard lock(m_keptEndsMutex);
  m_keptEnds.remove_if([input](const auto& kept) { return kept.get() == input; });
}

void Pipeline::letKeptEndsPass() {
  decltype(m_keptEnds) ends;
  {
    const std::lock_guard lock(m_keptEndsMutex);
    ends.swap(m_keptEnds);
  }
  for (const auto& input : ends) {
    GstPad* const out = gst_element_get_static_pad(input.get(), "src");
    gst_pad_push_event(out, gst_event_new_eos());
    gst_object_unref(out);
  }
}

/// The decoder of GStreamer 1.22 keeps the end of a stream back until all have ended: without a gap its sink would wait for it when
/// the others are sought behind that end, where some demuxers do not even begin a segment of it. What a video decoder still holds
/// comes out before a still picture. Backwards, every stream ends at its beginning.
void Pipeline::goOnWithout(Input& input, GstStreamType type) {
  if (!isMedia(type)) return;
  GstPad* const out = gst_element_get_static_pad(input.element, "src");
  if (input.segment.format == GST_FORMAT_UNDEFINED) {
    input.segment = segmentFrom(soughtSeconds().value_or(0));
    input.end = input.segment.start;
    gst_pad_push_event(out, gst_event_new_segment(&input.segment));
  }
  if (input.segment.format == GST_FORMAT_TIME && input.segment.rate > 0) {
    if (type == GST_STREAM_TYPE_VIDEO) gst_pad_push_event(out, gst_video_event_new_still_frame(TRUE));
    gst_pad_push_event(out, gst_event_new_gap(std::min(input.end, input.segment.stop), 0));
  }
  gst_object_unref(out);
}

}  // namespace mediamgmnt
