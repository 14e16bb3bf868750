// SPDX-License-Identifier: Apache-2.0
// Status words, known and unknown, in any order and mixed with a page's calls: one state is always current and the element ends.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <iterator>
#include <string>

#include "fuzz/fuzz_element.h"
#include "fuzz/quiet_media_library.h"
#include "host/mediamgmnt.h"

namespace {

namespace status = mediamgmnt::status;

constexpr const char* kWords[] = {status::kFinished,
                                  status::kStopped,
                                  status::kError,
                                  status::kPlaying,
                                  status::kPaused,
                                  status::kBuffering,
                                  status::kBufferReady,
                                  status::kPlayPositionChanged,
                                  status::kPlaySpeedChanged,
                                  status::kReadyToPlay,
                                  status::kConnected,
                                  status::kDrmRightsError,
                                  status::kParentalRatingChange,
                                  status::kParentalRatingError,
                                  status::kSelectedVideoChanged,
                                  status::kSelectedAudioChanged,
                                  status::kSelectedSubtitleChanged};
constexpr int kMostSteps = 40;

enum class Step { kWord, kAnyWord, kAnswer, kPlay, kSeek, kData, kQueue, kStop, kMaxValue = kStop };

/// Where stop() waits for a confirmation that never comes here, it is left out: that wait is the right behaviour.
void stopWithoutWait(fuzz::Element& element) {
  const int state = element.state();
  if (state == 0 || state == 3 || state == 6) {
    element.plugin().JS_Stop();
  }
}

void step(FuzzedDataProvider& input, fuzz::Element& element) {
  switch (input.ConsumeEnum<Step>()) {
    case Step::kWord: fuzz::say(kWords[input.ConsumeIntegralInRange<std::size_t>(0, std::size(kWords) - 1)]); break;
    case Step::kAnyWord: fuzz::say(input.ConsumeRandomLengthString(40)); break;
    case Step::kAnswer: fuzz::setAnswer(input.ConsumeRandomLengthString(60)); break;
    case Step::kPlay: element.call("play", input.ConsumeFloatingPoint<double>()); break;
    case Step::kSeek: element.call("seek", input.ConsumeFloatingPoint<double>()); break;
    case Step::kData:
      element.write("data", input.ConsumeBool() ? "http://media.example/a.mp4" : "http://media.example/next.mp4");
      break;
    case Step::kQueue: element.call("queue", "http://media.example/queued.mp4"); break;
    case Step::kStop: stopWithoutWait(element); break;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider input(bytes, size);
  fuzz::setAnswer("1500.00");
  fuzz::Element element;
  for (int i = 0; i < kMostSteps && input.remaining_bytes() > 0; ++i) {
    step(input, element);
  }
  element.state();
  const int shown = element.plugin().getPlayState();
  fuzz::require(shown >= 0 && shown <= 6, "playState is the number of a state");
  return 0;
}
