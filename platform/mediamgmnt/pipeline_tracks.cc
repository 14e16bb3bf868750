// SPDX-License-Identifier: Apache-2.0
// The pipeline's tracks: what is known of them, which are selected, and which one has come to its output.
#include <gst/mpegts/mpegts.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <map>
#include <utility>

#include "platform/mediamgmnt/audio_output.h"
#include "platform/mediamgmnt/context_turn.h"
#include "platform/mediamgmnt/download_rest.h"
#include "platform/mediamgmnt/download_threads.h"
#include "platform/mediamgmnt/hls_renditions.h"
#include "platform/mediamgmnt/pipeline.h"

namespace mediamgmnt {
namespace {

constexpr std::size_t kLargestManifest = 32U << 20U;
constexpr int kBeginNaps = 30;
constexpr gulong kBeginNapUs = 1000;
constexpr std::int64_t kRecentDemuxerUs = 1'000'000;

/// Of all periods that are fetched.
constexpr unsigned kMostTracks = 64;

/// A demuxer that does not come by in this time is stuck.
constexpr std::chrono::milliseconds kSelectPatience{1000};
constexpr std::chrono::milliseconds kFinishPatience{100};  // it may itself wait for who waits here, with a seek

bool isAdaptiveDemux(GstObject* object) {
  if (object == nullptr || !GST_IS_ELEMENT(object)) return false;
  GstElementFactory* const factory = gst_element_get_factory(GST_ELEMENT(object));
  if (factory == nullptr) return false;
  const char* const name = GST_OBJECT_NAME(factory);
  return std::strcmp(name, "dashdemux2") == 0 || std::strcmp(name, "hlsdemux2") == 0;
}

Streams streamsOf(GstStreamCollection* collection) {
  Streams streams;
  for (guint i = 0; i < gst_stream_collection_get_size(collection); ++i) {
    streams.push_back(gst_stream_collection_get_stream(collection, i));
  }
  return streams;
}

/// What GStreamer selects of a kind on its own.
std::string selectedByItself(const Streams& streams, GstStreamType type) {
  GstStream* first = nullptr;
  for (GstStream* const stream : streams) {
    if ((gst_stream_get_stream_type(stream) & type) == 0) continue;
    if ((gst_stream_get_stream_flags(stream) & GST_STREAM_FLAG_SELECT) != 0) return gst_stream_get_stream_id(stream);
    if (first == nullptr) first = stream;
  }
  return first != nullptr ? gst_stream_get_stream_id(first) : "";
}

bool isSelectedByItself(const Streams& streams, const ComponentChoice& choice) {
  const auto same = [&](ComponentKind kind, GstStreamType type) {
    return selectedByItself(streams, type) == choice[kind].streamId;
  };
  return same(ComponentKind::Video, GST_STREAM_TYPE_VIDEO) && same(ComponentKind::Audio, GST_STREAM_TYPE_AUDIO) &&
         (!choice[ComponentKind::Subtitle].shown || same(ComponentKind::Subtitle, GST_STREAM_TYPE_TEXT));
}

/// Behind a seek during a change of streams, the transport stream demuxer of GStreamer 1.22 tells of gaps before the place sought.
/// At other speeds its scaletempo counts below zero from there, and a sink waits for a place that is 300 years away and never
/// stops.
bool isOutOfPlace(GstEvent* gap, GstPad* pad) {
  GstClockTime time = GST_CLOCK_TIME_NONE;
  gst_event_parse_gap(gap, &time, nullptr);
  GstEvent* const event = gst_pad_get_sticky_event(pad, GST_EVENT_SEGMENT, 0);
  if (event == nullptr) return true;
  const GstSegment* segment = nullptr;
  gst_event_parse_segment(event, &segment);
  const bool isWithin = gst_segment_clip(segment, GST_FORMAT_TIME, time, time, nullptr, nullptr) != FALSE;
  gst_event_unref(event);
  return !isWithin;
}

/// Not through the pad, whose lock the one who is to be helped may want next.
gboolean wakeInput(GstElement* track, GstPad* pad, gpointer) {
  GstEvent* const event = gst_event_new_custom(GST_EVENT_CUSTOM_DOWNSTREAM, gst_structure_new_empty("wake"));
  GST_PAD_EVENTFUNC(pad)(pad, GST_OBJECT(track), event);
  return TRUE;
}

constexpr char kTrackName[] = "track-period";

long periodOfTrack(GstElement* track) { return std::strtol(GST_OBJECT_NAME(track) + std::strlen(kTrackName), nullptr, 10); }

/// As the demuxer calls its element for a track of this stream.
std::string trackName(long period, std::string streamId) {
  std::replace(streamId.begin(), streamId.end(), ' ', '_');
  return kTrackName + std::to_string(period) + "-" + streamId;
}

gboolean noteStreamId(GstElement*, GstPad* pad, gpointer ids) {
  char* const id = gst_pad_get_stream_id(pad);
  if (id != nullptr) static_cast<std::vector<std::string>*>(ids)->emplace_back(id);
  g_free(id);
  return TRUE;
}

gboolean endInput(GstElement* track, GstPad* pad, gpointer) {
  GST_PAD_EVENTFUNC(pad)(pad, GST_OBJECT(track), gst_event_new_eos());
  return TRUE;
}

/// @param place a pointer to how many tracks are passed over before one is woken.
void wakeTrackAt(const GValue* element, gpointer place) {
  auto* const track = GST_ELEMENT(g_value_get_object(element));
  if (!g_str_has_prefix(GST_OBJECT_NAME(track), kTrackName)) return;
  if ((*static_cast<int*>(place))-- == 0) gst_element_foreach_sink_pad(track, wakeInput, nullptr);
}

DecodedFacts factsOf(ComponentKind kind, GstPad* pad) {
  DecodedFacts facts;
  GstCaps* const caps = gst_pad_get_current_caps(pad);
  if (caps == nullptr) return facts;
  const GstStructure* const structure = gst_caps_get_structure(caps, 0);
  int width = 0;
  int height = 0;
  int numerator = 1;
  int denominator = 1;
  if (kind == ComponentKind::Audio) gst_structure_get_int(structure, "channels", &facts.channels);
  if (kind == ComponentKind::Video && gst_structure_get_int(structure, "width", &width) &&
      gst_structure_get_int(structure, "height", &height) && height > 0) {
    gst_structure_get_fraction(structure, "pixel-aspect-ratio", &numerator, &denominator);
    facts.aspectRatio = static_cast<double>(width) * numerator / (static_cast<double>(height) * std::max(denominator, 1));
  }
  gst_caps_unref(caps);
  return facts;
}

/// A manifest's end is handed on to the demuxer's outputs where the playlist alone does not tell its tracks. By then the demuxer's
/// own thread may have made them: what they are to play would be over before it has begun.
GstIterator* leadsNowhere(GstPad*, GstObject*) { return nullptr; }

}  // namespace

void Pipeline::selectStreams(const ComponentChoice& choice) {
  std::lock_guard lock(m_steeringMutex);
  sendSelection({m_decoder}, choice);  // not to the pipeline, which would say no although it passes the event on
}

/// Whether it was taken is seen by what comes to the outputs.
void Pipeline::sendSelection(const std::vector<GstElement*>& receivers, const ComponentChoice& choice) {
  if (m_closing) return;
  GList* ids = nullptr;
  for (const ComponentKind kind : kComponentKinds) {
    if (!choice[kind].streamId.empty()) ids = g_list_append(ids, const_cast<char*>(choice[kind].streamId.c_str()));
  }
  if (ids == nullptr) return;
  const auto select = [&] {
    for (GstElement* const receiver : receivers) {
      if (m_demuxerLocked || isBetweenPeriods()) continue;
      m_demuxerLocked = leavesContextBehind([&] { gst_element_send_event(receiver, gst_event_new_select_streams(ids)); });
    }
  };
  onDemuxerThread(select, kSelectPatience);
  g_list_free(ids);
  if (m_demuxerLocked) reportLocked();
}

void Pipeline::reportLocked() {
  m_loop.post([this, alive = std::weak_ptr<bool>(m_alive)] {
    if (!alive.expired()) m_listener.onDemuxerLocked();
  });
}

/// Between two periods an adaptive demuxer of GStreamer 1.22 refuses a selection and keeps a lock for ever. It goes from one to the
/// next on a thread of its own: so what is looked at there still holds a moment later. What is known here may lag behind all the
/// same: a demuxer that has kept its lock is of no more use. Who has that thread's context, for instance while the first streams
/// are announced, has its locks as well.
void Pipeline::onDemuxerThread(const std::function<void()>& action, std::chrono::milliseconds patience) const {
  std::shared_ptr<GMainContext> context;
  {
    std::lock_guard lock(m_trackMutex);
    context = m_demuxer;
  }
  if (context == nullptr || context.get() == g_main_context_get_thread_default()) return action();
  runInContext(context.get(), action, patience);
}

void Pipeline::watchFetching(GstElement* track) {
  const auto watch = [](GstElement*, GstPad* pad, gpointer self) -> gboolean {
    gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_BUFFER, &Pipeline::onFetched, self, nullptr);
    return TRUE;
  };
  gst_element_foreach_sink_pad(track, watch, this);
  m_fetched.watch(track);
}

