// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/playback_facts.h"

#include <algorithm>
#include <cmath>

namespace mediamgmnt {
namespace {

/// Anchors come every 200 ms; without a new one the position stops here instead of running away from a pipeline that stalled.
constexpr double kLongestExtrapolationMs = 1000;

/// What a page may have read that the pipeline, which was late, has not got to: the position then waits instead of stepping back.
/// More is another place.
constexpr double kShownAheadMs = 300;

}  // namespace

double PlaybackFacts::positionLocked() const {
  if (m_rate == 0) return m_anchor;
  const double elapsed = std::chrono::duration<double, std::milli>(Clock::now() - m_anchorTime).count();
  double position = m_anchor + m_rate * std::clamp(elapsed, 0.0, kLongestExtrapolationMs);
  if (!m_openEnded && m_duration && *m_duration > 0) position = std::min(position, static_cast<double>(*m_duration));
  return std::max(position, 0.0);
}

long long PlaybackFacts::position() const {
  std::lock_guard lock(m_mutex);
  return std::llround(positionLocked());
}

bool PlaybackFacts::positionKnown() const {
  std::lock_guard lock(m_mutex);
  return m_known;
}

std::optional<long long> PlaybackFacts::duration() const {
  std::lock_guard lock(m_mutex);
  return m_duration;
}

double PlaybackFacts::speed() const {
  std::lock_guard lock(m_mutex);
  return m_speed;
}

std::optional<int> PlaybackFacts::errorCode() const {
  std::lock_guard lock(m_mutex);
  return m_errorCode;
}

void PlaybackFacts::setSpeed(double speed) {
  std::lock_guard lock(m_mutex);
  m_speed = speed;
}

void PlaybackFacts::setErrorCode(int code) {
  std::lock_guard lock(m_mutex);
  m_errorCode = code;
}

void PlaybackFacts::setDuration(std::optional<long long> duration) {
  std::lock_guard lock(m_mutex);
  m_duration = duration;
}

void PlaybackFacts::setOpenEnded(bool openEnded) {
  std::lock_guard lock(m_mutex);
  m_openEnded = openEnded;
}

void PlaybackFacts::freezeAt(double position) {
  std::lock_guard lock(m_mutex);
  m_known = true;
  if (m_seeksAsked > 0) return;
  m_anchor = std::max(position, 0.0);
  m_rate = 0;
}

void PlaybackFacts::endRunAt(double position) {
  std::lock_guard lock(m_mutex);
  m_known = true;
  if (m_seeksAsked > 0) return;
  const double shown = positionLocked();
  const double ahead = (shown - position) * (m_rate < 0 ? -1 : 1);
  m_anchor = m_rate != 0 && ahead > 0 && ahead < kShownAheadMs ? shown : std::max(position, 0.0);
  m_rate = 0;
}

void PlaybackFacts::runFrom(double position, double rate) {
  std::lock_guard lock(m_mutex);
  m_known = true;
  if (m_seeksAsked > 0) return;
  const double shown = positionLocked();
  const double behind = (shown - position) * (rate < 0 ? -1 : 1);
  const bool isLate = rate != 0 && m_rate == rate && behind > 0 && behind < kShownAheadMs;
  m_anchor = isLate ? shown : std::max(position, 0.0);
  m_anchorTime = Clock::now();
  if (isLate)
    m_anchorTime += std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double, std::milli>(behind / std::abs(rate)));
  m_rate = rate;
}

void PlaybackFacts::seekAsked(double target) {
  std::lock_guard lock(m_mutex);
  ++m_seeksAsked;
  m_known = true;
  m_anchor = target;
  m_rate = 0;
}

void PlaybackFacts::seekTaken() {
  std::lock_guard lock(m_mutex);
  if (m_seeksAsked > 0) --m_seeksAsked;
}

void PlaybackFacts::rewind() {
  std::lock_guard lock(m_mutex);
  if (m_seeksAsked == 0) {
    m_anchor = 0;
    m_known = false;
  }
  m_rate = 0;
  m_speed = 0;
}

void PlaybackFacts::forget() {
  std::lock_guard lock(m_mutex);
  if (m_seeksAsked == 0) {
    m_anchor = 0;
    m_known = false;
  }
  m_rate = 0;
  m_speed = 0;
  m_duration.reset();
}

}  // namespace mediamgmnt
