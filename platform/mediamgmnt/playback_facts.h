// SPDX-License-Identifier: Apache-2.0
// What a player answers about itself at any moment: position, duration, speed, last error.
#pragma once

#include <chrono>
#include <mutex>
#include <optional>

namespace mediamgmnt {

/// Answers without asking the pipeline: the control thread leaves an anchor (position, moment, rate) a few times a second, and
/// readers extrapolate from it. A read never waits for a pipeline, a network or a state change.
///
/// Threads: any, for all functions. Positions and durations are milliseconds.
class PlaybackFacts {
 public:
  long long position() const;
  /// Something is or was being presented since the last stop or new source.
  bool positionKnown() const;
  std::optional<long long> duration() const;
  double speed() const;
  std::optional<int> errorCode() const;

  void setSpeed(double speed);
  void setErrorCode(int code);
  void setDuration(std::optional<long long> duration);
  /// Positions may go on beyond the duration, as those of a live source do.
  void setOpenEnded(bool openEnded);

  /// The position stands still at @p position. Ignored while a seek that was asked for has not been taken up.
  void freezeAt(double position);
  /// The same at the end of a run; the position stays where it was shown last when that is a little ahead.
  void endRunAt(double position);
  /// The position was @p position right now and moves with @p rate. Ignored as above.
  void runFrom(double position, double rate);

  /// A seek was asked for: the position is @p target from now on. Pair with one seekTaken().
  void seekAsked(double target);
  /// The control thread has taken up one seek; its own anchors count again when none is left.
  void seekTaken();

  /// Position 0 and speed 0, as after a stop.
  void rewind();
  /// Nothing is known, as after a new source.
  void forget();

 private:
  using Clock = std::chrono::steady_clock;
  double positionLocked() const;

  mutable std::mutex m_mutex;
  double m_anchor = 0;  // guarded by m_mutex, like all below
  Clock::time_point m_anchorTime;
  double m_rate = 0;
  bool m_known = false;
  bool m_openEnded = false;
  int m_seeksAsked = 0;
  std::optional<long long> m_duration;
  double m_speed = 0;
  std::optional<int> m_errorCode;
};

}  // namespace mediamgmnt
