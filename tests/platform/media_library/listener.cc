// SPDX-License-Identifier: Apache-2.0
#include "listener.h"

#include <array>
#include <cmath>
#include <mutex>
#include <numbers>

#include "platform/mediamgmnt/media_sound.h"
#include "test_player.h"

namespace {

using Clock = Listener::Clock;

constexpr int kUnclear = -1;
constexpr double kQuiet = 100;          ///< of 32768
constexpr std::uint32_t kShort = 2400;  ///< frames: 50 ms

struct Stretch {
  int tone;
  std::uint32_t frames;
  Clock::time_point began;
};

std::mutex mutex;
std::vector<Stretch> stretches;  // guarded by mutex

/// The strength of one frequency in the left channel.
double strength(const MediaSound& sound, int hertz) {
  double real = 0;
  double imaginary = 0;
  for (std::uint32_t i = 0; i < sound.frames; ++i) {
    const double angle = 2 * std::numbers::pi * hertz * i / sound.rate;
    real += sound.samples[i * sound.channels] * std::cos(angle);
    imaginary += sound.samples[i * sound.channels] * std::sin(angle);
  }
  return std::hypot(real, imaginary) / sound.frames;
}

int toneOf(const MediaSound& sound) {
  int loudest = kSilence;
  double most = kQuiet;
  double second = 0;
  for (const int tone : {kEnglish, kGerman, kDescribed}) {
    const double each = strength(sound, tone);
    if (each > most) {
      second = loudest == kSilence ? 0 : most;
      most = each;
      loudest = tone;
    } else {
      second = std::max(second, each);
    }
  }
  return loudest != kSilence && second > most / 2 ? kUnclear : loudest;
}

void onSound(const MediaSound* sound, void*) {
  if (sound->frames == 0) return;
  const int tone = toneOf(*sound);
  std::lock_guard lock(mutex);
  if (tone == kUnclear) return;
  if (!stretches.empty() && stretches.back().tone == tone) {
    stretches.back().frames += sound->frames;
  } else {
    stretches.push_back({tone, sound->frames, Clock::now()});
  }
}

}  // namespace

Listener::Listener() {
  forget();
  mediaTapSound(onSound, nullptr);
}

Listener::~Listener() { mediaTapSound(nullptr, nullptr); }

std::optional<int> Listener::now() const {
  std::lock_guard lock(mutex);
  if (stretches.empty() || stretches.back().frames < kShort) return std::nullopt;
  return stretches.back().tone;
}

bool Listener::hears(int tone, int seconds) const {
  return TestPlayer::eventually([&] { return now() == tone; }, seconds);
}

std::vector<int> Listener::heard() const {
  std::lock_guard lock(mutex);
  std::vector<int> tones;
  for (const Stretch& each : stretches) {
    if (each.frames >= kShort && (tones.empty() || tones.back() != each.tone)) tones.push_back(each.tone);
  }
  return tones;
}

void Listener::forget() {
  std::lock_guard lock(mutex);
  stretches.clear();
}

Clock::time_point Listener::since() const {
  std::lock_guard lock(mutex);
  return stretches.empty() ? Clock::time_point() : stretches.back().began;
}
