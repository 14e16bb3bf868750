// SPDX-License-Identifier: Apache-2.0
// What the media library tells about rights and ratings when it announces a change: malloc blocks that the player owns. A field
// that the library did not answer is 0 or null.
#pragma once

struct AVDrmRightsError {
  int errorState;  ///< the library's own number
  char* contentID;
  char* DRMSystemID;
  char* rightsIssuerURL;
};

struct AVParentalRatingChange {
  char* contentID;    ///< null when the text is empty
  char* DRMSystemID;  ///< null when the text is empty
  bool blocked;
};

struct AVParentalRatingError {
  char* contentID;    ///< an empty text stays one
  char* DRMSystemID;  ///< an empty text stays one
};