GstPadProbeReturn Pipeline::onFetched(GstPad*, GstPadProbeInfo*, gpointer self) {
  static_cast<Pipeline*>(self)->m_lastFetchUs = g_get_monotonic_time();
  return GST_PAD_PROBE_OK;
}

/// The adaptive demuxers of GStreamer 1.22 cancel their fetches when they seek, between the two events of the flush. They miss one
/// that their download thread has not taken up yet, take what it brings for the next one's, and abort the process over that. So
/// that thread rests meanwhile, where it has taken up and handed over all.
void Pipeline::watchSeeks(GstElement* demuxer) {
  watchDownloadThreads();
  const auto watch = +[](GstElement*, GstPad* pad, gpointer self) {
    if (GST_PAD_IS_SRC(pad)) gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_EVENT_FLUSH, &Pipeline::onFlush, self, nullptr);
  };
  g_signal_connect(demuxer, "pad-added", G_CALLBACK(watch), this);
}

GstPadProbeReturn Pipeline::onFlush(GstPad*, GstPadProbeInfo* info, gpointer data) {
  auto* const self = static_cast<Pipeline*>(data);
  GstEvent* const event = GST_PAD_PROBE_INFO_EVENT(info);
  self->m_fetched.forget();  // when it begins and when it ends: in between nothing is fetched
  const guint32 seek = gst_event_get_seqnum(event);
  const bool begins = GST_EVENT_TYPE(event) == GST_EVENT_FLUSH_START && self->m_flushOfSeek.exchange(seek) != seek;
  const bool ends = GST_EVENT_TYPE(event) == GST_EVENT_FLUSH_STOP;
  if (begins || ends) self->m_flushing = begins;
  if (begins || ends) self->restDownloads(begins);
  return GST_PAD_PROBE_OK;
}

