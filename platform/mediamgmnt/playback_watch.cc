// SPDX-License-Identifier: Apache-2.0
// What is watched while time passes: position, live window, buffer, and whether anything moves at all.
#include <cmath>
#include <utility>

#include "platform/mediamgmnt/playback.h"

namespace mediamgmnt {
namespace {

using std::chrono::milliseconds;

constexpr double kNsPerMs = 1e6;
constexpr milliseconds kTick{200};
constexpr milliseconds kTrickWordInterval{500};
/// A dip of the buffer that is over before this is none: adaptive demuxers have them at every change.
constexpr milliseconds kUnderrunDebounce{120};
constexpr milliseconds kConnectTimeout{10000};
constexpr milliseconds kStarvedAfter{1000};
constexpr milliseconds kEndExpectedAfter{300};
constexpr milliseconds kEndOverdueAfter{600};
constexpr double kNearEndMs = 1000;
constexpr double kAtStartMs = 200;
constexpr milliseconds kLostAfter{10000};
constexpr milliseconds kUnplayableAfter{2500};
constexpr milliseconds kDownloadAsleepAfter{200};
constexpr milliseconds kStuckAfter{500};
constexpr int kMostRepeats = 4;

/// A transport stream's first picture comes this much after its first clock reference at most; more is a real place.
constexpr std::int64_t kLargestOriginNs = 5'000'000'000;

}  // namespace

/// Once per opening. Estimated durations wander afterwards and go wrong with seeks, so the first is kept.
void Playback::learnTimes() {
  m_timesKnown = true;
  const std::int64_t duration = m_pipeline->duration();
  m_live = duration <= 0 && m_pipeline->isAdaptive();
  m_durationGuessed = duration <= 0;
  m_facts.setOpenEnded(m_live);
  const bool countsAnew = !std::exchange(m_originKnown, true);  // one that is opened anew for another track goes on counting
  if (m_durationGuessed) {
    std::int64_t end = 0;
    if (countsAnew) m_pipeline->seekableWindow(m_origin, end);
    learnWindow();
  } else {
    m_facts.setDuration(std::llround(static_cast<double>(duration) / kNsPerMs));
  }
  const std::int64_t first = m_pipeline->position();
  if (countsAnew && m_pipeline->isTransportStream() && first > 0 && first < kLargestOriginNs) m_origin = first;
}

/// A live source reaches as far as its window does. Positions count from where that began when the source was opened, so this end
/// grows with them: a page that compares the two stays right, and every place within the window can be sought.
void Playback::learnWindow() {
  std::int64_t start = 0;
  std::int64_t end = 0;
  if (!m_pipeline->seekableWindow(start, end)) return m_facts.setDuration(0);
  m_facts.setDuration(std::llround(static_cast<double>(end - m_origin) / kNsPerMs));
}

void Playback::tick() {
  m_tickTimer = m_loop.postAfter(kTick, [this] { tick(); });
  if (m_prerolled && (m_live || (m_durationGuessed && m_facts.duration() == 0))) learnWindow();
  if (m_running && m_announced && m_prerolled) followPosition();
  if (m_pipeline == nullptr) return;  // that was the end
  announceTrickPosition();
  watchDownload();
  watchForStall();
}

void Playback::watchDownload() {
  if (m_running || !m_prerolled || hasEnough()) return;
  if (const int percent = m_pipeline->downloadedPercent(); percent > m_percent) onBuffering(percent);
}

void Playback::followPosition() {
  const double position = pipelinePosition();
  if (position != m_seenPosition) {
    m_seenPosition = position;
    m_endExpected = false;
    m_lastMove = Clock::now();
    noteProgress();
    if (std::exchange(m_starved, false)) answerPlay();
  } else if (m_rate < 0 && position < kAtStartMs && Clock::now() - m_lastMove > kEndExpectedAfter) {
    return rewoundToStart();  // an end that the adaptive demuxers of GStreamer 1.22 tell late
  } else if (!m_live && !m_endExpected && Clock::now() - m_lastMove > kEndExpectedAfter && awaitsEnd(position)) {
    m_endExpected = true;
    m_pipeline->makeRoomForTheEnd();
  } else if (m_endExpected && m_rate > 0 && Clock::now() - m_lastMove > kEndOverdueAfter && m_pipeline->isMediaOver()) {
    return onEnd();
  } else if (!m_starved && Clock::now() - m_lastMove > kStarvedAfter) {
    m_starved = true;
    m_facts.freezeAt(position);
    announceUnderrun();
  }
  stretchDuration(position);
  if (!m_starved) m_facts.runFrom(position, m_rate);
}

/// What has been passed was an estimate.
void Playback::stretchDuration(double position) {
  const std::optional<long long> duration = m_facts.duration();
  if (m_live || !duration || *duration <= 0 || !m_pipeline->mayLastLonger()) return;
  if (position > static_cast<double>(*duration)) m_facts.setDuration(std::llround(position));
}

/// Backwards, the end is demuxed long before it is shown. What is presented may end before what declares the duration.
bool Playback::awaitsEnd(double position) const {
  if (m_pipeline->hasDemuxedAnEnd()) return true;
  const std::optional<long long> duration = m_facts.duration();
  return m_rate < 0 || (duration && static_cast<double>(*duration) - position < kNearEndMs);
}

void Playback::announceTrickPosition() {
  if (!m_announced || m_wish != Wish::Play || m_wantedRate == 1) return;
  if (Clock::now() - m_lastTrickWord < kTrickWordInterval) return;
  m_lastTrickWord = Clock::now();
  m_voice.say(status::kPlayPositionChanged);
}

void Playback::watchForStall() {
  const bool mustMove = m_wish == Wish::Play || !m_prerolled;
  const bool isStuck = !m_prerolled && m_timesKnown && m_pipeline->isBetweenPeriods();
  if (isStuck) m_pipeline->endPresentedPeriod();
  if (!mustMove || m_stepping) return noteProgress();
  if (m_connectTimer != 0) return;  // the connect watchdog's matter
  if (Clock::now() - m_lastProgress > kDownloadAsleepAfter) m_pipeline->wakeDownload();
  // A demuxer's error is lost when it comes while GStreamer 1.22 is still setting that demuxer up; and now and then what has been
  // set up never begins.
  if (m_pipeline->endedWithoutStreams() && Clock::now() - m_lastProgress > kUnplayableAfter) {
    return m_attempts < kAttempts ? tryAgain() : fail(Failure::CorruptContent);
  }
  if (!m_prerolled && m_inFlight && m_rate < 0 && Clock::now() - m_lastProgress > kStarvedAfter) return stepInstead();
  if (isStuck && m_seeksRepeated < kMostRepeats && Clock::now() - m_lastProgress > kStuckAfter) return seekByWayOfElsewhere();
  if (Clock::now() - m_lastProgress > kLostAfter) fail(Failure::ConnectionLost);
}

void Playback::armConnectWatchdog() {
  m_connectTimer = m_loop.postAfter(kConnectTimeout, [this] {
    m_connectTimer = 0;
    fail(Failure::CannotConnect);
  });
}

/// Backwards the adaptive demuxers of GStreamer 1.22 may tell of nothing stored from one change of segments to the end. What is
/// missing indeed shows as a standstill.
bool Playback::hasEnough() const { return m_percent >= 100 || m_live || m_rate < 0; }

void Playback::onBuffering(int percent) {
  if (percent != m_percent) noteProgress();
  m_percent = percent;
  if (percent >= 100) {
    m_loop.cancel(std::exchange(m_underrunTimer, 0));
    return proceed();
  }
  if (m_live || !m_running || m_underrunTimer != 0) return;
  m_underrunTimer = m_loop.postAfter(kUnderrunDebounce, [this] {
    m_underrunTimer = 0;
    checkUnderrun();
  });
}

void Playback::checkUnderrun() {
  if (hasEnough() || !m_running || !m_prerolled || isFetchingTrack()) return;
  m_facts.freezeAt(pipelinePosition());
  announceUnderrun();
  halt();
}

}  // namespace mediamgmnt
