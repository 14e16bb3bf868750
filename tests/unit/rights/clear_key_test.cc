// SPDX-License-Identifier: Apache-2.0
// Keys, licences, and what a manifest says of them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <string>
#include <vector>

#include "platform/mediamgmnt/clear_keys.h"
#include "platform/mediamgmnt/content_rights.h"
#include "platform/mediamgmnt/key_session.h"
#include "platform/mediamgmnt/licence.h"

using mediamgmnt::ClearKeyStore;
using mediamgmnt::ContentKey;
using mediamgmnt::KeyFault;
using mediamgmnt::KeyId;
using mediamgmnt::keyIdText;
using mediamgmnt::KeyMap;
using mediamgmnt::KeySession;
using mediamgmnt::licenceOffers;
using mediamgmnt::licenceRequest;
using mediamgmnt::parseHexKey;
using mediamgmnt::readDashManifest;
using mediamgmnt::readLicence;
using mediamgmnt::rightsParty;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

constexpr char kIdText[] = "00112233-4455-6677-8899-aabbccddeeff";

KeyId id(std::uint8_t last) {
  KeyId bytes{};
  bytes.back() = last;
  return bytes;
}

TEST(HexKeyTest, ReadsDigitsOfEitherCase_WithAndWithoutHyphens) {
  const auto bytes = parseHexKey(kIdText);

  ASSERT_TRUE(bytes);
  EXPECT_EQ(parseHexKey("00112233445566778899AABBCCDDEEFF"), bytes);
  EXPECT_EQ(keyIdText(*bytes), kIdText);
  EXPECT_EQ((*bytes)[1], 0x11);
  EXPECT_EQ((*bytes)[15], 0xFF);
}

TEST(HexKeyTest, RefusesOtherTexts) {
  for (const char* const text : {"", "0011", "00112233445566778899aabbccddeef", "00112233445566778899aabbccddeeff0",
                                 "00112233445566778899aabbccddeefg", "{00112233-4455-6677-8899-aabbccddeeff}"}) {
    EXPECT_FALSE(parseHexKey(text)) << text;
  }
}

TEST(LicenceTest, AsksForKeys) {
  EXPECT_EQ(licenceRequest({}), R"({"kids":[],"type":"temporary"})");
  EXPECT_EQ(licenceRequest({*parseHexKey(kIdText), KeyId{}}),
            R"({"kids":["ABEiM0RVZneImaq7zN3u_w","AAAAAAAAAAAAAAAAAAAAAA"],"type":"temporary"})");
}

TEST(LicenceTest, ReadsKeys) {
  const auto keys = readLicence(
      R"( {"type":"temporary", "keys": [ {"kty":"oct","alg":null,"kid":"ABEiM0RVZneImaq7zN3u_w","k":"AAAAAAAAAAAAAAAAAAAAAQ"},
          {"k":"AAAAAAAAAAAAAAAAAAAAAg==","kid":"AAAAAAAAAAAAAAAAAAAAAw"} ], "more": {"a": [1, -2.5e3, true, "x\"]"]}} )");

  ASSERT_TRUE(keys);
  ASSERT_EQ(keys->size(), 2U);
  EXPECT_EQ(keys->at(*parseHexKey(kIdText)).back(), 1);
  EXPECT_EQ(keys->at(id(3)).back(), 2);
}

TEST(LicenceTest, ReadsBackWhatItAsksFor) {
  const KeyId asked = *parseHexKey(kIdText);
  const std::string request = licenceRequest({asked});
  const std::string text = request.substr(request.find("[\"") + 2, 22);

  const auto keys = readLicence("{\"keys\":[{\"kid\":\"" + text + "\",\"k\":\"" + text + "\"}]}");

  ASSERT_TRUE(keys);
  EXPECT_EQ(keys->at(asked), asked);
}

