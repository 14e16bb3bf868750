// SPDX-License-Identifier: Apache-2.0
// Places and speeds: seeks, fast, slow and backwards, and rewinding by steps where a format cannot be played backwards.
#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/mediamgmnt/playback.h"

namespace mediamgmnt {
namespace {

constexpr double kNsPerMs = 1e6;
constexpr std::chrono::milliseconds kStepInterval{500};

/// Of the last pictures and sounds of a source there must be some left to show: behind them GStreamer 1.22 waits for ever, or
/// begins again.
constexpr double kLeastRestMs = 300;

/// The window of a live presentation moves on while it is looked at.
constexpr std::int64_t kWithinWindowNs = 500'000'000;

/// From this speed on only key pictures are decoded.
constexpr double kKeyPicturesFrom = 4;

GstSeekFlags flagsFor(double rate) {
  if (std::abs(rate) < kKeyPicturesFrom) return GST_SEEK_FLAG_ACCURATE;
  return static_cast<GstSeekFlags>(GST_SEEK_FLAG_ACCURATE | GST_SEEK_FLAG_TRICKMODE | GST_SEEK_FLAG_TRICKMODE_KEY_UNITS |
                                   GST_SEEK_FLAG_TRICKMODE_NO_AUDIO);
}

}  // namespace

/// The last of them may lie long before the end.
bool Playback::showsKeyPicturesOnly() const { return std::abs(m_rate) >= kKeyPicturesFrom; }

void Playback::seek(double target) {
  m_facts.seekTaken();
  const double place = clampTarget(target);
  m_facts.freezeAt(place);
  answerSeeks();  // an earlier one that the new one takes the place of
  ++m_seeksDue;
  leaveStepping();
  m_next.reset();
  m_heldSeek.reset();
  m_seeksRepeated = 0;
  m_keepRunning = false;
  if (m_pipeline == nullptr) {
    m_startPosition = place;
    return answerSeeks();
  }
  if (m_wish == Wish::Play) {
    announceUnderrun();
    m_playingDue = true;
  }
  m_next = Place{place, m_wish == Wish::Play ? m_wantedRate : 1};
  m_subtitles.expectSeek();
  proceed();
}

double Playback::clampTarget(double target) const {
  if (m_live) return clampToWindow(target);
  const std::optional<long long> duration = m_facts.duration();
  if (!duration || *duration <= 0) return target;
  return std::min(target, static_cast<double>(*duration));
}

/// The last place from which something is played; of a live presentation the first, which moves on while a seek is under way.
double Playback::withinReach(double target) const {
  if (m_live) return std::max(target, clampToWindow(0) + kWithinWindowNs / kNsPerMs);
  const std::optional<long long> duration = m_facts.duration();
  if (!duration || *duration <= 0) return target;
  return std::max(0.0, std::min(target, static_cast<double>(*duration) - kLeastRestMs));
}

double Playback::clampToWindow(double target) const {
  std::int64_t start = 0;
  std::int64_t end = 0;
  if (m_pipeline == nullptr || !m_pipeline->seekableWindow(start, end)) return target;
  const double first = static_cast<double>(start - m_origin) / kNsPerMs;
  const double last = static_cast<double>(end - m_origin) / kNsPerMs;
  return std::max(0.0, std::clamp(target, first, last));
}

void Playback::beginReposition() {
  const Place place = *std::exchange(m_next, std::nullopt);
  const bool runsOn = std::exchange(m_keepRunning, false) && m_running;
  if (!runsOn) halt();
  if (place.rate < 0 && !m_pipeline->playsBackwards()) {
    return m_pipeline->canSeek() ? beginStepping(place) : repositionRefused(place);
  }
  m_prerolled = false;
  m_pipeline->passUnseen(m_heldSeek && m_seeksRepeated > 0);
  const bool taken = m_pipeline->seek(place.rate, toPipeline(withinReach(place.target)), flagsFor(place.rate));
  m_subtitles.seekDone();
  if (!taken) return repositionRefused(place);
  m_rate = place.rate;
  m_inFlight = place.target;
  if (!runsOn) m_facts.freezeAt(m_heldSeek ? m_heldSeek->target : place.target);
  noteProgress();
}

/// The pipeline stays where and as it was.
void Playback::repositionRefused(const Place& place) {
  m_prerolled = true;
  m_next = std::exchange(m_heldSeek, std::nullopt);
  if (m_next) return proceed();
  if (place.rate < 0 && m_pipeline->canSeek()) return beginStepping(place);
  m_wantedRate = m_rate;
  m_facts.freezeAt(pipelinePosition());
  if (m_wish != Wish::Play) answerSeeks();
  proceed();
}

/// Where playback is or will be as soon as what was asked is done.
double Playback::presentTarget() const {
  if (m_heldSeek) return m_heldSeek->target;
  if (m_next) return m_next->target;
  if (m_inFlight) return *m_inFlight;
  const bool pausesSoon = m_running && m_wish != Wish::Play;
  if (m_stepping || !m_prerolled || pausesSoon) return static_cast<double>(m_facts.position());
  return pipelinePosition();
}

void Playback::beginStepping(const Place& place) {
  m_pipeline->passUnseen(false);
  m_stepping = true;
  m_stepPosition = place.target;
  m_stepTime = Clock::now();
  m_wantedRate = place.rate;
  m_announced = true;
  m_facts.runFrom(place.target, place.rate);
  answerPlay();
  step();
}

/// GStreamer 1.22 has all that it is to play backwards and shows none of it, for instance from just behind where the second segment
/// of a presentation begins.
void Playback::stepInstead() {
  const Place place{*std::exchange(m_inFlight, std::nullopt), m_rate};
  m_prerolled = true;
  if (!m_next) m_next = std::exchange(m_heldSeek, std::nullopt);
  if (m_next) return proceed();
  beginStepping(place);
}

/// An adaptive demuxer of GStreamer 1.22 that is sought into the period that it already fetches goes on presenting the one before,
/// of which nothing more comes. It is led away from there first: not both ends of the presentation are in that period.
void Playback::seekByWayOfElsewhere() {
  std::int64_t start = 0;
  std::int64_t end = 0;
  const bool fromTheEnd = ++m_seeksRepeated % 2 == 1;
  if (!m_pipeline->seekableWindow(start, end)) return;
  if (!m_heldSeek) m_heldSeek = m_next ? *m_next : Place{m_inFlight.value_or(presentTarget()), m_rate};
  m_inFlight.reset();
  const std::int64_t elsewhere = fromTheEnd ? end - kWithinWindowNs : start + kWithinWindowNs;
  m_next = Place{static_cast<double>(elsewhere - m_origin) / kNsPerMs, 1};
  m_prerolled = true;
  proceed();
}

/// Shows the key picture at the place that a rewind would have reached by now.
void Playback::step() {
  if (!m_stepping) return;
  const double elapsed = std::chrono::duration<double, std::milli>(Clock::now() - m_stepTime).count();
  const double place = m_stepPosition + m_wantedRate * elapsed;
  if (place <= 0) return rewoundToStart();
  m_facts.runFrom(place, m_wantedRate);
  if (m_prerolled) {
    const auto flags = static_cast<GstSeekFlags>(GST_SEEK_FLAG_KEY_UNIT | GST_SEEK_FLAG_SNAP_BEFORE);
    m_prerolled = !m_pipeline->seek(1, toPipeline(withinReach(place)), flags);
    m_rate = 1;
    noteProgress();
  }
  m_stepTimer = m_loop.postAfter(kStepInterval, [this] { step(); });
}

/// What follows goes on from where the rewind has come.
void Playback::leaveStepping() {
  if (!std::exchange(m_stepping, false)) return;
  m_loop.cancel(std::exchange(m_stepTimer, 0));
  const double place = static_cast<double>(m_facts.position());
  m_facts.freezeAt(place);
  m_announced = false;
  m_next = Place{place, 1};
}

void Playback::rewoundToStart() {
  if (m_playingDue) answerPlay();
  m_stepping = false;
  halt();
  m_wish = Wish::Pause;
  m_wantedRate = 1;
  m_next = Place{0, 1};
  m_subtitles.expectSeek();
  m_facts.freezeAt(0);
  ++m_seeksDue;  // the page is paused from here on and reads the position that it was told last
  answerPause();
  proceed();
}

double Playback::pipelinePosition() const {
  const std::int64_t position = m_pipeline->position();
  if (position == Pipeline::kUnknown) return static_cast<double>(m_facts.position());
  return std::max(0.0, static_cast<double>(position - m_origin) / kNsPerMs);
}

std::int64_t Playback::toPipeline(double target) const { return m_origin + static_cast<std::int64_t>(target * kNsPerMs); }

}  // namespace mediamgmnt
