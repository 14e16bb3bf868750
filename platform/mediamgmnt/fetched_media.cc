// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/fetched_media.h"

#include <algorithm>
#include <cstring>

namespace mediamgmnt {
namespace {

constexpr std::int64_t kNsPerMs = 1'000'000;
constexpr int kNone = -1;

/// The index of sound or picture; subtitles come when there are some, and say nothing of how far the rest has come.
int indexOf(GstPad* track) {
  GstCaps* const caps = gst_pad_get_current_caps(track);
  if (caps == nullptr) return kNone;
  const char* const name = gst_structure_get_name(gst_caps_get_structure(caps, 0));
  const int index = std::strncmp(name, "video/", 6) == 0 ? 0 : std::strncmp(name, "audio/", 6) == 0 ? 1 : kNone;
  gst_caps_unref(caps);
  return index;
}

/// @return false when the stream has not said how its times are to be read.
bool segmentOf(GstPad* track, GstSegment& out) {
  GstEvent* const event = gst_pad_get_sticky_event(track, GST_EVENT_SEGMENT, 0);
  if (event == nullptr) return false;
  gst_event_copy_segment(event, &out);
  gst_event_unref(event);
  return out.format == GST_FORMAT_TIME;
}

}  // namespace

void FetchedMedia::watch(GstElement* track) {
  const auto watchPad = [](GstElement*, GstPad* pad, gpointer self) -> gboolean {
    const auto what = static_cast<GstPadProbeType>(GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM);
    gst_pad_add_probe(pad, what, &FetchedMedia::onData, self, nullptr);
    return TRUE;
  };
  gst_element_foreach_sink_pad(track, watchPad, this);
}

GstPadProbeReturn FetchedMedia::onData(GstPad* pad, GstPadProbeInfo* info, gpointer self) {
  auto& media = *static_cast<FetchedMedia*>(self);
  if ((GST_PAD_PROBE_INFO_TYPE(info) & GST_PAD_PROBE_TYPE_BUFFER) != 0) {
    media.noteBuffer(pad, GST_PAD_PROBE_INFO_BUFFER(info));
  } else if (GST_EVENT_TYPE(GST_PAD_PROBE_INFO_EVENT(info)) == GST_EVENT_EOS) {
    media.noteEnd(pad);
  }
  return GST_PAD_PROBE_OK;
}

/// Pictures come in the order in which they are decoded, so the newest one is not always the furthest.
void FetchedMedia::noteBuffer(GstPad* pad, GstBuffer* buffer) {
  GstSegment segment;
  const int index = indexOf(pad);
  if (index == kNone || !GST_BUFFER_PTS_IS_VALID(buffer) || !segmentOf(pad, segment)) return;
  const bool backwards = segment.rate < 0;
  const GstClockTime length = backwards || !GST_BUFFER_DURATION_IS_VALID(buffer) ? 0 : GST_BUFFER_DURATION(buffer);
  guint64 place = 0;
  const int sign = gst_segment_to_stream_time_full(&segment, GST_FORMAT_TIME, GST_BUFFER_PTS(buffer) + length, &place);
  if (sign <= 0) return;
  const auto edge = static_cast<std::int64_t>(place);
  std::lock_guard lock(m_mutex);
  Reach& reach = m_reaches[static_cast<std::size_t>(index)];
  const bool goesOn = reach.track == pad && reach.backwards == backwards && !reach.complete;
  const std::int64_t further = backwards ? std::min(reach.edgeNs, edge) : std::max(reach.edgeNs, edge);
  reach = {pad, goesOn ? further : edge, backwards, false};
}

void FetchedMedia::noteEnd(GstPad* pad) {
  std::lock_guard lock(m_mutex);
  for (Reach& reach : m_reaches) {
    if (reach.track == pad) reach.complete = true;
  }
}

void FetchedMedia::forget() {
  std::lock_guard lock(m_mutex);
  m_reaches = {};
}

std::optional<long long> FetchedMedia::millisecondsFrom(std::int64_t positionNs) const {
  if (positionNs < 0) return std::nullopt;
  std::optional<std::int64_t> least;
  std::optional<std::int64_t> most;
  std::lock_guard lock(m_mutex);
  for (const Reach& reach : m_reaches) {
    if (reach.track == nullptr) continue;
    const std::int64_t ahead = std::max<std::int64_t>(0, reach.backwards ? positionNs - reach.edgeNs : reach.edgeNs - positionNs);
    most = std::max(most.value_or(0), ahead);
    if (!reach.complete) least = std::min(least.value_or(ahead), ahead);  // what has ended holds nothing up
  }
  const std::optional<std::int64_t> ahead = least ? least : most;
  return ahead ? std::optional<long long>(*ahead / kNsPerMs) : std::nullopt;
}

}  // namespace mediamgmnt