void Pipeline::restDownloads(bool rest) {
  std::unique_ptr<DownloadRest> ended;
  {
    std::lock_guard lock(m_trackMutex);
    ended = std::move(m_downloadRest);
  }
  ended.reset();
  if (!rest) return;
  auto begun = std::make_unique<DownloadRest>();
  std::lock_guard lock(m_trackMutex);
  m_downloadRest = std::move(begun);
}

void Pipeline::setShown(ComponentKind kind, bool shown) {
  if (kind == Kind::Video) {
    std::lock_guard lock(m_showMutex);
    if (m_shown[indexOf(kind)].exchange(shown) && !shown) m_surface.clear();
    return;
  }
  m_shown[indexOf(kind)] = shown;
  if (kind != Kind::Audio) return;
  GstElement* const sink = sinkOf(kind);
  if (sink == nullptr) return;  // is made silent when it is made
  setMuted(sink, !shown);
  gst_object_unref(sink);
}

void Pipeline::watchOutput(Kind kind, GstElement* queue) {
  Arrival& arrival = m_arrivals[indexOf(kind)];
  arrival.pipeline = this;
  arrival.kind = kind;
  GstPad* const pad = gst_element_get_static_pad(queue, "src");
  const auto what = static_cast<GstPadProbeType>(GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM | GST_PAD_PROBE_TYPE_EVENT_FLUSH |
                                                 GST_PAD_PROBE_TYPE_BUFFER);
  gst_pad_add_probe(pad, what, &Pipeline::onOutputData, &arrival, nullptr);
  gst_object_unref(pad);
}