TEST(LicenceTest, PassesOverEntriesThatAreNoKeys) {
  for (const char* const entry :
       {"{}", R"({"kid":"AAAAAAAAAAAAAAAAAAAAAw"})", R"({"kid":"AAAA","k":"AAAAAAAAAAAAAAAAAAAAAQ"})",
        R"({"kid":"AAAAAAAAAAAAAAAAAAAAAw","k":"AAAAAAAAAAAAAAAAAAAAAQAA"})",
        R"({"kid":"AAAAAAAAAAAAAAAAAAAAAw","k":"AAAA*AAAAAAAAAAAAAAAAQ"})", R"({"kid":1,"k":null})", "7", "\"x\""}) {
    const auto keys = readLicence(std::string("{\"keys\":[") + entry + "]}");
    ASSERT_TRUE(keys) << entry;
    EXPECT_THAT(*keys, IsEmpty()) << entry;
  }
}

TEST(LicenceTest, RefusesWhatIsNone) {
  const std::string deep(100, '[');
  for (const std::string& text :
       {std::string(), std::string("[]"), std::string("{}"), std::string("{\"keys\":7}"), std::string("{\"keys\":["),
        std::string("{\"keys\":[]"), std::string("{\"keys\":[]} x"), std::string("{\"keys\":[}]"),
        std::string("{\"keys\":[{\"kid\":\"A"), std::string("{\"keys\" []}"), std::string("<html></html>"),
        std::string("{\"a\":\"\\"), "{\"a\":" + deep, "{\"a\":" + deep + std::string(100, ']') + ",\"keys\":[]}"}) {
    EXPECT_FALSE(readLicence(text)) << text;
  }
}

TEST(LicenceTest, RefusesEveryLicenceThatIsCutShort) {
  const std::string whole = R"({"keys":[{"kty":"oct","kid":"ABEiM0RVZneImaq7zN3u_w","k":"AAAAAAAAAAAAAAAAAAAAAQ"}]})";
  for (std::size_t size = 0; size < whole.size(); ++size) EXPECT_FALSE(readLicence(whole.substr(0, size))) << size;
}

class KeySessionTest : public ::testing::Test {
 protected:
  std::vector<std::pair<KeyFault, KeyId>> reports;
  KeySession session{[this](KeyFault fault, const KeyId& which) { reports.emplace_back(fault, which); }};
  std::atomic<bool> cancelled{false};
};

TEST_F(KeySessionTest, HasNoKeyAtFirst_AndDoesNotWaitForOne) { EXPECT_FALSE(session.find(id(1), cancelled)); }

TEST_F(KeySessionTest, FindsTheShellsKeys_BeforeALicences) {
  ClearKeyStore::instance().set(id(0x71), id(7));
  ClearKeyStore::instance().set(id(0x71), id(1));
  session.expectLicence();
  session.licenceCame({{id(0x71), id(2)}, {id(0x72), id(3)}});

  EXPECT_EQ(session.find(id(0x71), cancelled), id(1));
  EXPECT_EQ(session.find(id(0x72), cancelled), id(3));
  ClearKeyStore::instance().set(id(0x71), std::nullopt);
  EXPECT_EQ(session.find(id(0x71), cancelled), id(2));
}

TEST_F(KeySessionTest, WaitsForALicence) {
  session.expectLicence();
  auto key = std::async(std::launch::async, [&] { return session.find(id(5), cancelled); });

  session.licenceCame({{id(5), id(6)}});

  EXPECT_EQ(key.get(), id(6));
}

TEST_F(KeySessionTest, StopsWaiting_WhenTheLastLicenceIsOfNoUse) {
  session.expectLicence();
  session.expectLicence();
  auto key = std::async(std::launch::async, [&] { return session.find(id(5), cancelled); });

  session.licenceCame({{id(9), id(9)}});
  session.licenceCame({});

  EXPECT_FALSE(key.get());
}

TEST_F(KeySessionTest, StopsWaiting_WhenItIsCancelledOrEnds) {
  session.expectLicence();
  auto first = std::async(std::launch::async, [&] { return session.find(id(5), cancelled); });
  cancelled = true;
  session.wake();
  EXPECT_FALSE(first.get());

  cancelled = false;
  auto second = std::async(std::launch::async, [&] { return session.find(id(5), cancelled); });
  session.end();
  EXPECT_FALSE(second.get());
}

