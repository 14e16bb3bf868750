// SPDX-License-Identifier: Apache-2.0
// The pipeline's beginning: the source element, the type of what it delivers, and the adaptive demuxers.
#include <gst/base/gstbasesrc.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <string_view>
#include <utility>

#include "platform/mediamgmnt/clear_key_decryptor.h"
#include "platform/mediamgmnt/download_threads.h"
#include "platform/mediamgmnt/pipeline.h"
#include "platform/mediamgmnt/source_sniffer.h"

namespace mediamgmnt {
namespace {

/// A read of the source that blocks this long is a lost connection. The connect watchdog, which starts earlier, ends before.
constexpr guint kSourceTimeoutSeconds = 12;

/// A download thread that does not come by in this time is stuck.
constexpr std::chrono::milliseconds kCancelPatience{1000};

/// What the download buffer waits for rather than ask for it.
constexpr guint64 kNearBytes = 512 * 1024;
constexpr gulong kSettleUs = 20000;

constexpr guint kPartialContent = 206;  // RFC 9110, 15.3.7

bool startsWith(std::string_view text, std::string_view prefix) { return text.substr(0, prefix.size()) == prefix; }

bool hasProperty(GstElement* element, const char* name) {
  return g_object_class_find_property(G_OBJECT_GET_CLASS(element), name) != nullptr;
}

std::string factoryName(GstElement* element) {
  GstElementFactory* const factory = gst_element_get_factory(element);
  return factory != nullptr ? GST_OBJECT_NAME(factory) : "";
}

std::string firstBytesOf(GstBuffer* buffer) {
  std::string bytes(std::min<std::size_t>(gst_buffer_get_size(buffer), kSniffBytes), '\0');
  bytes.resize(gst_buffer_extract(buffer, 0, bytes.data(), bytes.size()));
  return bytes;
}

bool isSeekable(GstPad* pad, GstFormat format) {
  GstQuery* const query = gst_query_new_seeking(format);
  gboolean can = FALSE;
  if (gst_pad_query(pad, query)) gst_query_parse_seeking(query, nullptr, &can, nullptr, nullptr);
  gst_query_unref(query);
  return can != FALSE;
}

}  // namespace

void Pipeline::onSourceSetup(GstElement*, GstElement* source, gpointer self) {
  auto* const pipeline = static_cast<Pipeline*>(self);
  const SourceSettings& settings = pipeline->m_settings;
  if (!settings.userAgent.empty() && hasProperty(source, "user-agent")) {
    g_object_set(source, "user-agent", settings.userAgent.c_str(), nullptr);
  }
  if (hasProperty(source, "timeout")) g_object_set(source, "timeout", kSourceTimeoutSeconds, nullptr);
  if (startsWith(settings.url, "file:")) {
    pipeline->m_sourceEnded = true;  // all of it is there from the start
  } else {
    pipeline->rememberSource(source);
    pipeline->askForRange(source);
  }
  GstPad* const pad = gst_element_get_static_pad(source, "src");
  if (pad == nullptr) return;
  gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM, &Pipeline::onSourceEvent, self, nullptr);
  gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_EVENT_UPSTREAM, &Pipeline::onSourceSeek, self, nullptr);
  gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_QUERY_UPSTREAM, &Pipeline::onSourceQuery, self, nullptr);
  gst_object_unref(pad);
}

/// Before the source cancels its fetch itself: then there is none any more. Demuxers seek while a source opens, too. A seek that
/// the source refuses cancels nothing.
GstPadProbeReturn Pipeline::onSourceSeek(GstPad* pad, GstPadProbeInfo* info, gpointer self) {
  GstEvent* const event = GST_PAD_PROBE_INFO_EVENT(info);
  if (GST_EVENT_TYPE(event) != GST_EVENT_SEEK) return GST_PAD_PROBE_OK;
  GstSeekFlags flags = GST_SEEK_FLAG_NONE;
  GstFormat format = GST_FORMAT_UNDEFINED;
  gst_event_parse_seek(event, nullptr, &format, &flags, nullptr, nullptr, nullptr, nullptr);
  if ((flags & GST_SEEK_FLAG_FLUSH) != 0 && isSeekable(pad, format)) static_cast<Pipeline*>(self)->cancelFetch();
  return GST_PAD_PROBE_OK;
}