GstPadProbeReturn Pipeline::onOutputData(GstPad* pad, GstPadProbeInfo* info, gpointer data) {
  auto& arrival = *static_cast<Arrival*>(data);
  if ((GST_PAD_PROBE_INFO_TYPE(info) & GST_PAD_PROBE_TYPE_BUFFER) != 0) {
    if (arrival.next != nullptr) arrival.pipeline->reportPresented(arrival, pad);
    return GST_PAD_PROBE_OK;
  }
  GstEvent* const event = GST_PAD_PROBE_INFO_EVENT(info);
  const bool isText = arrival.kind == Kind::Subtitle;
  // A sink that rests would take a gap for what it shows, and the document behind it would wait.
  if (GST_EVENT_TYPE(event) == GST_EVENT_GAP && (isText || isOutOfPlace(event, pad))) return GST_PAD_PROBE_DROP;
  if (isText && GST_EVENT_TYPE(event) == GST_EVENT_FLUSH_STOP) arrival.pipeline->m_subtitles.flushed();
  if (GST_EVENT_TYPE(event) != GST_EVENT_STREAM_START) return GST_PAD_PROBE_OK;
  GstStream* stream = nullptr;
  gst_event_parse_stream(event, &stream);
  if (stream == nullptr) return GST_PAD_PROBE_OK;
  arrival.next = stream;
  gst_object_unref(stream);  // the collection that it is of is kept
  // Subtitles come rarely: they count as shown before the first one is due.
  if (isText) arrival.pipeline->reportPresented(arrival, pad);
  return GST_PAD_PROBE_OK;
}

void Pipeline::reportPresented(Arrival& arrival, GstPad* pad) {
  const void* const stream = std::exchange(arrival.next, nullptr);
  if (stream == std::exchange(arrival.present, stream)) return;
  {
    std::lock_guard lock(m_trackMutex);
    m_presented.push_back({arrival.kind, stream, factsOf(arrival.kind, pad)});
  }
  m_loop.post([this, alive = std::weak_ptr<bool>(m_alive)] {
    if (!alive.expired()) tellPresented();
  });
}

void Pipeline::tellPresented() {
  std::vector<Presented> presented;
  {
    std::lock_guard lock(m_trackMutex);
    presented = std::exchange(m_presented, {});
  }
  const std::weak_ptr<bool> alive = m_alive;
  for (const Presented& each : presented) {
    m_listener.onPresented(each.kind, each.stream, each.decoded);
    if (alive.expired()) return;  // it was opened anew
  }
}

/// The adaptive demuxers of GStreamer 1.22 start a thread that fetches, and wait for its end for ever when they are told to stop
/// before it has begun. So either they are not started any more, or that thread gets time to begin: in naps, which last longer on a
/// busy machine, as its start does.
void Pipeline::noteAdaptiveDemux(GstElement* demuxer) {
  m_demuxerMadeUs = g_get_monotonic_time();
  if (m_ending) gst_element_set_locked_state(demuxer, TRUE);
}

void Pipeline::letFetchingBegin() {
  m_ending = true;
  const bool isRecent = m_demuxerMadeUs != 0 && g_get_monotonic_time() - m_demuxerMadeUs < kRecentDemuxerUs;
  for (int nap = 0; isRecent && m_lastFetchUs == 0 && nap < kBeginNaps; ++nap) g_usleep(kBeginNapUs);
}

/// GStreamer drops most of what a manifest says about its tracks, and does not tell all renditions of a playlist apart: the demuxer
/// gets the manifest in one piece, once it has been read here.
void Pipeline::watchManifest(GstElement* adaptiveDemux) {
  GstPad* const pad = gst_element_get_static_pad(adaptiveDemux, "sink");
  if (pad == nullptr) return;
  m_manifestText.clear();
  m_manifestRead = false;
  const auto what = static_cast<GstPadProbeType>(GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM | GST_PAD_PROBE_TYPE_BUFFER);
  gst_pad_add_probe(pad, what, &Pipeline::onManifestData, this, nullptr);
  gst_pad_set_iterate_internal_links_function(pad, &leadsNowhere);
  gst_object_unref(pad);
}

