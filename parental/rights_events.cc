// SPDX-License-Identifier: Apache-2.0
// Rights and rating data of the A/V Control object: the three script events (worker thread), and the ratings (script thread).
#include "parental/parental_rating_collection.h"
#include "parental/rights_records.h"
#include "plugin/av_control_plugin.h"
#include "support/av_control_lock.h"

// The records stay the player's; the host copies what it keeps.

void AVControlPlugin::dispatchDrmRightsError() {
  const auto current = player();
  if (current == nullptr) return;
  const AVDrmRightsError& error = *current->getDrmRightsError();
  _CorvelNativeVariant args[4];
  cvnplUtil::set(error.errorState, args[0]);
  cvnplUtil::set(error.contentID, args[1], false);
  cvnplUtil::set(error.DRMSystemID, args[2], false);
  cvnplUtil::set(error.rightsIssuerURL, args[3], false);
  dispatchEvent("onDRMRightsError", args, 4);
}

void AVControlPlugin::dispatchParentalRatingChange() {
  const auto current = player();
  if (current == nullptr) return;
  const AVParentalRatingChange& change = *current->getParentalRatingChange();
  _CorvelNativeVariant args[4];
  cvnplUtil::set(change.contentID, args[0], false);
  cvnplUtil::set(ratingCollection(), args[1]);
  cvnplUtil::set(change.DRMSystemID, args[2], false);
  cvnplUtil::set(change.blocked, args[3]);
  dispatchEvent("onParentalRatingChange", args, 4);
}

void AVControlPlugin::dispatchParentalRatingError() {
  const auto current = player();
  if (current == nullptr) return;
  const AVParentalRatingError& error = *current->getParentalRatingError();
  _CorvelNativeVariant args[4];  // deliberate: four are declared, three are filled, the last reaches script as undefined
  cvnplUtil::set(error.contentID, args[0], false);
  cvnplUtil::set(ratingCollection(), args[1]);
  cvnplUtil::set(error.DRMSystemID, args[2], false);
  dispatchEvent("onParentalRatingError", args, 4);
}

std::shared_ptr<CorvelNativePropertyBase> AVControlPlugin::ratingCollection() {
  const AVControlLock lock(m_playerMutex);
  return m_parentalRatings;
}

int AVControlPlugin::getParentalRatingCollectionLenght() {
  const auto current = player();
  return current != nullptr ? current->getParentalRatingCollectionLenght() : -1;
}

bool AVControlPlugin::getParentalRatingItem(int index, AVParentalRating*& out) {
  const auto current = player();
  return current != nullptr && current->getParentalRatingItem(index, out);
}
