// SPDX-License-Identifier: Apache-2.0
// What a pipeline can say of how its presentation is going.
#include <algorithm>

#include "platform/mediamgmnt/pipeline.h"

namespace mediamgmnt {
namespace {

constexpr double kNsPerMs = 1e6;

/// Of a download, ahead of what is presented: with that much playback begins, and with less than that little it waits.
constexpr long long kEnoughMs = 3000;
constexpr long long kLittleMs = 300;

/// A file is as long in time as in bytes, nearly.
/// From there on without a gap. Bytes are taken to be spread evenly over the duration.
std::optional<long long> downloadedMs(GstElement* download, std::int64_t positionNs, std::int64_t durationNs) {
  if (positionNs < 0 || durationNs <= 0) return std::nullopt;
  GstQuery* const query = gst_query_new_buffering(GST_FORMAT_PERCENT);
  std::optional<long long> milliseconds;
  const guint ranges = gst_element_query(download, query) ? gst_query_get_n_buffering_ranges(query) : 0;
  for (guint i = 0; i < ranges && !milliseconds; ++i) {
    gint64 first = 0;
    gint64 last = 0;
    gst_query_parse_nth_buffering_range(query, i, &first, &last);
    const auto atPart = [durationNs](gint64 part) {
      return static_cast<double>(part) / GST_FORMAT_PERCENT_MAX * static_cast<double>(durationNs);
    };
    const auto position = static_cast<double>(positionNs);
    if (atPart(first) <= position && position <= atPart(last))
      milliseconds = static_cast<long long>((atPart(last) - position) / kNsPerMs);
  }
  gst_query_unref(query);
  return milliseconds;
}

long long bitRateAt(GstElement* sink) {
  GstPad* const pad = gst_element_get_static_pad(sink, "sink");
  GstEvent* const event = pad == nullptr ? nullptr : gst_pad_get_sticky_event(pad, GST_EVENT_TAG, 0);
  if (pad != nullptr) gst_object_unref(pad);
  if (event == nullptr) return 0;
  GstTagList* tags = nullptr;
  gst_event_parse_tag(event, &tags);
  guint rate = 0;
  if (!gst_tag_list_get_uint(tags, GST_TAG_BITRATE, &rate)) gst_tag_list_get_uint(tags, GST_TAG_NOMINAL_BITRATE, &rate);
  gst_event_unref(event);
  return rate;
}

long long countOf(const GstStructure* stats, const char* name) {
  guint64 count = 0;
  gst_structure_get_uint64(stats, name, &count);
  return static_cast<long long>(count);
}

void countPictures(GstElement* sink, StreamReport& out) {
  GstStructure* stats = nullptr;
  g_object_get(sink, "stats", &stats, nullptr);
  if (stats == nullptr) return;
  out.pictures = countOf(stats, "rendered");
  out.dropped = countOf(stats, "dropped");
  gst_structure_free(stats);
}

}  // namespace

GstElement* Pipeline::referenceTo(GstElement* const& element) const {
  std::lock_guard lock(m_padMutex);
  return element == nullptr ? nullptr : GST_ELEMENT(gst_object_ref(element));
}

void Pipeline::rememberAdaptiveDemux(GstElement* adaptiveDemux) {
  std::lock_guard lock(m_padMutex);
  if (m_adaptiveDemux == nullptr) m_adaptiveDemux = GST_ELEMENT(gst_object_ref(adaptiveDemux));
}

/// The adaptive demuxers of GStreamer 1.22 tell what they hold of each kind until its end has come, and nothing from then on; they
/// do not count what they have handed on either.
void Pipeline::reportStore(StreamReport& out) const {
  if (GstElement* const demux = referenceTo(m_adaptiveDemux); demux != nullptr) {
    guint line = 0;
    g_object_get(demux, "current-bandwidth", &line, nullptr);
    if (line > 0) out.lineRate = line;
    out.bufferedMs = m_fetched.millisecondsFrom(position());
    gst_object_unref(demux);
  } else if (GstElement* const download = referenceTo(m_download); download != nullptr) {
    out.bufferedMs = downloadedMs(download, position(), duration());
    gst_object_unref(download);
  }
}

/// Of what is needed to play. The download buffer of GStreamer 1.22 tells of it on two threads, without a lock: that little is
/// there may be heard after that all is, and would be the last word. So it is asked.
int Pipeline::storedPercent(GstMessage* message) {
  int percent = 0;
  gst_message_parse_buffering(message, &percent);
  GstElement* const download = referenceTo(m_download);
  if (download == nullptr) return percent;
  GstQuery* const query = gst_query_new_buffering(GST_FORMAT_PERCENT);
  gboolean isFilling = TRUE;
  if (GST_MESSAGE_SRC(message) == GST_OBJECT(download) && gst_element_query(download, query)) {
    gst_query_parse_buffering_percent(query, &isFilling, &percent);
    if (isFilling) percent = std::max(percent, downloadedPercent());
  }
  gst_query_unref(query);
  gst_object_unref(download);
  return isFilling ? percent : 100;
}

/// The download buffer itself wants what takes 5 s to fetch, however long that plays.
int Pipeline::downloadedPercent() {
  GstElement* const download = referenceTo(m_download);
  if (download == nullptr) return 0;
  const std::int64_t from = position();
  const std::int64_t length = duration();
  const std::optional<long long> ahead = downloadedMs(download, from, length);
  gst_object_unref(download);
  if (!ahead) return 0;
  const long long rest = (length - from) / static_cast<long long>(kNsPerMs);
  if (*ahead >= std::min(kEnoughMs, rest)) m_filling = false;
  if (*ahead < std::min(kLittleMs, rest)) m_filling = true;
  return m_filling ? static_cast<int>(*ahead * 99 / kEnoughMs) : 100;
}

StreamReport Pipeline::report() const {
  StreamReport out;
  reportStore(out);
  long long rate = 0;
  for (const Kind kind : {Kind::Video, Kind::Audio}) {
    GstElement* const sink = sinkOf(kind);
    if (sink == nullptr) continue;
    rate += bitRateAt(sink);
    if (kind == Kind::Video) countPictures(sink, out);
    gst_object_unref(sink);
  }
  if (rate > 0) out.mediaRate = rate;
  return out;
}

}  // namespace mediamgmnt