GstPadProbeReturn Pipeline::onSourceEvent(GstPad*, GstPadProbeInfo* info, gpointer self) {
  auto* const pipeline = static_cast<Pipeline*>(self);
  switch (GST_EVENT_TYPE(GST_PAD_PROBE_INFO_EVENT(info))) {
    case GST_EVENT_EOS: pipeline->m_sourceEnded = true; break;
    case GST_EVENT_SEGMENT: pipeline->m_sourceEnded = false; break;  // it was asked for another place
    case GST_EVENT_CUSTOM_DOWNSTREAM_STICKY: pipeline->noteAnswer(gst_event_get_structure(GST_PAD_PROBE_INFO_EVENT(info))); break;
    default: break;
  }
  return GST_PAD_PROBE_OK;
}

/// A server need not say that it has ranges, but answers a request for one otherwise when it has none. Manifests are never sought
/// in.
void Pipeline::askForRange(GstElement* source) const {
  if (!hasProperty(source, "extra-headers") || isAdaptiveType(m_settings.declaredType)) return;
  GstStructure* const headers = gst_structure_new("extra-headers", "Range", G_TYPE_STRING, "bytes=0-", nullptr);
  g_object_set(source, "extra-headers", headers, nullptr);
  gst_structure_free(headers);
}

void Pipeline::noteAnswer(const GstStructure* answer) {
  guint status = 0;
  if (!gst_structure_has_name(answer, "http-headers") || !gst_structure_get_uint(answer, "http-status-code", &status)) return;
  const GValue* const headers = gst_structure_get_value(answer, "response-headers");
  const GstStructure* const fields = headers == nullptr ? nullptr : gst_value_get_structure(headers);
  const char* const ranges = fields == nullptr ? nullptr : gst_structure_get_string(fields, "Accept-Ranges");
  m_hasRanges =
      status == kPartialContent || (ranges != nullptr && std::string_view(ranges).find("bytes") != std::string_view::npos);
  GstElement* const source = referenceTo(m_source);
  if (source == nullptr) return;
  g_object_set(source, "extra-headers", nullptr, nullptr);  // from now on it asks for places itself
  gst_object_unref(source);
}

/// The source takes itself to be seekable unless its server says that it has no ranges.
GstPadProbeReturn Pipeline::onSourceQuery(GstPad*, GstPadProbeInfo* info, gpointer self) {
  GstQuery* const query = GST_PAD_PROBE_INFO_QUERY(info);
  if (GST_QUERY_TYPE(query) != GST_QUERY_SEEKING || !static_cast<Pipeline*>(self)->m_comesInOrder) return GST_PAD_PROBE_OK;
  GstFormat format = GST_FORMAT_UNDEFINED;
  gst_query_parse_seeking(query, &format, nullptr, nullptr, nullptr);
  gst_query_set_seeking(query, format, FALSE, 0, -1);
  return GST_PAD_PROBE_HANDLED;
}

void Pipeline::onElementAdded(GstBin*, GstBin* parent, GstElement* element, gpointer self) {
  auto* const pipeline = static_cast<Pipeline*>(self);
  const std::string factory = factoryName(element);
  if (startsWith(GST_OBJECT_NAME(parent), "parsebin")) pipeline->m_gate.watch(element);
  if (factory == "tsdemux") pipeline->watchEventInformation(element);
  if (factory == kDecryptorName) giveKeys(element, pipeline->m_keys);
  if (factory == "typefind" && startsWith(GST_OBJECT_NAME(parent), "urisourcebin")) {
    pipeline->watchTypeFinding(element);
  } else if (factory == "dashdemux2" || factory == "hlsdemux2") {
    pipeline->rememberAdaptiveDemux(element);
    endRemovedTracks(element);
    pipeline->noteAdaptiveDemux(element);
    pipeline->limitVideoSize(element);
    pipeline->watchManifest(element);
    pipeline->watchSeeks(element);
  } else if (factory == "downloadbuffer") {
    pipeline->rememberDownload(element);
  } else if (factory == "identity" && startsWith(GST_OBJECT_NAME(parent), "decodebin3")) {
    pipeline->watchInput(element);
  } else if (startsWith(GST_OBJECT_NAME(element), "track-period")) {
    pipeline->noteTrackOfPeriod(element);
    pipeline->watchFetching(element);
  } else if (factory != "typefind" && startsWith(GST_OBJECT_NAME(parent), "parsebin")) {
    pipeline->m_mediaArrived = true;
  }
}