GstPadProbeReturn Pipeline::onManifestData(GstPad* pad, GstPadProbeInfo* info, gpointer self) {
  auto* const pipeline = static_cast<Pipeline*>(self);
  if ((GST_PAD_PROBE_INFO_TYPE(info) & GST_PAD_PROBE_TYPE_BUFFER) == 0) {
    if (GST_EVENT_TYPE(GST_PAD_PROBE_INFO_EVENT(info)) == GST_EVENT_EOS) pipeline->handManifestOver(pad);
    return GST_PAD_PROBE_OK;
  }
  if (pipeline->m_manifestRead) return GST_PAD_PROBE_OK;
  GstMapInfo map;
  GstBuffer* const buffer = GST_PAD_PROBE_INFO_BUFFER(info);
  if (!gst_buffer_map(buffer, &map, GST_MAP_READ)) return GST_PAD_PROBE_OK;
  pipeline->m_manifestText.append(reinterpret_cast<const char*>(map.data), map.size);
  gst_buffer_unmap(buffer, &map);
  return GST_PAD_PROBE_DROP;
}

/// The demuxer parses it right after this: so the facts are there before its streams.
void Pipeline::handManifestOver(GstPad* demuxerPad) {
  if (std::exchange(m_manifestRead, true)) return;
  const std::string text = std::exchange(m_manifestText, {});
  const bool isPlaylist = text.size() <= kLargestManifest && readManifest(text);
  const std::string forDemuxer = isPlaylist ? tellRenditionsApart(text) : text;
  if (!forDemuxer.empty()) gst_pad_chain(demuxerPad, gst_buffer_new_memdup(forDemuxer.data(), forDemuxer.size()));
}

/// @return whether it is an HLS playlist
bool Pipeline::readManifest(const std::string& text) {
  std::lock_guard lock(m_trackMutex);
  m_facts.hls = readHlsPlaylist(text);
  if (m_facts.hls) return true;
  m_facts.dash = readDashManifest(text);
  if (!m_facts.dash) return false;
  takeRatings(*m_facts.dash);
  askForLicences(*m_facts.dash);
  return false;
}

void Pipeline::takeSection(GstMessage* message) {
  if (m_adaptive || !m_transportStream) return;
  GstMpegtsSection* const section = gst_message_parse_mpegts_section(message);
  if (section == nullptr) return;
  if (GST_MPEGTS_SECTION_TYPE(section) == GST_MPEGTS_SECTION_PMT) {
    std::lock_guard lock(m_trackMutex);
    m_facts.programMap = readProgramMap(section->data, section->section_length);
  }
  gst_mpegts_section_unref(section);
}

/// On the thread that posts it, which asks what to select right after: it is what the source begins with, without a moment of
/// anything else.
void Pipeline::takeCollection(GstMessage* message) {
  if (m_adaptive && !isAdaptiveDemux(GST_MESSAGE_SRC(message))) return;  // repeats the demuxer's, and mixes two periods
  GstStreamCollection* collection = nullptr;
  gst_message_parse_stream_collection(message, &collection);
  if (collection == nullptr) return;
  Streams streams = streamsOf(collection);
  bool isNew = false;
  bool isFirst = false;
  ComponentList tracks;
  {
    std::lock_guard lock(m_trackMutex);
    keepCollectionLocked(collection);
    isNew = streams != m_streams;
    isFirst = m_streams.empty();
    if (isNew) noteAnnouncedPeriodLocked();
    if (isNew && m_facts.dash) {
      const std::size_t from = m_streams.empty() ? 0 : m_soughtSeconds ? periodAt(*m_facts.dash, *m_soughtSeconds) : m_period + 1;
      m_period = periodOf(streams, *m_facts.dash, from);
    }
    m_soughtSeconds.reset();
    m_streams = streams;
    tracks = readComponents(streams, m_facts, m_period);
  }
  gst_object_unref(collection);
  m_components.offer(tracks);
  const ComponentChoice choice = m_components.choiceFrom(tracks);
  if (!m_adaptive) return keepAnswers(choice);
  // In a later period GStreamer looks for what was selected before, by rules of its own.
  const bool agrees = isFirst && isSelectedByItself(streams, choice);
  if (isNew && !agrees) beginWith(GST_MESSAGE_SRC(message), choice);
  if (isNew && !isFirst) letDemuxerFinish();
}

void Pipeline::noteAnnouncedPeriodLocked() {
  const std::size_t next = std::min(m_periodsAnnounced + 1, m_periodsBegun.size());
  m_periodsAnnounced = std::exchange(m_periodSought, std::nullopt).value_or(next);
}

/// The thread that announces a period's streams then frees the period before, under a lock. Where the demuxer's own thread is at
/// work on what was still fetched of that one, each waits for the other for ever.
void Pipeline::letDemuxerFinish() const {
  onDemuxerThread([] {}, kFinishPatience);
}

