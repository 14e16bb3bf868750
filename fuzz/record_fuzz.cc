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

/// A text up to its NUL, in a block of exactly its size, so that a read past its end is seen.
std::unique_ptr<char[]> exactCopy(std::string_view text) {
  text = text.substr(0, text.find('\0'));
  auto copy = std::make_unique<char[]>(text.size() + 1);
  text.copy(copy.get(), text.size());
  return copy;
}

template <typename Record>
using Owned = std::unique_ptr<Record, void (*)(Record*)>;

/// Field @p index of a text, read the plain way; the reader has found as many.
std::string plainText(std::string_view text, int index) {
  text = text.substr(0, text.find('\0'));
  for (; index > 0; --index) text.remove_prefix(text.find('|') + 1);
  const std::string_view field = text.substr(0, text.find('|'));
  return field == "(null)" ? std::string() : std::string(field);
}

void requireText(std::string_view text, int index, const char* read) {
  fuzz::require(plainText(text, index) == read, "a text is what its field holds");
}

void requireTexts(std::string_view text, const AVComponent& common) {
  requireText(text, 1, common.encoding);
  requireText(text, 5, common.opaqueText1);
  requireText(text, 6, common.opaqueText2);
  requireText(text, 8, common.opaqueText3);
}

void requireTexts(std::string_view text, const AVVideoComponent& video) { requireTexts(text, *video.base); }

void requireTexts(std::string_view text, const AVAudioComponent& audio) {
  requireTexts(text, *audio.base);
  requireText(text, 9, audio.audioText);
  requireText(text, 10, audio.language);
}

void requireTexts(std::string_view text, const AVSubtitleComponent& subtitle) {
  requireTexts(text, *subtitle.base);
  requireText(text, 9, subtitle.subtitleText1);
  requireText(text, 10, subtitle.language);
  requireText(text, 11, subtitle.subtitleText2);
}

template <typename Record>
void readAndReadAgain(std::string_view text, Record* (*create)(char*), void (*destroy)(Record*)) {
  const Owned<Record> record(create(exactCopy(text).get()), destroy);
  if (record == nullptr) return;
  requireTexts(text, *record);
  const std::string key = indexKey(*record);
  const Owned<Record> again(create(exactCopy(key).get()), destroy);
  fuzz::require(again != nullptr, "a key is a record text");
  requireTexts(key, *again);
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