void Pipeline::watchTypeFinding(GstElement* typefind) {
  g_signal_connect(typefind, "have-type", G_CALLBACK(&Pipeline::onTypeFound), this);
  g_signal_connect_after(typefind, "have-type", G_CALLBACK(&Pipeline::onTypeHandled), this);
  {
    std::lock_guard lock(m_padMutex);
    if (m_typefind == nullptr) m_typefind = GST_ELEMENT(gst_object_ref(typefind));
  }
  GstPad* const pad = gst_element_get_static_pad(typefind, "sink");
  gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_BUFFER, &Pipeline::onFirstBytes, this, nullptr);
  gst_object_unref(pad);
}

GstPadProbeReturn Pipeline::onFirstBytes(GstPad* pad, GstPadProbeInfo* info, gpointer self) {
  GstBuffer* const buffer = GST_PAD_PROBE_INFO_BUFFER(info);
  auto* const pipeline = static_cast<Pipeline*>(self);
  const std::string bytes = firstBytesOf(buffer);
  pipeline->m_fragmented = isFragmentedMp4(bytes);
  pipeline->m_indexFirst = hasWholeIndexFirst(bytes);
  const std::string text = capsToForce(bytes, pipeline->m_settings.declaredType);
  if (text.empty()) return GST_PAD_PROBE_REMOVE;

  GstElement* const typefind = gst_pad_get_parent_element(pad);
  if (typefind == nullptr) return GST_PAD_PROBE_REMOVE;
  GstCaps* const caps = gst_caps_from_string(text.c_str());
  g_object_set(typefind, "force-caps", caps, nullptr);
  gst_caps_unref(caps);
  gst_object_unref(typefind);
  return GST_PAD_PROBE_REMOVE;
}

void Pipeline::onTypeFound(GstElement* typefind, guint, GstCaps* caps, gpointer self) {
  auto* const pipeline = static_cast<Pipeline*>(self);
  const std::string name = gst_structure_get_name(gst_caps_get_structure(caps, 0));
  pipeline->m_adaptive = name == "application/dash+xml" || name == "application/x-hls";
  pipeline->m_declaresDuration = pipeline->m_adaptive || name == "video/quicktime";
  pipeline->m_transportStream = name == "video/mpegts";
  const bool readsElsewhere = pipeline->m_transportStream || (name == "video/quicktime" && !pipeline->m_indexFirst);
  if (readsElsewhere && !pipeline->m_hasRanges) pipeline->takeInOrder(typefind);
  // GStreamer would wait for ever for somebody to take these.
  const bool segmentsOutOfReach = pipeline->m_adaptive && startsWith(pipeline->m_settings.url, "file:");  // fetched over HTTP only
  if (startsWith(name, "text/") || name == "application/xml" || segmentsOutOfReach) pipeline->reportUnplayable();
}

/// A demuxer that may read where it likes begins with the end of a file, and a server without ranges refuses that. Without a
/// download it reads what comes.
void Pipeline::takeInOrder(GstElement* typefind) {
  GstObject* const parent = gst_object_get_parent(GST_OBJECT(typefind));
  if (parent == nullptr) return;
  m_comesInOrder = true;
  g_object_set(parent, "download", FALSE, nullptr);
  gst_object_unref(parent);
}

void Pipeline::onTypeHandled(GstElement*, guint, GstCaps*, gpointer self) { static_cast<Pipeline*>(self)->m_typeHandled = true; }

/// Stops the type finding before the element around it is stopped. That one waits for this one with a lock held that the handler of
/// a type found at that moment wants too: the two would wait for each other for ever.
void Pipeline::endTypeFinding() {
  GstElement* typefind = nullptr;
  {
    std::lock_guard lock(m_padMutex);
    typefind = std::exchange(m_typefind, nullptr);
  }
  if (typefind == nullptr) return;
  if (!m_typeHandled) {
    gst_element_set_locked_state(typefind, TRUE);
    gst_element_set_state(typefind, GST_STATE_NULL);
  }
  gst_object_unref(typefind);
}

void Pipeline::rememberSource(GstElement* source) {
  watchDownloadThreads();
  std::lock_guard lock(m_padMutex);
  if (m_source == nullptr) m_source = GST_ELEMENT(gst_object_ref(source));
}