void Pipeline::keepAnswers(const ComponentChoice& choice) {
  std::lock_guard lock(m_trackMutex);
  for (const ComponentKind kind : kComponentKinds) m_toSelect[indexOf(kind)] = choice[kind].streamId;
}

/// An event that selects would come while some of the source's streams have no place in the decoder yet, which GStreamer 1.22 does
/// not bear. It asks this under a lock of its own.
int Pipeline::onSelectStream(GstElement*, GstStreamCollection*, GstStream* stream, gpointer self) {
  auto* const pipeline = static_cast<Pipeline*>(self);
  if (pipeline->m_adaptive) return -1;  // the demuxer selects
  std::lock_guard lock(pipeline->m_trackMutex);
  const auto& wanted = pipeline->m_toSelect;
  return std::find(wanted.begin(), wanted.end(), gst_stream_get_stream_id(stream)) != wanted.end() ? 1 : 0;
}

/// Of an adaptive source, which selects before the decoder. A seek that is under way waits for this thread, so this one must not
/// wait for the seek. What it presents is looked at afterwards.
void Pipeline::beginWith(GstObject* demuxer, const ComponentChoice& choice) {
  std::unique_lock lock(m_steeringMutex, std::try_to_lock);
  if (!lock.owns_lock()) return;
  // Nothing leads from the decoder to the demuxer yet when the first streams are announced.
  sendSelection({m_decoder, GST_ELEMENT(demuxer)}, choice);
}

/// The demuxer makes an element for each track of a period when it begins to fetch that, and announces the period's streams when it
/// begins to present it.
void Pipeline::noteTrackOfPeriod(GstElement* track) {
  const long period = periodOfTrack(track);
  const std::string name = GST_OBJECT_NAME(track);
  std::lock_guard lock(m_trackMutex);
  const bool again = std::find(m_tracksOfPeriod.begin(), m_tracksOfPeriod.end(), name) != m_tracksOfPeriod.end();
  if (m_tracksOfPeriod.empty() || again || m_periodsBegun.back() != period) {
    m_tracksOfPeriod.clear();
    m_periodsBegun.push_back(period);
    if (m_seeking) m_periodSought = m_periodsBegun.size();
  }
  m_tracksOfPeriod.push_back(name);
  GMainContext* const context = g_main_context_get_thread_default();
  if (m_demuxer == nullptr && context != nullptr && !m_ending) m_demuxer = {g_main_context_ref(context), &g_main_context_unref};
}

/// The demuxer ends a track and takes it out. A change of state that goes through the demuxer's elements meanwhile, such as the one
/// to playing, would begin it again, and it would be freed while it plays.
void Pipeline::endRemovedTracks(GstElement* adaptiveDemux) {
  const auto onRemoved = [](GstBin*, GstElement* element, gpointer) {
    if (!g_str_has_prefix(GST_OBJECT_NAME(element), kTrackName)) return;
    gst_element_set_locked_state(element, TRUE);
    gst_element_set_state(element, GST_STATE_NULL);
  };
  g_signal_connect(adaptiveDemux, "element-removed", GCallback(+onRemoved), nullptr);
}

/// With its context goes what is still queued there, which needs the demuxer.
void Pipeline::forgetDemuxer() {
  std::lock_guard lock(m_trackMutex);
  m_demuxer.reset();
}

/// The task that hands on what an adaptive demuxer of GStreamer 1.22 has misses that it shall end, for a seek or for good, while it
/// tells of streams: it waits for more of a track then, which does not come. Anything that comes there makes it look. What is put
/// in goes with the rest of the old place. One track at a time: the right one makes the demuxer go on and, at its end, free them
/// all.
void Pipeline::wakeDemuxer(unsigned track) const {
  GstElement* const demuxer = referenceTo(m_adaptiveDemux);
  if (demuxer == nullptr) return;
  int place = static_cast<int>(track % kMostTracks);
  GstIterator* const elements = gst_bin_iterate_elements(GST_BIN(demuxer));
  gst_iterator_foreach(elements, wakeTrackAt, &place);
  gst_iterator_free(elements);
  gst_object_unref(demuxer);
}

