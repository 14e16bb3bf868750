// SPDX-License-Identifier: Apache-2.0
// Plays a URL for some seconds of wall time; its processor time is taken from outside.
// Usage: play_seconds URL SECONDS [X|Y|WIDTH|HEIGHT| [KEY_ID KEY]], by default with the picture at its own size on the plane.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "platform/mediamgmnt/media_plane.h"

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "play_seconds: usage: play_seconds URL SECONDS [X|Y|WIDTH|HEIGHT| [KEY_ID KEY]]\n");
    return 2;
  }
  if (argc > 5 && mediaAddClearKey(argv[4], argv[5]) == 0) {
    std::fprintf(stderr, "play_seconds: the key must be two times 32 hexadecimal digits\n");
    return 2;
  }
  const unsigned long handle = openPlayer(1);
  setPlayerProperty(handle, mediamgmnt::property::kInput, argv[1]);
  cmdPlayer(handle, mediamgmnt::command::kSetWindowProperties, argc > 3 ? argv[3] : "320|180|640|360|");
  cmdPlayer(handle, mediamgmnt::command::kPlay, "1.00");
  sleep(static_cast<unsigned int>(std::atoi(argv[2])));
  const unsigned long frames = mediaPlaneFrames();
  closePlayer(handle);
  mediaLibraryWaitIdle(5000);
  std::printf("%lu frames\n", frames);
  return frames > 0 ? 0 : 1;
}
