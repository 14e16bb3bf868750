// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/pipeline.h"

#include <chrono>
#include <cmath>
#include <utility>

#include "platform/mediamgmnt/foreign_elements.h"
#include "platform/mediamgmnt/library_start.h"
#include "platform/mediamgmnt/long_wait.h"

namespace mediamgmnt {
namespace {

/// A step of building that has not ended by then is stuck.
constexpr std::chrono::milliseconds kBuildPatience{1000};

/// A demuxer whose tasks have not ended by then has missed that they shall.
constexpr std::chrono::milliseconds kSeekPatience{500};
constexpr std::chrono::milliseconds kAskPatience{100};
constexpr std::chrono::milliseconds kClosePatience{3000};

/// Between picture and sound that are presented together; a sound device is told that much before it is heard.
constexpr std::int64_t kLargestLagNs = 500'000'000;

/// For a key picture nearby the adaptive demuxer of GStreamer 1.22 looks into the period that it presents, of which it has
/// forgotten the rest when it already fetches the next one: it crashes then.
GstSeekFlags withoutSnap(GstSeekFlags flags) {
  constexpr unsigned kSnap = GST_SEEK_FLAG_KEY_UNIT | GST_SEEK_FLAG_SNAP_NEAREST | GST_SEEK_FLAG_TRICKMODE_KEY_UNITS;
  return static_cast<GstSeekFlags>((static_cast<unsigned>(flags) & ~kSnap) | GST_SEEK_FLAG_ACCURATE);
}

std::int64_t known(gboolean answered, gint64 value) { return answered && value >= 0 ? value : Pipeline::kUnknown; }

}  // namespace

Pipeline::Pipeline(TaskLoop& loop, PipelineListener& listener, media::VideoSurface& surface, Components& components,
                   SubtitleFeed& subtitles, SourceSettings settings)
    : m_loop(loop),
      m_listener(listener),
      m_surface(surface),
      m_components(components),
      m_subtitles(subtitles),
      m_settings(std::move(settings)) {
  m_facts.url = m_settings.url;
}

Pipeline::~Pipeline() {
  if (m_pipeline == nullptr) return;
  m_keys->end();
  endTypeFinding();
  m_endsPass = true;
  {
    std::lock_guard lock(m_steeringMutex);
    m_closing = true;
  }
  letFetchingBegin();
  forgetDemuxer();
  m_gate.close(kBuildPatience);
  cancelFetch();
  if (m_textHeld) gst_element_set_locked_state(m_outputs[indexOf(Kind::Subtitle)].sink, FALSE);
  {
    const LongWait wait(kClosePatience, [this](unsigned time) { wakeDemuxer(time); });
    gst_element_set_state(m_pipeline, GST_STATE_NULL);
  }
  GstBus* const bus = gst_element_get_bus(m_pipeline);
  gst_bus_set_sync_handler(bus, nullptr, nullptr, nullptr);
  gst_object_unref(bus);
  gst_object_unref(m_pipeline);
  if (m_source != nullptr) gst_object_unref(m_source);
  if (m_download != nullptr) gst_object_unref(m_download);
  if (m_adaptiveDemux != nullptr) gst_object_unref(m_adaptiveDemux);
  forgetCollections();
}

bool Pipeline::open() {
  if (!waitForLibraryStart()) return false;
  restoreAdaptiveElements();
  m_pipeline = GST_ELEMENT(gst_object_ref_sink(gst_pipeline_new(nullptr)));
  m_decoder = gst_element_factory_make("uridecodebin3", nullptr);
  if (m_decoder == nullptr) return false;
  g_object_set(m_decoder, "uri", m_settings.url.c_str(), "use-buffering", TRUE, "download", gboolean{m_settings.keepDownload},
               nullptr);
  gst_bin_add(GST_BIN(m_pipeline), m_decoder);
  g_signal_connect(m_decoder, "pad-added", G_CALLBACK(&Pipeline::onPadAdded), this);
  g_signal_connect(m_decoder, "select-stream", G_CALLBACK(&Pipeline::onSelectStream), this);
  g_signal_connect(m_decoder, "source-setup", G_CALLBACK(&Pipeline::onSourceSetup), this);
  g_signal_connect(m_pipeline, "deep-element-added", G_CALLBACK(&Pipeline::onElementAdded), this);

  GstBus* const bus = gst_element_get_bus(m_pipeline);
  gst_bus_set_sync_handler(bus, &Pipeline::onBusMessage, this, nullptr);
  gst_object_unref(bus);
  // A failure is reported by an error message, which tells more than this result.
  gst_element_set_state(m_pipeline, GST_STATE_PAUSED);
  return true;
}

void Pipeline::play() { gst_element_set_state(m_pipeline, GST_STATE_PLAYING); }

void Pipeline::pause() { gst_element_set_state(m_pipeline, GST_STATE_PAUSED); }

bool Pipeline::seek(double rate, std::int64_t place, GstSeekFlags extraFlags) {
  const std::int64_t target = offPeriodEnd(place);
  if (m_transportStream && !isSourceSeekable()) return false;
  const auto flags = static_cast<GstSeekFlags>(GST_SEEK_FLAG_FLUSH | (hasPeriods() ? withoutSnap(extraFlags) : extraFlags));
  const bool prerollReported = std::exchange(m_prerollReported, false);
  const bool backwards = std::exchange(m_backwards, rate < 0);
  holdText();
  const std::optional<double> soughtBefore = noteSought(static_cast<double>(target) / 1e9);
  m_room.bound(m_decoder, m_adaptive);  // who waits for room at the end of a file holds what the seek needs
  const bool taken = sendSeek(rate, target, flags);
  m_room.bound(m_decoder, true);
  if (taken) return true;
  noteSought(soughtBefore);
  releaseText();
  m_backwards = backwards;
  m_prerollReported = prerollReported;
  return false;
}

/// The demuxer of GStreamer 1.22 takes where a period begins for the end of the one before, of which nothing comes.
std::int64_t Pipeline::offPeriodEnd(std::int64_t place) const {
  constexpr double kLastPart = 0.01;
  constexpr double kInside = 0.001;
  std::lock_guard lock(m_trackMutex);
  if (!m_facts.dash || m_facts.dash->periods.empty()) return place;
  const double seconds = static_cast<double>(place) / 1e9;
  const std::size_t next = periodAt(*m_facts.dash, seconds + kLastPart);
  if (next == periodAt(*m_facts.dash, seconds - kInside)) return place;
  return std::llround((periodStart(*m_facts.dash, next) + kInside) * 1e9);
}

std::optional<double> Pipeline::noteSought(std::optional<double> seconds) {
  std::lock_guard lock(m_trackMutex);
  return std::exchange(m_soughtSeconds, seconds);
}

/// A live presentation may get further ones at any time.
bool Pipeline::hasPeriods() const {
  std::lock_guard lock(m_trackMutex);
  return m_facts.dash && (m_facts.dash->isDynamic || m_facts.dash->periods.size() > 1);
}

bool Pipeline::sendSeek(double rate, std::int64_t target, GstSeekFlags flags) {
  const std::int64_t start = rate > 0 ? target : 0;
  const std::int64_t stop = rate > 0 ? -1 : target;  // no type "none", which would keep the stop of an earlier backward seek
  std::lock_guard lock(m_steeringMutex);
  if (m_demuxerLocked) return true;  // it is about to be opened anew, at the place that is sought
  const LongWait wait(kSeekPatience, [this](unsigned time) {
    if (m_flushing) wakeDemuxer(time);
  });
  m_seeking = true;
  const bool taken =
      gst_element_seek(m_pipeline, rate, GST_FORMAT_TIME, flags, GST_SEEK_TYPE_SET, start, GST_SEEK_TYPE_SET, stop) != FALSE;
  m_seeking = false;
  return taken;
}

std::optional<double> Pipeline::soughtSeconds() const {
  std::lock_guard lock(m_trackMutex);
  return m_soughtSeconds;
}

/// The picture's. A sink goes no further than its last picture, which may come long before the end of the sound of a file. The
/// sound of DASH and HLS is not asked: such a question may go up to the demuxer while that is being steered.
std::int64_t Pipeline::position() const {
  const std::int64_t picture = positionOf(Kind::Video);
  if (picture != kUnknown && (m_adaptive || m_backwards)) return picture;
  const std::int64_t sound = positionOf(Kind::Audio);
  const bool isPictureOver = sound != kUnknown && sound - picture > kLargestLagNs;
  return picture == kUnknown || isPictureOver ? sound : picture;
}

std::int64_t Pipeline::positionOf(Kind kind) const {
  GstElement* const sink = sinkOf(kind);
  if (sink == nullptr) return kUnknown;
  gint64 value = kUnknown;
  const gboolean answered = gst_element_query_position(sink, GST_FORMAT_TIME, &value);
  gst_object_unref(sink);
  return known(answered, value);
}

/// The sink is asked without the lock: the thread that adds outputs may hold what the answer needs.
GstElement* Pipeline::sinkOf(Kind kind) const {
  std::lock_guard lock(m_padMutex);
  GstElement* const sink = m_outputs[static_cast<int>(kind)].sink;
  return sink != nullptr ? GST_ELEMENT(gst_object_ref(sink)) : nullptr;
}

std::int64_t Pipeline::duration() const {
  if (m_transportStream && !isSourceSeekable()) return kUnknown;
  gint64 value = kUnknown;
  const gboolean answered = gst_element_query_duration(m_pipeline, GST_FORMAT_TIME, &value);
  return known(answered, value);
}

/// A live manifest is replaced on the demuxer's own thread, unguarded in GStreamer 1.22 against who asks about it meanwhile. While
/// that thread has no time the window is the one it was.
bool Pipeline::seekableWindow(std::int64_t& start, std::int64_t& end) const {
  if (m_transportStream && !isSourceSeekable()) return false;
  bool asked = false;
  const auto ask = [this, &asked] {
    m_window = queryWindow();
    asked = true;
  };
  if (m_adaptive) onDemuxerThread(ask, kAskPatience);
  if (!asked && (!m_adaptive || !m_window)) ask();  // what positions count from is learnt once
  if (!m_window) return false;
  start = m_window->first;
  end = m_window->second;
  return true;
}

std::optional<std::pair<std::int64_t, std::int64_t>> Pipeline::queryWindow() const {
  GstQuery* const query = gst_query_new_seeking(GST_FORMAT_TIME);
  gboolean seekable = FALSE;
  gint64 first = kUnknown;
  gint64 last = kUnknown;
  if (gst_element_query(m_pipeline, query)) gst_query_parse_seeking(query, nullptr, &seekable, &first, &last);
  gst_query_unref(query);
  if (!seekable || first < 0 || last <= first) return std::nullopt;
  return std::make_pair(std::int64_t{first}, std::int64_t{last});
}

/// Asks for no waiting: the state is only looked at.
bool Pipeline::isPrerolled() const {
  if (m_selected == 0 || m_linked < m_selected) return false;
  GstState current = GST_STATE_NULL;
  const GstStateChangeReturn result = gst_element_get_state(m_pipeline, &current, nullptr, 0);
  return result != GST_STATE_CHANGE_ASYNC && result != GST_STATE_CHANGE_FAILURE && current >= GST_STATE_PAUSED;
}

}  // namespace mediamgmnt
