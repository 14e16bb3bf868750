// SPDX-License-Identifier: Apache-2.0
// Milliseconds from "PLAY" to the first frame on the video plane, for several players one after the other in one process.
// Usage: first_frame URL [PLAYERS]; with PLAYERS 1 the whole process can be timed from outside.
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "platform/mediamgmnt/media_plane.h"

namespace {

using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

/// @return the time, or a negative number when no frame came within 10 s.
double playOne(const char* url) {
  const unsigned long handle = openPlayer(1);
  const unsigned long before = mediaPlaneFrames();
  const auto start = Clock::now();
  setPlayerProperty(handle, mediamgmnt::property::kInput, url);
  cmdPlayer(handle, mediamgmnt::command::kPlay, "1.00");
  double taken = 0;
  while (mediaPlaneFrames() == before && taken < 10000) {
    usleep(100);
    taken = millisecondsSince(start);
  }
  closePlayer(handle);
  mediaLibraryWaitIdle(5000);
  return taken < 10000 ? taken : -1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "first_frame: no URL given; usage: first_frame URL [PLAYERS]\n");
    return 2;
  }
  const int players = argc > 2 ? std::atoi(argv[2]) : 1;
  for (int i = 0; i < players; ++i) {
    const double taken = playOne(argv[1]);
    if (taken < 0) {
      std::fprintf(stderr, "first_frame: no frame of %s within 10 s\n", argv[1]);
      return 1;
    }
    std::printf("%s%.1f", i > 0 ? " " : "", taken);
  }
  std::printf("\n");
  return 0;
}
