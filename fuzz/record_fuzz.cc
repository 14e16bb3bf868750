// SPDX-License-Identifier: Apache-2.0
// The readers of record texts: any text from the media library, or from a page, is read inside its bounds or refused; what is read
// gives a key that reads back as the same record.
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "components/component_records.h"
#include "components/component_texts.h"
#include "fuzz/fuzz_element.h"
#include "parental/parental_rating.h"

namespace {

/// A NUL-terminated text in a block of exactly its size, so that a read past its end is seen.
std::unique_ptr<char[]> exactCopy(std::string_view text) {
  auto copy = std::make_unique<char[]>(text.size() + 1);
  text.copy(copy.get(), text.size());
  return copy;
}

template <typename Record>
using Owned = std::unique_ptr<Record, void (*)(Record*)>;

template <typename Record>
void readAndReadAgain(std::string_view text, Record* (*create)(char*), void (*destroy)(Record*)) {
  const Owned<Record> record(create(exactCopy(text).get()), destroy);
  if (record == nullptr) return;
  const std::string key = indexKey(*record);
  const Owned<Record> again(create(exactCopy(key).get()), destroy);
  fuzz::require(again != nullptr, "a key is a record text");
  fuzz::require(indexKey(*again) == key, "the same record gives the same key");
  fuzz::require(selectionPayload(*again).back() == '|', "every value of a payload is closed");
}

void readRating(std::string_view text) {
  const Owned<AVParentalRating> rating(hlpCreateAVParentalRating(exactCopy(text).get()), hlpDestroyAVParentalRating);
  if (rating == nullptr) return;
  const std::string copied = std::string(rating->name) + rating->scheme + rating->region;
  fuzz::require(copied.find('|') == std::string::npos, "a text ends where its field ends");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  readAndReadAgain(text, hlpCreateAVVideoComponent, hlpDestroyAVVideoComponent);
  readAndReadAgain(text, hlpCreateAVAudioComponent, hlpDestroyAVAudioComponent);
  readAndReadAgain(text, hlpCreateAVSubtitleComponent, hlpDestroyAVSubtitleComponent);
  readRating(text);
  return 0;
}
