// SPDX-License-Identifier: Apache-2.0
#include "parental/parental_rating.h"

#include <cstdlib>

#include "components/record_reader.h"

AVParentalRating* hlpCreateAVParentalRating(char* text) {
  if (!holdsRecord(text)) return nullptr;
  RecordReader reader(text);
  auto* const rating = static_cast<AVParentalRating*>(std::calloc(1, sizeof(AVParentalRating)));
  if (reader.readText(rating->name) && reader.readText(rating->scheme) && reader.readInteger(rating->value) &&
      reader.readInteger(rating->labels) && reader.readText(rating->region)) {
    return rating;
  }
  hlpDestroyAVParentalRating(rating);  // cut short: what was read of it goes too
  return nullptr;
}

void hlpDestroyAVParentalRating(AVParentalRating* rating) {
  std::free(rating->name);
  std::free(rating->scheme);
  std::free(rating->region);
  std::free(rating);
}
