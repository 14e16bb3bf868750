// SPDX-License-Identifier: Apache-2.0
// Hears what the media library plays and tells its tones apart.
#pragma once

#include <chrono>
#include <optional>
#include <vector>

/// The tones of the sample media.
inline constexpr int kEnglish = 440;
inline constexpr int kGerman = 880;
inline constexpr int kDescribed = 220;  ///< and French
inline constexpr int kSilence = 0;

/// Taps the sound of the whole process while it lives: make it before the source is opened. Thread: the test's.
class Listener {
 public:
  using Clock = std::chrono::steady_clock;

  Listener();
  ~Listener();
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  /// What is heard, once it has been for 50 ms.
  std::optional<int> now() const;
  /// Waits until that is heard. @return false when it never is.
  bool hears(int tone, int seconds = 15) const;
  /// Everything that was heard for at least 50 ms, in order, since the last forget().
  std::vector<int> heard() const;
  void forget();
  /// When the present tone began to be heard.
  Clock::time_point since() const;
};