Pipeline::TracksOfPeriods Pipeline::tracksOfPeriods() const {
  TracksOfPeriods tracks;
  GstElement* const demuxer = referenceTo(m_adaptiveDemux);
  if (demuxer == nullptr) return tracks;
  const auto note = +[](const GValue* element, gpointer all) {
    auto* const track = GST_ELEMENT(g_value_get_object(element));
    if (!g_str_has_prefix(GST_OBJECT_NAME(track), kTrackName)) return;
    const std::shared_ptr<GstElement> kept(GST_ELEMENT(gst_object_ref(track)), &gst_object_unref);
    (*static_cast<TracksOfPeriods*>(all))[periodOfTrack(track)].emplace(GST_OBJECT_NAME(track), kept);
  };
  GstIterator* const elements = gst_bin_iterate_elements(GST_BIN(demuxer));
  gst_iterator_foreach(elements, note, &tracks);
  gst_iterator_free(elements);
  gst_object_unref(demuxer);
  return tracks;
}

/// An adaptive demuxer of GStreamer 1.22 that is sought into the period that it fetches already goes on presenting the one before,
/// of which nothing more comes. It lacks what it does itself when it begins another period for a seek: what it presents has ended.
/// When the last of these tracks has, it goes on, and frees them all once that is announced.
void Pipeline::endPresentedPeriod() {
  GstElement* const demuxer = referenceTo(m_adaptiveDemux);
  if (demuxer == nullptr) return;
  std::vector<std::string> presented;
  gst_element_foreach_src_pad(demuxer, noteStreamId, &presented);
  gst_object_unref(demuxer);
  const std::optional<long> left = periodToLeave();
  const TracksOfPeriods tracks = tracksOfPeriods();
  const auto period = left ? tracks.find(*left) : tracks.end();
  if (period == tracks.end()) return;
  for (const std::string& id : presented) {
    const auto found = period->second.find(trackName(period->first, id));
    if (found != period->second.end()) gst_element_foreach_sink_pad(found->second.get(), endInput, nullptr);
  }
}

bool Pipeline::isBetweenPeriods() const {
  std::lock_guard lock(m_trackMutex);
  return m_periodsBegun.size() > m_periodsAnnounced;
}

/// The one that is presented while a later one is fetched. A demuxer that has begun another one for a seek goes there by itself,
/// and crashes where it is made to before that one is complete.
std::optional<long> Pipeline::periodToLeave() const {
  std::lock_guard lock(m_trackMutex);
  if (m_periodSought || m_periodsAnnounced == 0 || m_periodsBegun.size() == m_periodsAnnounced) return std::nullopt;
  return m_periodsBegun[m_periodsAnnounced - 1];
}

/// Streams are told apart by their address, so none may be used for another one as long as this source is open.
void Pipeline::keepCollectionLocked(GstStreamCollection* collection) {
  const bool known =
      std::any_of(m_collections.begin(), m_collections.end(), [=](const auto& each) { return each.first == collection; });
  if (known) return;
  const gulong handler = g_signal_connect(collection, "stream-notify", G_CALLBACK(&Pipeline::onStreamNotify), this);
  m_collections.emplace_back(GST_STREAM_COLLECTION(gst_object_ref(collection)), handler);
}

void Pipeline::forgetCollections() {
  std::vector<std::pair<GstStreamCollection*, gulong>> collections;
  {
    std::lock_guard lock(m_trackMutex);
    collections.swap(m_collections);
    m_streams.clear();
  }
  for (const auto& [collection, handler] : collections) {
    g_signal_handler_disconnect(collection, handler);
    gst_object_unref(collection);
  }
}

/// Many in a row when a source begins: they are taken up together.
void Pipeline::onStreamNotify(GstStreamCollection*, GstStream*, GParamSpec*, gpointer self) {
  auto* const pipeline = static_cast<Pipeline*>(self);
  {
    std::lock_guard lock(pipeline->m_trackMutex);
    if (std::exchange(pipeline->m_refreshDue, true)) return;
  }
  pipeline->m_loop.post([pipeline, alive = std::weak_ptr<bool>(pipeline->m_alive)] {
    if (alive.expired()) return;
    pipeline->refreshTracks();
    pipeline->m_listener.onTracksChanged();
  });
}

void Pipeline::refreshTracks() {
  ComponentList tracks;
  {
    std::lock_guard lock(m_trackMutex);
    m_refreshDue = false;
    if (m_streams.empty()) return;
    tracks = readComponents(m_streams, m_facts, m_period);
  }
  m_components.offer(std::move(tracks));
}

}  // namespace mediamgmnt
