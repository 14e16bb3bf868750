// SPDX-License-Identifier: Apache-2.0
// One parental rating, as the media library describes it: "name|scheme|value|labels|region|".
#pragma once

/// A malloc block; its texts are owned, NUL-terminated and, once read, never null.
struct AVParentalRating {
  char* name;
  char* scheme;
  int value;
  int labels;
  char* region;
};

/// @return a record that the caller owns; null for a null text, for one with "NOT_AVAILABLE" in it, and for one that ends before
/// its last field does. The text is only read.
AVParentalRating* hlpCreateAVParentalRating(char* text);

/// @p rating is not null.
void hlpDestroyAVParentalRating(AVParentalRating* rating);
