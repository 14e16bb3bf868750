// SPDX-License-Identifier: Apache-2.0
// Ratings from outside: whatever texts a descriptor has, the rating's text reads back as one record; whatever bytes a broadcast
// has, the reader of event information stays inside them.
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/fuzz_element.h"
#include "parental/parental_rating.h"
#include "platform/mediamgmnt/event_information.h"
#include "platform/mediamgmnt/rating.h"
#include "platform/mediamgmnt/rating_schemes.h"

namespace {

void requireReadable(const mediamgmnt::Rating& rating) {
  std::string text = ratingText(rating);
  const std::unique_ptr<AVParentalRating, void (*)(AVParentalRating*)> record(hlpCreateAVParentalRating(text.data()),
                                                                              hlpDestroyAVParentalRating);
  fuzz::require(record != nullptr, "a rating's text is a record");
  fuzz::require(record->value == rating.value, "its value is kept");
  fuzz::require(text.size() < 4096, "it fits where it is read");
}

/// The next line of @p text, which is shortened by it.
std::string_view takeLine(std::string_view& text) {
  const std::string_view line = text.substr(0, text.find('\n'));
  text.remove_prefix(std::min(text.size(), line.size() + 1));
  return line;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  std::string_view text(reinterpret_cast<const char*>(bytes), size);
  const std::string_view scheme = takeLine(text);
  const std::string_view value = takeLine(text);
  requireReadable(mediamgmnt::readRating(scheme, value, text));

  mediamgmnt::EventInformationReader reader([](const std::vector<mediamgmnt::Rating>& ratings) {
    for (const mediamgmnt::Rating& rating : ratings) requireReadable(rating);
  });
  reader.feed(bytes, size);
  mediamgmnt::readPresentEvent(bytes, size);
  return 0;
}
