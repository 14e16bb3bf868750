// SPDX-License-Identifier: Apache-2.0
// What a subtitle document costs between the pipeline and the callback, against a copy of it; and what making one of WebVTT costs.
#include <benchmark/benchmark.h>

#include <condition_variable>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/mediamgmnt/subtitle_feed.h"
#include "platform/mediamgmnt/webvtt.h"

namespace {

using mediamgmnt::SharedText;

std::mutex mutex;
std::condition_variable changed;
std::size_t told = 0;  // guarded by mutex

void onTextTrack(unsigned long, _TextTrackEventType type, void*) {
  if (type != TTML_SUBTITLE) return;
  const std::lock_guard lock(mutex);
  ++told;
  changed.notify_all();
}

void waitForTold(std::size_t count) {
  std::unique_lock lock(mutex);
  changed.wait(lock, [=] { return told >= count; });
}

std::string documentOf(std::size_t size) {
  const std::string head = "<tt xmlns:tts=\"http://www.w3.org/ns/ttml#styling\"><body tts:fontFamily=\"sansSerif\"><p>";
  const std::string tail = "</p></body></tt>";
  return head + std::string(size > head.size() + tail.size() ? size - head.size() - tail.size() : 0, 'x') + tail;
}

void copyOfADocument(benchmark::State& state) {
  const std::string document = documentOf(static_cast<std::size_t>(state.range(0)));
  for (auto unused : state) benchmark::DoNotOptimize(std::make_shared<const std::string>(document));
}

/// All documents of a run are handed over before the last one is waited for: it is the work that is measured, not the waking.
void documentToTheCallback(benchmark::State& state) {
  const std::string document = documentOf(static_cast<std::size_t>(state.range(0)));
  mediamgmnt::PlaybackFacts facts;
  mediamgmnt::Dispatcher dispatcher(1);
  mediamgmnt::Voice voice(dispatcher, facts);
  mediamgmnt::SubtitleFeed feed(voice);
  dispatcher.setTextTrackCallback(onTextTrack);
  std::thread thread([&] { dispatcher.run(); });
  mediamgmnt::Component track;
  track.stream = &track;
  feed.present(track);
  feed.show(true, mediamgmnt::TimedDocument::kUnknown);
  {
    const std::lock_guard lock(mutex);
    told = 0;
  }
  std::size_t sent = 0;
  for (auto unused : state) {
    feed.due(&track,
             {std::make_shared<const std::string>(document), static_cast<std::int64_t>(sent), mediamgmnt::TimedDocument::kUnknown});
    ++sent;
    if (sent % 16 == 0) waitForTold(sent);
  }
  waitForTold(sent);
  dispatcher.close();
  thread.join();
}

void webVttToTimedText(benchmark::State& state) {
  std::string text = "WEBVTT\n\n";
  for (int i = 0; i < state.range(0); ++i) {
    text += "00:0" + std::to_string(i % 10) + ".000 --> 00:1" + std::to_string(i % 10) +
            ".000 line:10% align:start\n<i>Some words</i> of a film &amp; more\nand a second line\n\n";
  }
  for (auto unused : state) benchmark::DoNotOptimize(mediamgmnt::ttmlOf(mediamgmnt::readWebVtt(text)));
}

BENCHMARK(copyOfADocument)->Arg(1 << 10)->Arg(1 << 16)->Arg(1 << 20);
BENCHMARK(documentToTheCallback)->Arg(1 << 10)->Arg(1 << 16)->Arg(1 << 20)->MeasureProcessCPUTime();
BENCHMARK(webVttToTimedText)->Arg(1)->Arg(10)->Arg(1000);

}  // namespace

BENCHMARK_MAIN();