/// Of a server that makes what it sends, neither the length nor another place is known before it comes. The demuxer of transport
/// streams takes the length for the largest number there is, and does not survive the refusal of another place.
bool Pipeline::isSourceSeekable() const {
  GstElement* const source = referenceTo(m_source);
  GstPad* const pad = source == nullptr ? nullptr : gst_element_get_static_pad(source, "src");
  const bool seekable = pad == nullptr || isSeekable(pad, GST_FORMAT_BYTES);
  if (pad != nullptr) gst_object_unref(pad);
  if (source != nullptr) gst_object_unref(source);
  return seekable;
}

/// A request that another thread cancels while it connects may never end in the HTTP library, and the source would wait for it for
/// ever. That is what the end of the source and a seek do, so its own thread cancels it before.
void Pipeline::cancelFetch() {
  GstElement* const source = referenceTo(m_source);
  if (source == nullptr) return;
  const auto cancel = GST_IS_BASE_SRC(source) ? GST_BASE_SRC_GET_CLASS(source)->unlock : nullptr;
  if (cancel != nullptr)
    runOnDownloadThread(
        source, [&] { cancel(GST_BASE_SRC(source)); }, kCancelPatience);
  gst_object_unref(source);
}

void Pipeline::rememberDownload(GstElement* downloadBuffer) {
  std::lock_guard lock(m_padMutex);
  if (m_download != nullptr) return;
  m_download = GST_ELEMENT(gst_object_ref(downloadBuffer));
  GstPad* const pad = gst_element_get_static_pad(downloadBuffer, "src");
  constexpr auto kBeforeReads = static_cast<GstPadProbeType>(GST_PAD_PROBE_TYPE_BLOCK | GST_PAD_PROBE_TYPE_PULL);
  gst_pad_add_probe(pad, kBeforeReads, &Pipeline::onDownloadRead, this, nullptr);
  gst_object_unref(pad);
}

/// The download buffer of GStreamer 1.22 asks for no other place while it is on its way to one, be it to fill a gap, but waits
/// until the bytes in between have come as well. The index of MP4 fragments is read in two pieces from the end of the file: the
/// second one waits until the buffer has settled after the first.
GstPadProbeReturn Pipeline::onDownloadRead(GstPad*, GstPadProbeInfo* info, gpointer self) {
  auto* const pipeline = static_cast<Pipeline*>(self);
  const guint64 place = GST_PAD_PROBE_INFO_OFFSET(info);
  const bool isJump = place > pipeline->m_readEnd + kNearBytes;
  pipeline->m_readEnd = place + GST_PAD_PROBE_INFO_SIZE(info);
  if (pipeline->m_hasJumped.exchange(isJump) && pipeline->m_fragmented && !pipeline->m_endsPass) g_usleep(kSettleUs);
  return GST_PAD_PROBE_PASS;
}

/// The download buffer of GStreamer 1.22 asks its source for another place without its lock and then waits without looking whether
/// all of it has come meanwhile: of a short rest nothing more comes that would wake it. A second end of stream, which its pad would
/// refuse, makes it look.
void Pipeline::wakeDownload() {
  if (!m_sourceEnded) return;
  GstElement* const download = referenceTo(m_download);
  if (download == nullptr) return;
  GstPad* const pad = gst_element_get_static_pad(download, "sink");
  GST_PAD_EVENTFUNC(pad)(pad, GST_OBJECT(download), gst_event_new_eos());
  gst_object_unref(pad);
  gst_object_unref(download);
}

/// The decoder of GStreamer 1.22 puts the end of the presentation behind what it holds of every stream, also of those that nobody
/// takes. When one of these is full, as happens when playing backwards, the end never comes and the next seek waits for ever.
void Pipeline::makeRoomForTheEnd() { m_room.bound(m_decoder, false); }

void Pipeline::reportUnplayable() {
  m_loop.post([this, alive = std::weak_ptr<bool>(m_alive)] {
    if (!alive.expired()) m_listener.onFailure(Failure::FormatNotSupported);
  });
}

void Pipeline::limitVideoSize(GstElement* adaptiveDemux) const {
  if (m_settings.maxVideoWidth > 0 && hasProperty(adaptiveDemux, "max-video-width")) {
    g_object_set(adaptiveDemux, "max-video-width", static_cast<guint>(m_settings.maxVideoWidth), nullptr);
  }
  if (m_settings.maxVideoHeight > 0 && hasProperty(adaptiveDemux, "max-video-height")) {
    g_object_set(adaptiveDemux, "max-video-height", static_cast<guint>(m_settings.maxVideoHeight), nullptr);
  }
}

}  // namespace mediamgmnt
