// SPDX-License-Identifier: Apache-2.0
// Ratings in DASH manifests.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/mediamgmnt/content_ratings.h"

using mediamgmnt::parseDurationNs;
using mediamgmnt::RatedSpan;
using mediamgmnt::ratedSpans;
using mediamgmnt::spanAt;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

constexpr char kSixteen[] = "<SupplementalProperty schemeIdUri='dvb-si' value='16'/>";
constexpr char kSix[] = "<EssentialProperty schemeIdUri='urn:oipf:GermanyFSKCS' value='FSK6'/>";
constexpr char kStrange[] = "<SupplementalProperty schemeIdUri='urn:example:ParentalRating' value='x'/>";
constexpr char kOther[] = "<SupplementalProperty schemeIdUri='urn:mpeg:dash:adaptation-set-switching:2016' value='1'/>";

std::vector<RatedSpan> spansOf(const std::string& inner) {
  return ratedSpans(*mediamgmnt::readDashManifest("<MPD>" + inner + "</MPD>"));
}

std::vector<std::string> namesOf(const RatedSpan& span) {
  std::vector<std::string> names;
  for (const auto& rating : span.ratings) names.push_back(rating.name);
  return names;
}

TEST(ContentRatingsTest, AreReadOnEveryLevel) {
  const auto spans = spansOf(std::string(kSixteen) + "<Period>" + kSix + "<AdaptationSet>" + kStrange +
                             "<Rating schemeIdUri='anything' value='y'/></AdaptationSet></Period>");

  ASSERT_EQ(spans.size(), 1U);
  EXPECT_THAT(namesOf(spans[0]), ElementsAre("16", "FSK6", "y", "x"));
}

TEST(ContentRatingsTest, AreToldOnce_WhenEachTrackHasThem) {
  const std::string set = std::string("<AdaptationSet>") + kSixteen + "</AdaptationSet>";

  EXPECT_THAT(namesOf(spansOf("<Period>" + set + set + "</Period>")[0]), ElementsAre("16"));
}

TEST(ContentRatingsTest, AreNoOtherProperties) {
  EXPECT_THAT(namesOf(spansOf(std::string("<Period>") + kOther + "</Period>")[0]), IsEmpty());
}

TEST(ContentRatingsTest, ChangeWithThePeriods) {
  const auto spans = spansOf(std::string("<Period start='PT0S' duration='PT10S'>") + kSix + "</Period><Period duration='PT1M'>" +
                             kSixteen + "</Period><Period start='PT1M30S'/>");

  ASSERT_EQ(spans.size(), 3U);
  EXPECT_EQ(&spanAt(spans, 0), &spans[0]);
  EXPECT_EQ(&spanAt(spans, 9'999'999'999), &spans[0]);
  EXPECT_EQ(&spanAt(spans, 10'000'000'000), &spans[1]);
  EXPECT_EQ(&spanAt(spans, 89'000'000'000), &spans[1]);
  EXPECT_EQ(&spanAt(spans, 90'000'000'000), &spans[2]);
  EXPECT_EQ(&spanAt(spans, -1), &spans[0]);
}

TEST(ContentRatingsTest, StayInOrder_WhenPeriodsDoNot) {
  const auto spans = spansOf("<Period start='PT20S'/><Period start='PT5S'/><Period start='nonsense'/>");

  ASSERT_EQ(spans.size(), 3U);
  EXPECT_EQ(spans[0].startNs, 0);
  EXPECT_LE(spans[1].startNs, spans[2].startNs);
}

TEST(ContentRatingsTest, AreNone_WithoutPeriods) { EXPECT_THAT(spansOf(kSixteen), IsEmpty()); }

TEST(DurationTextTest, IsReadInAllItsParts) {
  EXPECT_EQ(parseDurationNs("PT0S"), 0);
  EXPECT_EQ(parseDurationNs("PT2.5S"), 2'500'000'000);
  EXPECT_EQ(parseDurationNs("PT1H2M3S"), 3'723'000'000'000);
  EXPECT_EQ(parseDurationNs("P1DT1S"), 86'401'000'000'000);
  EXPECT_EQ(parseDurationNs("PT90M"), 5'400'000'000'000);
  for (const char* const text :
       {"", "P", "PT", "2S", "PT2", "PT-2S", "PTS", "PT2S1M", "PT1e3S", "P1Y", "PT99999999999999S", "PT2S "}) {
    EXPECT_LT(parseDurationNs(text), 0) << text;
  }
}

}  // namespace
