// SPDX-License-Identifier: Apache-2.0
// Rights and ratings data: fetched from the library when it announces them (on the worker), ratings when script asks for them.
#include <cstdlib>
#include <cstring>
#include <utility>

#include "parental/parental_rating.h"
#include "parental/rights_records.h"
#include "player/indexed_property.h"
#include "player/player.h"

namespace property = mediamgmnt::property;

namespace {

/// Zeroed: a field that the library does not answer stays at 0 or null.
template <typename Record>
Record* newRecord() {
  return static_cast<Record*>(std::calloc(1, sizeof(Record)));
}

/// @return a malloc copy, null when the library does not answer.
char* readCopy(unsigned long handle, const char* key) {
  char text[indexed_property::kShortSize] = {};
  if (getPlayerProperty(handle, key, text, sizeof text) == 0) return nullptr;
  return strdup(text);
}

/// The same, but null for an empty text, too.
char* readCopyOrNull(unsigned long handle, const char* key) {
  char* const copy = readCopy(handle, key);
  if (copy == nullptr || *copy != '\0') return copy;
  std::free(copy);
  return nullptr;
}

}  // namespace

AVDrmRightsError* Player::getDrmRightsError() {
  freeDrmRightsError();
  m_drmRightsError = newRecord<AVDrmRightsError>();
  indexed_property::readNumber(m_handle, property::kDrmErrorState, m_drmRightsError->errorState);
  m_drmRightsError->contentID = readCopy(m_handle, property::kDrmContentId);
  m_drmRightsError->DRMSystemID = readCopy(m_handle, property::kDrmSystemId);
  m_drmRightsError->rightsIssuerURL = readCopy(m_handle, property::kDrmRightsIssuerUrl);
  return m_drmRightsError;
}

/// Deliberate: an empty text is null in the change record and an empty text in the error record.
AVParentalRatingChange* Player::getParentalRatingChange() {
  freeParentalRatingChange();
  m_parentalRatingChange = newRecord<AVParentalRatingChange>();
  m_parentalRatingChange->contentID = readCopyOrNull(m_handle, property::kParentalDrmContentId);
  m_parentalRatingChange->DRMSystemID = readCopyOrNull(m_handle, property::kParentalDrmSystemId);
  int blocked = 0;
  indexed_property::readNumber(m_handle, property::kParentalBlocked, blocked);
  m_parentalRatingChange->blocked = blocked != 0;
  return m_parentalRatingChange;
}

AVParentalRatingError* Player::getParentalRatingError() {
  freeParentalRatingError();
  m_parentalRatingError = newRecord<AVParentalRatingError>();
  m_parentalRatingError->contentID = readCopy(m_handle, property::kParentalDrmContentId);
  m_parentalRatingError->DRMSystemID = readCopy(m_handle, property::kParentalDrmSystemId);
  return m_parentalRatingError;
}

void Player::freeDrmRightsError() {
  AVDrmRightsError* const record = std::exchange(m_drmRightsError, nullptr);
  if (record == nullptr) return;
  std::free(record->contentID);
  std::free(record->DRMSystemID);
  std::free(record->rightsIssuerURL);
  std::free(record);
}

void Player::freeParentalRatingChange() {
  AVParentalRatingChange* const record = std::exchange(m_parentalRatingChange, nullptr);
  if (record == nullptr) return;
  std::free(record->contentID);
  std::free(record->DRMSystemID);
  std::free(record);
}

void Player::freeParentalRatingError() {
  AVParentalRatingError* const record = std::exchange(m_parentalRatingError, nullptr);
  if (record == nullptr) return;
  std::free(record->contentID);
  std::free(record->DRMSystemID);
  std::free(record);
}

int Player::getParentalRatingCollectionLenght() {
  int length = -1;
  indexed_property::readNumber(m_handle, property::kParentalRatingLength, length);
  return length;
}

bool Player::getParentalRatingItem(int index, AVParentalRating*& out) {
  char text[indexed_property::kItemSize] = {};
  if (!indexed_property::readItem(m_handle, property::kParentalRatingItemPrefix, index, text) || *text == '\0') return false;
  out = hlpCreateAVParentalRating(text);
  return true;
}
