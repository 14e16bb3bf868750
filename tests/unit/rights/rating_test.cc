// SPDX-License-Identifier: Apache-2.0
// Ratings: what the schemes mean, their text form, and the limit.
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "parental/parental_rating.h"
#include "platform/mediamgmnt/country_codes.h"
#include "platform/mediamgmnt/parental_limit.h"
#include "platform/mediamgmnt/rating.h"
#include "platform/mediamgmnt/rating_schemes.h"

using mediamgmnt::isBlocked;
using mediamgmnt::ParentalLimit;
using mediamgmnt::Rating;
using mediamgmnt::ratingText;
using mediamgmnt::readDvbRating;
using mediamgmnt::readRating;

namespace {

struct SchemeRow {
  const char* name;
  const char* scheme;
  const char* value;
  int number;
  std::optional<int> age;
};

void PrintTo(const SchemeRow& row, std::ostream* out) { *out << row.name; }

class RatingSchemeTest : public ::testing::TestWithParam<SchemeRow> {};

TEST_P(RatingSchemeTest, Row) {
  const Rating rating = readRating(GetParam().scheme, GetParam().value, "de");

  EXPECT_EQ(rating.name, GetParam().value);
  EXPECT_EQ(rating.scheme, GetParam().scheme);
  EXPECT_EQ(rating.value, GetParam().number);
  EXPECT_EQ(rating.labels, 0);
  EXPECT_EQ(rating.region, "DE");
  EXPECT_EQ(rating.minimumAge, GetParam().age);
}

constexpr char kFsk[] = "urn:oipf:GermanyFSKCS";

INSTANTIATE_TEST_SUITE_P(
    Schemes, RatingSchemeTest,
    ::testing::Values(
        SchemeRow{"DvbLowest", "dvb-si", "4", 1, 4}, SchemeRow{"DvbSixteen", "dvb-si", "16", 13, 16},
        SchemeRow{"DvbHighest", "DVB-SI", "18", 15, 18}, SchemeRow{"DvbBelow", "dvb-si", "3", 0, std::nullopt},
        SchemeRow{"DvbAbove", "dvb-si", "19", 0, std::nullopt}, SchemeRow{"DvbNegative", "dvb-si", "-4", 0, std::nullopt},
        SchemeRow{"DvbJunk", "dvb-si", "16+", 0, std::nullopt}, SchemeRow{"DvbEmpty", "dvb-si", "", 0, std::nullopt},
        SchemeRow{"DvbHuge", "dvb-si", "99999999999999999999", 0, std::nullopt}, SchemeRow{"FskNone", kFsk, "FSK0", 0, 0},
        SchemeRow{"Fsk6", kFsk, "6", 1, 6}, SchemeRow{"Fsk12", kFsk, "FSK 12", 2, 12}, SchemeRow{"Fsk16", kFsk, "fsk-16", 3, 16},
        SchemeRow{"Fsk18", "FSK", "18", 4, 18}, SchemeRow{"FskUnknown", kFsk, "14", 0, std::nullopt},
        SchemeRow{"FskEmpty", kFsk, "", 0, std::nullopt}, SchemeRow{"FskPrefixOnly", kFsk, "FSK", 0, std::nullopt},
        SchemeRow{"BbfcUniversal", "bbfc", "U", 0, 4}, SchemeRow{"BbfcGuidance", "BBFC", "PG", 1, 8},
        SchemeRow{"BbfcTwelveA", "bbfc", "12A", 2, 12}, SchemeRow{"BbfcTwelve", "bbfc", "12", 3, 12},
        SchemeRow{"BbfcFifteen", "bbfc", "15", 4, 15}, SchemeRow{"BbfcEighteen", "bbfc", "18", 5, 18},
        SchemeRow{"BbfcRestricted", "bbfc", "R18", 6, 18}, SchemeRow{"KijkwijzerAll", "Kijkwijzer", "AL", 0, 0},
        SchemeRow{"KijkwijzerNine", "nicam", "9", 2, 9}, SchemeRow{"KijkwijzerFourteen", "kijkwijzer", "14", 4, 14},
        SchemeRow{"FranceAll", "CSA", "TP", 0, 0}, SchemeRow{"FranceTen", "csa", "-10", 1, 10},
        SchemeRow{"FranceSixteen", "arcom", "-16", 3, 16}, SchemeRow{"Unknown", "urn:example:nobody", "16", 0, std::nullopt},
        SchemeRow{"NoScheme", "", "16", 0, std::nullopt}),
    [](const auto& info) { return info.param.name; });

TEST(DvbRatingTest, IsTheAgeLessThree) {
  for (int code = 1; code <= 15; ++code) {
    const auto rating = readDvbRating("DEU", static_cast<std::uint8_t>(code));
    ASSERT_TRUE(rating);
    EXPECT_EQ(rating->minimumAge, code + 3);
    EXPECT_EQ(rating->name, std::to_string(code + 3));
    EXPECT_EQ(rating->value, code);
    EXPECT_EQ(rating->region, "DE");
  }
}

TEST(DvbRatingTest, HasCodesThatMeanNothingOrAreTheBroadcastersOwn) {
  EXPECT_FALSE(readDvbRating("DEU", 0));
  for (const int code : {0x10, 0x42, 0xFF}) {
    const auto rating = readDvbRating("DEU", static_cast<std::uint8_t>(code));
    ASSERT_TRUE(rating);
    EXPECT_FALSE(rating->minimumAge);
    EXPECT_EQ(rating->value, code);
    EXPECT_EQ(rating->name, std::to_string(code));
  }
}

TEST(CountryCodeTest, HasTwoLetters) {
  for (const auto& [given, expected] : {std::pair{"DEU", "DE"},
                                        {"deu", "DE"},
                                        {"de", "DE"},
                                        {"GBR", "GB"},
                                        {"VNM", "VN"},
                                        {"", ""},
                                        {"902", "902"},
                                        {"XYZ", "XYZ"},
                                        {"Germany", "Germany"},
                                        {"d", "d"},
                                        {"1D", "1D"}}) {
    EXPECT_EQ(mediamgmnt::twoLetterCountry(given), expected);
  }
}

struct RatingDeleter {
  void operator()(AVParentalRating* rating) const { hlpDestroyAVParentalRating(rating); }
};

/// As the object reads it.
std::unique_ptr<AVParentalRating, RatingDeleter> readBack(std::string text) {
  return std::unique_ptr<AVParentalRating, RatingDeleter>(hlpCreateAVParentalRating(text.data()));
}

TEST(RatingTextTest, HoldsTheFieldsInOrder) {
  Rating rating = readRating("dvb-si", "16", "DE");
  EXPECT_EQ(ratingText(rating), "16|dvb-si|13|0|DE|");
  rating.labels = 3;
  rating.region.clear();
  EXPECT_EQ(ratingText(rating), "16|dvb-si|13|3||");
}

TEST(RatingTextTest, ReadsBackWhateverAServerSends) {
  const std::string long_text = std::string(300, 'x') + "\xC3\xA4";
  for (const std::string& text :
       {std::string("a|b"), std::string("NOT_AVAILABLE"), std::string("NOT_NOT_AVAILABLEAVAILABLE"), std::string("NOT|_AVAILABLE"),
        std::string("line\nend"), long_text, std::string(255, 'x') + "\xC3\xA4"}) {
    const auto record = readBack(ratingText(readRating(text, text, text)));
    ASSERT_NE(record, nullptr) << text;
    EXPECT_EQ(std::string(record->name), record->scheme);
    EXPECT_LE(std::string(record->name).size(), 256U);
  }
  EXPECT_STREQ(readBack(ratingText(readRating("s", "a|b", "")))->name, "ab");
  EXPECT_STREQ(readBack(ratingText(readRating("s", std::string(255, 'x') + "\xC3\xA4", "")))->name, std::string(255, 'x').c_str())
      << "half a character is none";
}

Rating ratedFrom(int age, const char* region = "") { return readRating("dvb-si", std::to_string(age), region); }

TEST(ParentalLimitTest, BlocksNothing_WithoutALimit) { EXPECT_FALSE(isBlocked({ratedFrom(18)}, {})); }

TEST(ParentalLimitTest, BlocksWhatIsAboveIt) {
  const ParentalLimit limit{12, ""};

  EXPECT_FALSE(isBlocked({}, limit));
  EXPECT_FALSE(isBlocked({ratedFrom(6)}, limit));
  EXPECT_FALSE(isBlocked({ratedFrom(12)}, limit));
  EXPECT_TRUE(isBlocked({ratedFrom(13)}, limit));
  EXPECT_TRUE(isBlocked({ratedFrom(16)}, limit));
}

TEST(ParentalLimitTest, TakesTheStrictest_WithoutACountry) {
  EXPECT_TRUE(isBlocked({ratedFrom(6, "DE"), ratedFrom(18, "GB")}, {12, ""}));
}

TEST(ParentalLimitTest, TakesTheCountrys_ThenThoseOfNoCountry_ThenAll) {
  const ParentalLimit limit{12, "DE"};

  EXPECT_FALSE(isBlocked({ratedFrom(6, "DE"), ratedFrom(18, "GB"), ratedFrom(18)}, limit));
  EXPECT_TRUE(isBlocked({ratedFrom(18, "DE"), ratedFrom(6, "GB"), ratedFrom(6)}, limit));
  EXPECT_FALSE(isBlocked({ratedFrom(6), ratedFrom(18, "GB")}, limit));
  EXPECT_TRUE(isBlocked({ratedFrom(18), ratedFrom(6, "GB")}, limit));
  EXPECT_TRUE(isBlocked({ratedFrom(18, "GB"), ratedFrom(6, "FR")}, limit));
}

TEST(ParentalLimitTest, LetsNothingUnknownDecide) {
  EXPECT_FALSE(isBlocked({readRating("urn:example:nobody", "18", "")}, {0, ""}));
  EXPECT_TRUE(isBlocked({readRating("urn:example:nobody", "0", "DE"), ratedFrom(18, "GB")}, {12, "DE"}));
}

}  // namespace
