// SPDX-License-Identifier: Apache-2.0
// One parental rating: its text form, its record, its script object.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "parental/parental_rating.h"
#include "parental/parental_rating_object.h"
#include "tests/support/script_object.h"
#include "tests/unit/components/random_record.h"

using fixture::readShown;
using ::testing::ElementsAre;
using ::testing::internal::CaptureStderr;
using ::testing::internal::GetCapturedStderr;

namespace {

struct RatingDeleter {
  void operator()(AVParentalRating* rating) const { hlpDestroyAVParentalRating(rating); }
};
using OwnedRating = std::unique_ptr<AVParentalRating, RatingDeleter>;

OwnedRating readRating(std::string text) { return OwnedRating(hlpCreateAVParentalRating(text.data())); }

constexpr char kRating[] = "16|dvb-si|13|3|DE|";

TEST(ParentalRatingRecordTest, ReadsAllFields) {
  const OwnedRating rating = readRating(kRating);

  ASSERT_TRUE(rating);
  EXPECT_STREQ(rating->name, "16");
  EXPECT_STREQ(rating->scheme, "dvb-si");
  EXPECT_EQ(rating->value, 13);
  EXPECT_EQ(rating->labels, 3);
  EXPECT_STREQ(rating->region, "DE");
}

TEST(ParentalRatingRecordTest, ReadsEmptyFields) {
  const OwnedRating rating = readRating("|||||");

  ASSERT_TRUE(rating);
  EXPECT_STREQ(rating->name, "");
  EXPECT_STREQ(rating->scheme, "");
  EXPECT_EQ(rating->value, 0);
  EXPECT_EQ(rating->labels, 0);
  EXPECT_STREQ(rating->region, "");
}

TEST(ParentalRatingRecordTest, ReadsThePrintedNullTextAsEmpty) {
  const OwnedRating rating = readRating("(null)|(null)x|1|1|(null)|");

  ASSERT_TRUE(rating);
  EXPECT_STREQ(rating->name, "");
  EXPECT_STREQ(rating->scheme, "(null)x");
  EXPECT_STREQ(rating->region, "");
}

TEST(ParentalRatingRecordTest, ReadsDigitsAsFarAsTheyGo) {
  EXPECT_EQ(readRating("n|s|12abc|x3|r|")->value, 12);
  EXPECT_EQ(readRating("n|s|12abc|x3|r|")->labels, 0);
  EXPECT_EQ(readRating("n|s| -7|+8|r|")->value, -7);
  EXPECT_EQ(readRating("n|s| -7|+8|r|")->labels, 8);
}

TEST(ParentalRatingRecordTest, IgnoresWhatFollowsTheLastField) { EXPECT_STREQ(readRating("n|s|1|2|r|more|")->region, "r"); }

TEST(ParentalRatingRecordTest, ReadsNoRecord_WhereverTheTextSaysNotAvailable) {
  EXPECT_FALSE(readRating("NOT_AVAILABLE"));
  EXPECT_FALSE(readRating("n|NOT_AVAILABLE|1|2|r|"));
  EXPECT_FALSE(readRating("n|s|1|2|r|NOT_AVAILABLE"));
}

TEST(ParentalRatingRecordTest, ReadsNoRecord_FromATextThatIsCutShort) {
  const std::string text = kRating;

  for (std::size_t length = 0; length < text.size(); ++length) EXPECT_FALSE(readRating(text.substr(0, length))) << length;
  EXPECT_EQ(hlpCreateAVParentalRating(nullptr), nullptr);
}

/// Random contents: separators, foreign letters, long and missing fields; held against a second, plain reading.
TEST(ParentalRatingRecordTest, ReadsWhatThePlainReadingReads) {
  records::Generator random(1);
  int refused = 0;
  for (int round = 0; round < 5000; ++round) {
    const bool clean = random.below(2) == 0;
    const std::string text = clean ? random.record(records::kRatingFields) : random.blemished(records::kRatingFields);
    const auto expected = records::plainReading(text, records::kRatingFields);
    refused += expected ? 0 : 1;
    const auto exact = std::make_unique<char[]>(text.size() + 1);
    std::memcpy(exact.get(), text.c_str(), text.size() + 1);

    const OwnedRating rating(hlpCreateAVParentalRating(exact.get()));

    ASSERT_EQ(rating != nullptr, expected.has_value()) << text;
    if (rating == nullptr) continue;
    const records::Values values{rating->name, rating->scheme, std::to_string(rating->value), std::to_string(rating->labels),
                                 rating->region};
    ASSERT_EQ(values, *expected) << text;
  }
  EXPECT_GT(refused, 500);
}

TEST(ParentalRatingRecordTest, FreesARecordWithoutTexts) {
  hlpDestroyAVParentalRating(static_cast<AVParentalRating*>(std::calloc(1, sizeof(AVParentalRating))));
}

class ParentalRatingObjectTest : public ::testing::Test {
 protected:
  bool show(std::string text) {
    CaptureStderr();
    const bool shown = object->setPropertiesParentalReiting(hlpCreateAVParentalRating(text.data()));
    trace = GetCapturedStderr();
    return shown;
  }
  std::vector<std::string> values() const {
    std::vector<std::string> lines;
    for (const char* name : {"name", "scheme", "value", "labels", "region"}) lines.push_back(readShown(object, name));
    return lines;
  }

