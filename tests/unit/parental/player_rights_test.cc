// SPDX-License-Identifier: Apache-2.0
// Rights and ratings data as the player fetches it. The leak checker watches who frees what.
#include <gtest/gtest.h>

#include "parental/parental_rating.h"
#include "parental/rights_records.h"
#include "tests/unit/player/player_test_base.h"

namespace {

class PlayerRightsTest : public PlayerTestBase {};

TEST_F(PlayerRightsTest, ReadsARightsError) {
  library().setProperty("DRM_ERROR_STATE", "2");
  library().setProperty("DRM_CONTENT_ID", "content");
  library().setProperty("DRM_SYSTEM_ID", "urn:dvb:casystemid:19219");
  library().setProperty("DRM_RIGHTS_ISSUER_URL", "http://issuer.example/");

  const AVDrmRightsError* const error = player->getDrmRightsError();

  ASSERT_NE(error, nullptr);
  EXPECT_EQ(error->errorState, 2);
  EXPECT_STREQ(error->contentID, "content");
  EXPECT_STREQ(error->DRMSystemID, "urn:dvb:casystemid:19219");
  EXPECT_STREQ(error->rightsIssuerURL, "http://issuer.example/");
  for (const auto& call : library().calls()) EXPECT_EQ(call.number, 128) << call.name;
}

TEST_F(PlayerRightsTest, LeavesFieldsZero_ThatTheLibraryDoesNotAnswer) {
  const AVDrmRightsError* const error = player->getDrmRightsError();
  EXPECT_EQ(error->errorState, 0);
  EXPECT_EQ(error->contentID, nullptr);
  EXPECT_EQ(error->DRMSystemID, nullptr);
  EXPECT_EQ(error->rightsIssuerURL, nullptr);

  const AVParentalRatingChange* const change = player->getParentalRatingChange();
  EXPECT_EQ(change->contentID, nullptr);
  EXPECT_EQ(change->DRMSystemID, nullptr);
  EXPECT_FALSE(change->blocked);

  const AVParentalRatingError* const ratingError = player->getParentalRatingError();
  EXPECT_EQ(ratingError->contentID, nullptr);
  EXPECT_EQ(ratingError->DRMSystemID, nullptr);
}

TEST_F(PlayerRightsTest, FetchesEachFieldOfAFreshRecord) {
  library().setProperty("DRM_ERROR_STATE", "1");
  library().setProperty("DRM_CONTENT_ID", "first");
  player->getDrmRightsError();
  library().setProperty("DRM_ERROR_STATE", std::nullopt);
  library().setProperty("DRM_CONTENT_ID", "");

  const AVDrmRightsError* const second = player->getDrmRightsError();

  EXPECT_EQ(second->errorState, 0) << "nothing of the first one is left";
  EXPECT_STREQ(second->contentID, "");
}

TEST_F(PlayerRightsTest, ReadsInFieldOrder) {
  player->getDrmRightsError();
  player->getParentalRatingChange();
  player->getParentalRatingError();

  std::vector<std::string> keys;
  for (const auto& call : library().calls()) keys.push_back(call.name);
  EXPECT_EQ(keys, (std::vector<std::string>{"DRM_ERROR_STATE", "DRM_CONTENT_ID", "DRM_SYSTEM_ID", "DRM_RIGHTS_ISSUER_URL",
                                            "PARENTAL_DRM_CONTENT_ID", "PARENTAL_DRM_SYSTEM_ID", "PARENTAL_BLOCKED",
                                            "PARENTAL_DRM_CONTENT_ID", "PARENTAL_DRM_SYSTEM_ID"}));
}

/// Deliberate: the change record has null for an empty text, the error record the empty text.
TEST_F(PlayerRightsTest, TreatsEmptyTextsDifferently_InChangeAndError) {
  library().setProperty("PARENTAL_DRM_CONTENT_ID", "");
  library().setProperty("PARENTAL_DRM_SYSTEM_ID", "");

  const AVParentalRatingChange* const change = player->getParentalRatingChange();
  const AVParentalRatingError* const error = player->getParentalRatingError();

  EXPECT_EQ(change->contentID, nullptr);
  EXPECT_EQ(change->DRMSystemID, nullptr);
  EXPECT_STREQ(error->contentID, "");
  EXPECT_STREQ(error->DRMSystemID, "");
}

TEST_F(PlayerRightsTest, ReadsARatingChangeAndError) {
  library().setProperty("PARENTAL_DRM_CONTENT_ID", "content");
  library().setProperty("PARENTAL_DRM_SYSTEM_ID", "system");
  library().setProperty("PARENTAL_BLOCKED", "1");

  const AVParentalRatingChange* const change = player->getParentalRatingChange();
  const AVParentalRatingError* const error = player->getParentalRatingError();

  EXPECT_STREQ(change->contentID, "content");
  EXPECT_STREQ(change->DRMSystemID, "system");
  EXPECT_TRUE(change->blocked);
  EXPECT_STREQ(error->contentID, "content");
  EXPECT_STREQ(error->DRMSystemID, "system");
  for (const auto& call : library().calls()) EXPECT_EQ(call.number, 128) << call.name;
}

TEST_F(PlayerRightsTest, IsBlockedForAnyNumberButZero) {
  for (const auto& [text, blocked] :
       {std::pair{"0", false}, {"no", false}, {"", false}, {"1", true}, {"2", true}, {"-1", true}, {"256", true}}) {
    library().setProperty("PARENTAL_BLOCKED", text);
    EXPECT_EQ(player->getParentalRatingChange()->blocked, blocked) << text;
  }
}

TEST_F(PlayerRightsTest, CutsATextTo127Bytes) {
  library().setProperty("DRM_CONTENT_ID", std::string(500, 'c'));

  EXPECT_EQ(player->getDrmRightsError()->contentID, std::string(127, 'c'));
}

TEST_F(PlayerRightsTest, FreesOnRequest_AlsoTwice) {
  library().setProperty("DRM_CONTENT_ID", "content");
  library().setProperty("PARENTAL_DRM_CONTENT_ID", "content");
  player->getDrmRightsError();
  player->getParentalRatingChange();
  player->getParentalRatingError();

  for (int i = 0; i < 2; ++i) {
    player->freeDrmRightsError();
    player->freeParentalRatingChange();
    player->freeParentalRatingError();
  }

  EXPECT_STREQ(player->getDrmRightsError()->contentID, "content");
}

TEST_F(PlayerRightsTest, FreesWhatItHolds_WhenItEnds) {
  library().setProperty("DRM_CONTENT_ID", "content");
  library().setProperty("PARENTAL_DRM_CONTENT_ID", "content");
  player->getDrmRightsError();
  player->getParentalRatingChange();
  player->getParentalRatingError();

  player.reset();

  EXPECT_TRUE(library().openHandles().empty());
}

TEST_F(PlayerRightsTest, ReadsTheNumberOfRatings) {
  EXPECT_EQ(player->getParentalRatingCollectionLenght(), -1);
  library().setProperty("PARENTAL_RATING.LENGTH", "3");
  EXPECT_EQ(player->getParentalRatingCollectionLenght(), 3);
  library().setProperty("PARENTAL_RATING.LENGTH", "three");
  EXPECT_EQ(player->getParentalRatingCollectionLenght(), 0);
  library().setProperty("PARENTAL_RATING.LENGTH", "");
  EXPECT_EQ(player->getParentalRatingCollectionLenght(), 0);
}

TEST_F(PlayerRightsTest, ReadsARating) {
  library().setProperty("PARENTAL_RATING.ITEM.3", "16|dvb-si|13|3|DE|");
  AVParentalRating* rating = nullptr;

  ASSERT_TRUE(player->getParentalRatingItem(3, rating));

  EXPECT_STREQ(rating->name, "16");
  hlpDestroyAVParentalRating(rating);
}

/// What is longer was cut by the library, so its last field is not closed any more.
TEST_F(PlayerRightsTest, ReadsARatingAsLongAsItsBuffer) {
  const std::string rest = "|dvb-si|13|3|DE|";
  const std::string name(4095 - rest.size(), 'n');
  library().setProperty("PARENTAL_RATING.ITEM.0", name + rest);
  AVParentalRating* rating = nullptr;

  ASSERT_TRUE(player->getParentalRatingItem(0, rating));

  ASSERT_NE(rating, nullptr);
  EXPECT_EQ(rating->name, name);
  EXPECT_STREQ(rating->region, "DE");
  hlpDestroyAVParentalRating(rating);

  library().setProperty("PARENTAL_RATING.ITEM.0", name + "n" + rest);
  EXPECT_TRUE(player->getParentalRatingItem(0, rating));
  EXPECT_EQ(rating, nullptr);
}

TEST_F(PlayerRightsTest, TakesANegativeRatingIndex) {
  library().setProperty("PARENTAL_RATING.ITEM.-1", "16|dvb-si|13|3|DE|");
  AVParentalRating* rating = nullptr;

  ASSERT_TRUE(player->getParentalRatingItem(-1, rating));

  hlpDestroyAVParentalRating(rating);
}

TEST_F(PlayerRightsTest, RefusesNoAnswerAndAnEmptyOne) {
  AVParentalRating* const untouched = reinterpret_cast<AVParentalRating*>(this);
  AVParentalRating* rating = untouched;

  EXPECT_FALSE(player->getParentalRatingItem(0, rating));
  library().setProperty("PARENTAL_RATING.ITEM.0", "");
  EXPECT_FALSE(player->getParentalRatingItem(0, rating));
  EXPECT_EQ(rating, untouched);

  library().setProperty("PARENTAL_RATING.ITEM.0", "NOT_AVAILABLE");
  EXPECT_TRUE(player->getParentalRatingItem(0, rating));
  EXPECT_EQ(rating, nullptr);
}

}  // namespace
