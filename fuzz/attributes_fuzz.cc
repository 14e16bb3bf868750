// SPDX-License-Identifier: Apache-2.0
// The attribute setters: any texts in any order must neither break their buffers nor leave a value that the rules forbid.
#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <string>

#include "fuzz/fuzz_element.h"

namespace {

constexpr const char* kTextRows[] = {"data", "type",         "width",      "height",    "cache",
                                     "loop", "subParamAttr", "playerType", "userAgent", "nativeWindowSize"};
constexpr int kMostSteps = 24;

/// Texts of up to some thousand bytes out of a short input: the bounds lie at 19, 257, 1023 and 2048.
std::string anyText(FuzzedDataProvider& input) {
  const std::string piece = input.ConsumeRandomLengthString(64);
  std::string text;
  for (int i = input.ConsumeIntegralInRange(1, 80); i > 0; --i) {
    text += piece;
  }
  return text;
}

bool isSize(const std::string& text) {
  return text.size() < 19 && std::all_of(text.begin(), text.end(), [](char c) { return c == '.' || (c >= '0' && c <= '9'); });
}

void checkRules(fuzz::Element& element) {
  fuzz::require(isSize(element.read("width")) && isSize(element.read("height")), "sizes are short and numeric");
  fuzz::require(element.read("type").size() < 2048, "the type fits its buffer");
  fuzz::require(element.read("loop").size() < 2048, "the loop count fits its buffer");
  const std::string data = element.read("data");
  fuzz::require(data.size() < 2048, "the source fits its buffer");
  char* type = nullptr;
  fuzz::require(element.plugin().getPlayerType(type), "there is always a player type");
  const std::unique_ptr<char, decltype(&std::free)> owned(type, &std::free);
  fuzz::require(std::string(type).size() <= 257, "the player type fits its buffer");
}

void step(FuzzedDataProvider& input, fuzz::Element& element) {
  const unsigned int choice = input.ConsumeIntegralInRange<unsigned int>(0, std::size(kTextRows) + 2);
  if (choice < std::size(kTextRows)) {
    element.write(kTextRows[choice], anyText(input));
  } else if (choice == std::size(kTextRows)) {
    element.write("numOfSubtitles", input.ConsumeIntegral<int>());
  } else if (choice == std::size(kTextRows) + 1) {
    element.call("queue", anyText(input));
  } else {
    const std::string url = anyText(input);
    element.plugin().setDocumentUrl(url.c_str(), static_cast<unsigned int>(url.size()));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider input(bytes, size);
  fuzz::Element element;
  for (int i = 0; i < kMostSteps && input.remaining_bytes() > 0; ++i) {
    step(input, element);
  }
  checkRules(element);
  return 0;
}