  std::shared_ptr<HbbTVParentalRatingAVClass> object = HbbTVParentalRatingAVClass::create(nullptr);
  std::string trace;
};

TEST_F(ParentalRatingObjectTest, Table) {
  EXPECT_THAT(fixture::shownRows(HbbTVParentalRatingAVClass::sm_properties, HbbTVParentalRatingAVClass::sm_prop_length),
              ElementsAre("name 6 0 string:", "scheme 6 0 string:", "value 3 0 int:0", "labels 3 0 int:0", "region 6 0 string:"));
  EXPECT_EQ(HbbTVParentalRatingAVClass::sm_met_length, 0U);
  EXPECT_TRUE(pluginhost::methodRows(*object).empty());
  EXPECT_EQ(object->type(), 30);
}

TEST_F(ParentalRatingObjectTest, ShowsItsRecord) {
  EXPECT_THAT(values(), ElementsAre("string:", "string:", "int:0", "int:0", "string:"));

  EXPECT_TRUE(show(kRating));

  EXPECT_THAT(values(), ElementsAre("string:16", "string:dvb-si", "int:13", "int:3", "string:DE"));
}

TEST_F(ParentalRatingObjectTest, TracesTheRegion) {
  show(kRating);

  EXPECT_EQ(trace, "DE\n");
}

/// A rating that is shown again is a fill, too.
TEST_F(ParentalRatingObjectTest, TracesOncePerFill_AndNothingForANullRecord) {
  for (const char* region : {"DE", "DE", "", "AT"}) {
    EXPECT_TRUE(show(std::string("16|dvb-si|13|3|") + region + "|"));
    EXPECT_EQ(trace, std::string(region) + "\n");
    EXPECT_FALSE(show("NOT_AVAILABLE"));
    EXPECT_EQ(trace, "");
  }
}

TEST_F(ParentalRatingObjectTest, WritesItsRowsInOrder) {
  fixture::HostLog log;
  pluginhost::setObserver(&log);
  show(kRating);
  pluginhost::setObserver(nullptr);

  std::vector<std::string> written;
  for (const auto& entry : log.entries()) written.push_back(shown(entry));
  EXPECT_THAT(written, ElementsAre("name=string:16", "scheme=string:dvb-si", "value=int:13", "labels=int:3", "region=string:DE"));
}

TEST_F(ParentalRatingObjectTest, RefusesANullRecord) {
  show(kRating);

  EXPECT_FALSE(object->setPropertiesParentalReiting(nullptr));

  EXPECT_THAT(values(), ElementsAre("string:16", "string:dvb-si", "int:13", "int:3", "string:DE"));
}

TEST_F(ParentalRatingObjectTest, ReplacesItsRecord) {
  show(kRating);

  show("18|oipf|18|0|AT|");

  EXPECT_THAT(values(), ElementsAre("string:18", "string:oipf", "int:18", "int:0", "string:AT"));
}

/// Its rows are plain values: script may write to them, and the next record shows again.
TEST_F(ParentalRatingObjectTest, ShowsItsRecord_AfterScriptWroteToTheRows) {
  show(kRating);
  EXPECT_TRUE(pluginhost::writeProperty(*object, "name", fixture::text("mine")));
  EXPECT_TRUE(pluginhost::writeProperty(*object, "value", fixture::integer(99)));
  EXPECT_THAT(values(), ElementsAre("string:mine", "string:dvb-si", "int:99", "int:3", "string:DE"));

  show("18|oipf|18|0|AT|");

  EXPECT_THAT(values(), ElementsAre("string:18", "string:oipf", "int:18", "int:0", "string:AT"));
}

TEST_F(ParentalRatingObjectTest, TakesTheSameRecordTwice) {
  std::string text = kRating;
  AVParentalRating* const rating = hlpCreateAVParentalRating(text.data());

  EXPECT_TRUE(object->setPropertiesParentalReiting(rating));
  EXPECT_TRUE(object->setPropertiesParentalReiting(rating));

  EXPECT_THAT(values(), ElementsAre("string:16", "string:dvb-si", "int:13", "int:3", "string:DE"));
}

TEST_F(ParentalRatingObjectTest, CastsToItsOwnClassOnly) {
  EXPECT_EQ(HbbTVParentalRatingAVClass::cast(object.get()), object.get());
  EXPECT_EQ(HbbTVParentalRatingAVClass::cast(nullptr), nullptr);
}

}  // namespace
