// SPDX-License-Identifier: Apache-2.0
// Which tracks are presented. The components know what is wished; here the pipeline is led there, and the page hears of it.
#include <array>
#include <utility>

#include "platform/mediamgmnt/playback.h"

namespace mediamgmnt {
namespace {

/// A track that has not come by itself after this is fetched by a seek to the present place.
constexpr std::chrono::milliseconds kLatestSwitch{500};

constexpr std::chrono::milliseconds kLatestFetch{60};
constexpr std::chrono::milliseconds kFetchLook{1};

/// A stream that still is not there then cannot be presented; what is presented goes on.
constexpr int kMostTries = 3;

/// A demuxer that locks itself up again and again does it for ever.
constexpr int kMostLocks = 8;
constexpr std::chrono::seconds kLockInterval{10};

const char* wordFor(ComponentKind kind) {
  switch (kind) {
    case ComponentKind::Video: return status::kSelectedVideoChanged;
    case ComponentKind::Audio: return status::kSelectedAudioChanged;
    case ComponentKind::Subtitle: return status::kSelectedSubtitleChanged;
  }
  return status::kSelectedSubtitleChanged;
}

}  // namespace

void Playback::applySelection() {
  m_switchesTried = 0;
  onTracksChanged();
}

void Playback::onTracksChanged() {
  if (m_pipeline == nullptr) return;  // the next opening begins with what is wished
  showWhatIsWished();
  noteDueSwitch();
  proceed();
}

void Playback::onDemuxerLocked() {
  if (m_pipeline == nullptr) return;
  if (Clock::now() - m_lastLock > kLockInterval) m_locks = 0;
  m_lastLock = Clock::now();
  return ++m_locks <= kMostLocks ? reopen() : fail(Failure::ConnectionLost);
}

void Playback::onPresented(ComponentKind kind, const void* stream, const DecodedFacts& decoded) {
  const bool changed = m_components.present(kind, stream, decoded);
  if (changed || m_changesToSay[indexOf(kind)]) sayChanged(kind);
  if (kind == ComponentKind::Subtitle) {
    if (const std::optional<Component> track = m_components.presentedTrack(kind)) m_subtitles.present(*track);
  }
  showWhatIsWished();
  if (!m_pipeline->isAdaptive()) m_loop.cancel(std::exchange(m_switchTimer, 0));
  if (m_components.isSwitchDue()) {
    noteDueSwitch();
    return proceed();
  }
  m_switchesTried = 0;
}

/// Hides at once; shows as soon as the right one is there.
void Playback::showWhatIsWished() {
  const ComponentChoice choice = m_components.choice();
  for (const ComponentKind kind : kComponentKinds) {
    const ComponentChoice::OfKind& wished = choice[kind];
    if (!wished.shown) {
      show(kind, false);
    } else if (wished.stream != nullptr && m_components.presented(kind) == wished.stream) {
      show(kind, true);
    }
  }
  showSubtitles();
}

/// The page hears of them when they are hidden, and when the right ones are there; while another track is fetched they stay shown.
void Playback::showSubtitles() {
  const ComponentChoice choice = m_components.choice();
  const ComponentChoice::OfKind& wished = choice[ComponentKind::Subtitle];
  if (!wished.shown) return m_subtitles.show(false, Pipeline::kUnknown);
  if (wished.stream != nullptr && m_components.presented(ComponentKind::Subtitle) == wished.stream) {
    m_subtitles.show(true, m_pipeline->position());
  }
}

void Playback::show(ComponentKind kind, bool shown) {
  if (m_components.isShown(kind) == shown) return;
  m_pipeline->setShown(kind, shown);
  if (m_components.show(kind, shown)) sayChanged(kind);
  const bool mustRedraw = shown && kind == ComponentKind::Video && !m_running;
  if (mustRedraw) m_switchDue = m_redrawDue = true;
}

/// What a presentation begins with is no change.
void Playback::sayChanged(ComponentKind kind) {
  const bool reopened = std::exchange(m_changesToSay[indexOf(kind)], false);
  if (m_timesKnown || reopened) m_voice.say(wordFor(kind));
}

void Playback::noteDueSwitch() {
  if (m_components.isSwitchDue() && m_switchesTried < kMostTries) m_switchDue = true;
}

/// Adaptive sources have seconds of the old track in store, and a paused one lets nothing new through: the seek to the present
/// place empties them.
void Playback::beginSwitch() {
  m_switchDue = false;
  const bool redraw = std::exchange(m_redrawDue, false);
  if (!redraw && !m_components.isSwitchDue()) return;  // has come by itself
  // GStreamer mixes up selections that overtake each other. What the one before leads to comes here again.
  if (m_switchTimer != 0) return;
  ++m_switchesTried;
  if (m_pipeline->isBetweenPeriods()) return reopen();
  const std::int64_t selected = g_get_monotonic_time();
  m_pipeline->selectStreams(m_components.choice());
  if (m_stepping) return;  // the next step seeks anyway
  if (m_pipeline->isAdaptive()) return seekWhenFetched(Clock::now() + kLatestFetch, selected);
  const bool bySeek = std::exchange(m_switchBySeek, false) || !m_running;
  return bySeek ? seekForSwitch() : armSwitchWatch();
}

/// An adaptive demuxer of GStreamer 1.22 puts the new track's beginning behind the old one's media under a lock that the next seek
/// needs. In a pause nobody would make room there, so a pause waits for the seek, which is a matter of milliseconds.
bool Playback::isFetchingTrack() const { return m_switchTimer != 0 && m_pipeline != nullptr && m_pipeline->isAdaptive(); }

/// A seek that overtakes the selection would bring the old track once more: it waits until the new one is fetched. Where the line
/// is slow that is long under way when time is up.
void Playback::seekWhenFetched(Clock::time_point latest, std::int64_t selected) {
  if (m_pipeline->lastFetch() > selected || Clock::now() >= latest) {
    m_switchTimer = 0;
    seekForSwitch();
    return proceed();
  }
  m_switchTimer = m_loop.postAfter(kFetchLook, [this, latest, selected] { seekWhenFetched(latest, selected); });
}

/// Another seek that was asked for meanwhile waits: a selection and a seek to elsewhere are too much at once for GStreamer 1.22.
void Playback::seekForSwitch() {
  if (m_next) m_heldSeek = std::exchange(m_next, std::nullopt);
  m_next = Place{m_heldSeek ? pipelinePosition() : presentTarget(), m_rate};
  m_keepRunning = true;
}

/// The picture stays meanwhile; the page hears of nothing but the change.
void Playback::reopen() {
  const double rate = m_stepping ? m_wantedRate : m_rate;
  const Place place = m_heldSeek ? *m_heldSeek : m_next ? *m_next : Place{presentTarget(), rate};
  const bool isUnderrunAnnounced = m_bufferReadyDue;
  const bool announced = m_announced && !isUnderrunAnnounced;
  const int tried = m_switchesTried;
  const ComponentChoice choice = m_components.choice();
  for (const ComponentKind kind : kComponentKinds) {
    const void* const presented = m_components.presented(kind);
    m_changesToSay[indexOf(kind)] = choice[kind].shown && presented != choice[kind].stream;
  }
  m_reopening = true;
  closePipeline();
  m_startPosition = place.target;
  m_wantedRate = place.rate;
  open();
  m_reopening = false;
  if (announced) m_bufferReadyDue = false;
  m_switchesTried = tried;
}

void Playback::armSwitchWatch() {
  m_loop.cancel(m_switchTimer);
  m_switchTimer = m_loop.postAfter(kLatestSwitch, [this] {
    m_switchTimer = 0;
    if (!m_components.isSwitchDue()) return;
    m_switchBySeek = true;
    noteDueSwitch();
    proceed();
  });
}

}  // namespace mediamgmnt
