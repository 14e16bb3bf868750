// SPDX-License-Identifier: Apache-2.0
// What a player answers about rights and ratings.
#include <gtest/gtest.h>

#include "platform/mediamgmnt/protection_facts.h"

using mediamgmnt::ProtectionFacts;

namespace {

TEST(ProtectionFactsTest, KnowsNothingAtFirst) {
  const ProtectionFacts facts;

  for (const char* const key :
       {"DRM_ERROR_STATE", "DRM_CONTENT_ID", "DRM_SYSTEM_ID", "DRM_RIGHTS_ISSUER_URL", "POSITION", "DRM_", ""}) {
    EXPECT_EQ(facts.answer(key), std::nullopt) << key;
  }
  EXPECT_EQ(facts.answer("PARENTAL_DRM_CONTENT_ID"), "");
  EXPECT_EQ(facts.answer("PARENTAL_DRM_SYSTEM_ID"), "");
  EXPECT_EQ(facts.answer("PARENTAL_BLOCKED"), "0");
  EXPECT_EQ(facts.answer("PARENTAL_RATING.LENGTH"), "0");
  EXPECT_EQ(facts.answer("PARENTAL_RATING.ITEM.0"), std::nullopt);
}

TEST(ProtectionFactsTest, AnswersARightsError) {
  ProtectionFacts facts;
  facts.setRightsError({1, "content", "system", "http://issuer.example/"});

  EXPECT_EQ(facts.answer("DRM_ERROR_STATE"), "1");
  EXPECT_EQ(facts.answer("DRM_CONTENT_ID"), "content");
  EXPECT_EQ(facts.answer("DRM_SYSTEM_ID"), "system");
  EXPECT_EQ(facts.answer("DRM_RIGHTS_ISSUER_URL"), "http://issuer.example/");
}

TEST(ProtectionFactsTest, AnswersRatings) {
  ProtectionFacts facts;
  facts.setParental({{"16|dvb-si|13|0|DE|", "18|dvb-si|15|0|GB|"}, true, "content", "system"});

  EXPECT_EQ(facts.answer("PARENTAL_DRM_CONTENT_ID"), "content");
  EXPECT_EQ(facts.answer("PARENTAL_DRM_SYSTEM_ID"), "system");
  EXPECT_EQ(facts.answer("PARENTAL_BLOCKED"), "1");
  EXPECT_EQ(facts.answer("PARENTAL_RATING.LENGTH"), "2");
  EXPECT_EQ(facts.answer("PARENTAL_RATING.ITEM.1"), "18|dvb-si|15|0|GB|");
}

TEST(ProtectionFactsTest, RefusesIndexesThatAreNone) {
  ProtectionFacts facts;
  facts.setParental({{"16|dvb-si|13|0|DE|"}, false, "", ""});

  for (const char* const index : {"1", "-1", "", "0x", " 0", "99999999999999999999"}) {
    EXPECT_EQ(facts.answer(std::string("PARENTAL_RATING.ITEM.") + index), std::nullopt) << index;
  }
}

TEST(ProtectionFactsTest, ForgetsAllOfIt) {
  ProtectionFacts facts;
  facts.setRightsError({});
  facts.setParental({{"16|dvb-si|13|0|DE|"}, true, "content", "system"});

  facts.forget();

  EXPECT_EQ(facts.answer("DRM_ERROR_STATE"), std::nullopt);
  EXPECT_EQ(facts.answer("PARENTAL_RATING.LENGTH"), "0");
  EXPECT_EQ(facts.answer("PARENTAL_BLOCKED"), "0");
}

}  // namespace
