// SPDX-License-Identifier: Apache-2.0
// Milliseconds from the selection of another language until its tone is heard, told from the samples.
// Usage: sound_switch URL [SWITCHES]; the source's first two sounds are the sample media's 440 Hz and 880 Hz.
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <numbers>
#include <string>

#include "platform/mediamgmnt/media_plane.h"
#include "platform/mediamgmnt/media_sound.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kTones[] = {440, 880};
constexpr double kQuiet = 500;  ///< of 32768
constexpr std::chrono::seconds kPatience{10};

std::mutex mutex;
std::condition_variable changed;
int heard = -1;  // guarded by mutex, like both below; index of a tone
Clock::time_point heardSince;
unsigned blocks = 0;  ///< of that tone in a row

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

void onSound(const MediaSound* sound, void*) {
  if (sound->frames == 0) return;
  const double first = strength(*sound, kTones[0]);
  const double second = strength(*sound, kTones[1]);
  if (std::max(first, second) < kQuiet) return;
  const int tone = first > second ? 0 : 1;
  const std::lock_guard lock(mutex);
  if (tone != heard) {
    heard = tone;
    heardSince = Clock::now();
    blocks = 0;
  }
  ++blocks;
  changed.notify_all();
}

/// @return when it began to be heard; the epoch when it never was.
Clock::time_point waitFor(int tone, unsigned inARow) {
  std::unique_lock lock(mutex);
  const bool came = changed.wait_for(lock, kPatience, [=] { return heard == tone && blocks >= inARow; });
  return came ? heardSince : Clock::time_point();
}

/// Half a second of sound between two switches, and a little more each time so that they meet other places of a block.
unsigned restBlocks(int number) { return 24U + static_cast<unsigned>(number % 5); }

int run(const char* url, int switches) {
  mediaTapSound(onSound, nullptr);
  const unsigned long player = openPlayer(1);
  setPlayerProperty(player, mediamgmnt::property::kInput, url);
  cmdPlayer(player, mediamgmnt::command::kPlay, "1.00");
  bool good = waitFor(0, restBlocks(0)) != Clock::time_point();
  for (int i = 1; good && i <= switches; ++i) {
    const auto asked = Clock::now();
    cmdPlayer(player, mediamgmnt::command::kSelectAudioComponent, std::to_string(i % 2).c_str());
    const auto since = waitFor(i % 2, 1);
    good = since != Clock::time_point() && waitFor(i % 2, restBlocks(i)) != Clock::time_point();
    if (good) std::printf("%.1f ", std::chrono::duration<double, std::milli>(since - asked).count());
  }
  std::printf("\n");
  closePlayer(player);
  mediaLibraryWaitIdle(5000);
  mediaTapSound(nullptr, nullptr);
  if (!good) std::fprintf(stderr, "sound_switch: a tone of %s was not heard within 10 s\n", url);
  return good ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "sound_switch: no URL given; usage: sound_switch URL [SWITCHES]\n");
    return 2;
  }
  return run(argv[1], argc > 2 ? std::atoi(argv[2]) : 20);
}