TEST_F(KeySessionTest, ReportsOnce) {
  session.report(KeyFault::Wrong, id(1));
  session.report(KeyFault::Missing, id(2));

  EXPECT_THAT(reports, ElementsAre(std::pair(KeyFault::Wrong, id(1))));
}

TEST_F(KeySessionTest, ReportsNothing_AfterTheEnd) {
  session.end();
  session.report(KeyFault::Wrong, id(1));

  EXPECT_THAT(reports, IsEmpty());
}

TEST_F(KeySessionTest, KnowsWhichKeysAreProven) {
  session.expectLicence();
  session.licenceCame({{id(1), id(1)}, {id(2), id(2)}});
  EXPECT_FALSE(session.unproven()) << "none was used";
  session.find(id(1), cancelled);
  EXPECT_EQ(session.unproven(), id(1));
  EXPECT_FALSE(session.isProven(id(1)));

  session.noteFits(id(1));
  session.find(id(1), cancelled);

  EXPECT_TRUE(session.isProven(id(1)));
  EXPECT_FALSE(session.unproven());
  session.find(id(2), cancelled);
  EXPECT_EQ(session.unproven(), id(2));
}

std::string manifestWith(const std::string& first, const std::string& second = "") {
  const auto set = [](const std::string& inner) { return "<AdaptationSet>" + inner + "<Representation id='1'/></AdaptationSet>"; };
  return "<MPD><Period>" + set(first) + (second.empty() ? "" : set(second)) + "</Period></MPD>";
}

std::string common(const std::string& last) {
  return "<ContentProtection schemeIdUri='urn:mpeg:dash:mp4protection:2011' value='cenc' "
         "default_KID='00000000-0000-0000-0000-0000000000" +
         last + "'/>";
}

constexpr char kWidevine[] =
    "<ContentProtection schemeIdUri='urn:uuid:edef8ba9-79d6-4ace-a3c8-27dcd51d21ed'><Laurl>http://w/</Laurl></ContentProtection>";
constexpr char kClearKey[] =
    "<ContentProtection schemeIdUri='urn:uuid:e2719d58-a985-b3c9-781a-b030af78d30e'><Laurl>http://c/</Laurl></ContentProtection>";
constexpr char kClearKeyAlone[] = "<ContentProtection schemeIdUri='urn:uuid:1077EFEC-c0b2-4d02-ace3-3c1e52e2fb4b'/>";

TEST(ContentRightsTest, OffersOneLicenceForEachAddress) {
  const auto offers =
      licenceOffers(*readDashManifest(manifestWith(common("01") + kWidevine + kClearKey, common("02") + kClearKey)));

  ASSERT_EQ(offers.size(), 1U);
  EXPECT_EQ(offers[0].url, "http://c/");
  EXPECT_THAT(offers[0].keyIds, ElementsAre(id(1), id(2)));
}

TEST(ContentRightsTest, OffersNoLicence_WithoutClearKeyAddressOrKeyId) {
  for (const std::string& inner :
       {std::string(), common("01"), common("01") + kWidevine, common("01") + kClearKeyAlone, std::string(kClearKey)}) {
    EXPECT_THAT(licenceOffers(*readDashManifest(manifestWith(inner))), IsEmpty()) << inner;
  }
}

TEST(ContentRightsTest, NamesClearKeyBeforeOthers) {
  EXPECT_EQ(rightsParty(*readDashManifest(manifestWith(common("01") + kWidevine + kClearKey))).issuerUrl, "http://c/");
  const auto widevine = rightsParty(*readDashManifest(manifestWith(common("01") + kWidevine)));
  EXPECT_EQ(widevine.systemId, "urn:uuid:edef8ba9-79d6-4ace-a3c8-27dcd51d21ed");
  EXPECT_EQ(widevine.issuerUrl, "http://w/");
  EXPECT_EQ(rightsParty(*readDashManifest(manifestWith(common("01")))).systemId, "");
}

}  // namespace
