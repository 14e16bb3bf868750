// SPDX-License-Identifier: Apache-2.0
// The reader of content-access-streaming descriptors: any bytes that a server sends are read or refused with a reason, and what is
// chosen to be played lies inside what was read.
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/fuzz_element.h"
#include "platform/mediamgmnt/content_choice.h"
#include "platform/mediamgmnt/content_descriptor.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace mediamgmnt;
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  std::string problem;
  const auto descriptor = readContentDescriptor(text, problem);
  fuzz::require(descriptor.has_value() || !problem.empty(), "a refusal has a reason");
  fuzz::require(problem.find('\n') == std::string::npos, "a reason is one line");
  if (!descriptor) return 0;
  const ContentChoice choice = chooseContent(*descriptor);
  fuzz::require((choice.verdict == ChoiceVerdict::NothingPlayable) == (choice.url == nullptr), "a verdict is about an address");
  if (choice.url != nullptr) fuzz::require(!choice.url->url.empty(), "no empty address is chosen");
  return 0;
}
