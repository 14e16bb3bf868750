// SPDX-License-Identifier: Apache-2.0
// How late subtitle documents come, by the playing clock that the library reports, in milliseconds.
// Usage: subtitle_lateness URL INDEX SPAN; each document of that subtitle track lasts SPAN ms, the first begins at 0.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <vector>

#include "platform/mediamgmnt/media_plane.h"

namespace {

std::mutex mutex;
std::condition_variable changed;
std::string lastWord;           // guarded by mutex, like both below
std::vector<double> positions;  ///< when documents came
bool finished = false;

void onWord(unsigned long, const char* word, void*) {
  const std::lock_guard lock(mutex);
  lastWord = word;
  finished = finished || lastWord == mediamgmnt::status::kFinished || lastWord == mediamgmnt::status::kError;
  changed.notify_all();
}

void onTextTrack(unsigned long player, _TextTrackEventType type, void*) {
  char position[64] = "";
  if (type != TTML_SUBTITLE || getPlayerProperty(player, mediamgmnt::property::kPosition, position, sizeof position) == 0) return;
  const std::lock_guard lock(mutex);
  positions.push_back(std::atof(position));
}

bool waitFor(bool (*condition)()) {
  std::unique_lock lock(mutex);
  return changed.wait_for(lock, std::chrono::seconds(60), condition);
}

double quantile(const std::vector<double>& sorted, double part) {
  return sorted[std::min(sorted.size() - 1, static_cast<std::size_t>(part * static_cast<double>(sorted.size())))];
}

int run(const char* url, const char* index, double span) {
  const unsigned long player = openPlayer(1);
  registerCallback(player, onWord);
  registerTextTrackCallback(player, onTextTrack);
  setPlayerProperty(player, mediamgmnt::property::kInput, url);
  bool good = waitFor([] { return lastWord == mediamgmnt::status::kReadyToPlay; });
  cmdPlayer(player, mediamgmnt::command::kSelectSubtitleComponent, index);
  cmdPlayer(player, mediamgmnt::command::kPlay, "1.00");
  good = good && waitFor([] { return finished; });
  closePlayer(player);
  mediaLibraryWaitIdle(5000);
  std::vector<double> late;
  for (std::size_t i = 1; i < positions.size(); ++i) late.push_back(std::max(0.0, positions[i] - span * static_cast<double>(i)));
  if (!good || late.empty()) {
    std::fprintf(stderr, "subtitle_lateness: %s did not play to its end, or has no such subtitles\n", url);
    return 1;
  }
  std::sort(late.begin(), late.end());
  std::printf("%zu documents: median %.0f, 99 %% %.0f, latest %.0f ms\n", late.size(), quantile(late, 0.5), quantile(late, 0.99),
              late.back());
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 4 && std::atof(argv[3]) > 0) return run(argv[1], argv[2], std::atof(argv[3]));
  std::fprintf(stderr, "usage: subtitle_lateness URL INDEX SPAN\n");
  return 2;
}
