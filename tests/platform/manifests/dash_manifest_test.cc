// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/dash_manifest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

using mediamgmnt::DashAdaptationSet;
using mediamgmnt::DashManifest;
using mediamgmnt::readDashManifest;
using testing::SizeIs;

constexpr char kManifest[] = R"(<?xml version="1.0" encoding="utf-8"?>
<MPD xmlns="urn:mpeg:dash:schema:mpd:2011" xmlns:cenc="urn:mpeg:cenc:2013" xmlns:dashif="https://dashif.org/CPS" type="static">
  <BaseURL>https://media.example/film/</BaseURL>
  <EssentialProperty schemeIdUri="urn:dvb:dash:fontdownload:2014" value="1"/>
  <Period id="one" start="PT0S" duration="PT20S">
    <SupplementalProperty schemeIdUri="urn:example:period" value="p"/>
    <AdaptationSet id="0" contentType="video" par="16:9" mimeType="video/mp4">
      <ContentProtection schemeIdUri="urn:mpeg:dash:mp4protection:2011" value="cenc"
        cenc:default_KID="10000000-1000-1000-1000-100000000001"/>
      <ContentProtection schemeIdUri="urn:uuid:e2719d58-a985-b3c9-781a-b030af78d30e">
        <dashif:Laurl>https://licence.example/get?a=1&amp;b=2</dashif:Laurl><cenc:pssh>AAAB</cenc:pssh>
      </ContentProtection>
      <Representation id="v0" codecs="avc1.4d401e" bandwidth="600000" width="640" height="360" sar="1:1"/>
      <Representation id="v1" codecs="avc1.4d400d" bandwidth="200000" width="320" height="180" sar="1:1"/>
    </AdaptationSet>
    <AdaptationSet id="7" lang="de-DE" mimeType="audio/mp4">
      <Accessibility schemeIdUri="urn:tva:metadata:cs:AudioPurposeCS:2007" value="1"/>
      <Role schemeIdUri="urn:mpeg:dash:role:2011" value="alternate" id="r"/>
      <SupplementalProperty schemeIdUri="urn:example:set" value="s"/>
      <Label lang="de">H&#246;rfassung</Label>
      <Representation id="a0" codecs="mp4a.40.2" bandwidth="96000">
        <AudioChannelConfiguration schemeIdUri="urn:mpeg:dash:23003:3:audio_channel_configuration:2011" value="2"/>
      </Representation>
    </AdaptationSet>
  </Period>
  <Period id="two"><AdaptationSet mimeType="application/ttml+xml" lang="eng">
    <Role schemeIdUri="urn:mpeg:dash:role:2011" value="caption"/>
    <Representation id="t"><BaseURL>sub-eng.ttml</BaseURL></Representation>
  </AdaptationSet></Period>
</MPD>)";

DashAdaptationSet setOf(const std::string& attributes, const std::string& content) {
  const auto manifest =
      readDashManifest("<MPD><Period><AdaptationSet " + attributes + ">" + content + "</AdaptationSet></Period></MPD>");
  if (!manifest || manifest->periods.size() != 1 || manifest->periods[0].adaptationSets.size() != 1) {
    ADD_FAILURE() << "not read";
    return {};
  }
  return manifest->periods[0].adaptationSets[0];
}

int channels(const std::string& scheme, const std::string& value) {
  return audioChannelsOf(
      setOf("contentType='audio'", "<AudioChannelConfiguration schemeIdUri='" + scheme + "' value='" + value + "'/>"));
}

TEST(DashManifestTest, ReadsPeriodsInOrder) {
  const DashManifest manifest = readDashManifest(kManifest).value();

  ASSERT_THAT(manifest.periods, SizeIs(2));
  EXPECT_EQ(manifest.periods[0].id, "one");
  EXPECT_EQ(manifest.periods[0].start, "PT0S");
  EXPECT_EQ(manifest.periods[0].duration, "PT20S");
  EXPECT_EQ(manifest.periods[1].id, "two");
  EXPECT_EQ(manifest.baseUrl, "https://media.example/film/");
  EXPECT_FALSE(manifest.isDynamic);
}

TEST(DashManifestTest, ReadsAVideoSetWithItsRepresentations) {
  const DashAdaptationSet set = readDashManifest(kManifest)->periods[0].adaptationSets[0];

  EXPECT_EQ(set.id, 0);
  EXPECT_EQ(set.contentType, "video");
  EXPECT_EQ(set.pictureAspectRatio, "16:9");
  EXPECT_EQ(set.codecs, "avc1.4d401e");  // that of the first representation
  ASSERT_THAT(set.representations, SizeIs(2));
  EXPECT_EQ(set.representations[1].width, 320);
  EXPECT_EQ(set.representations[1].height, 180);
  EXPECT_EQ(set.representations[1].bandwidth, 200000);
}

TEST(DashManifestTest, ReadsProtectionWithKeyIdAndLicenceAddress) {
  const DashAdaptationSet set = readDashManifest(kManifest)->periods[0].adaptationSets[0];

  EXPECT_TRUE(set.isProtected());
  ASSERT_THAT(set.protections, SizeIs(2));
  EXPECT_EQ(set.protections[0].value, "cenc");
  EXPECT_EQ(set.protections[0].defaultKid, "10000000-1000-1000-1000-100000000001");
  EXPECT_EQ(set.protections[1].scheme, "urn:uuid:e2719d58-a985-b3c9-781a-b030af78d30e");
  EXPECT_EQ(set.protections[1].licenceUrl, "https://licence.example/get?a=1&b=2");
  EXPECT_EQ(set.protections[1].pssh, "AAAB");
}

TEST(DashManifestTest, ReadsALicenceAddressWrittenAsAttribute) {
  const DashAdaptationSet set = setOf("contentType='video'",
                                      "<ContentProtection schemeIdUri='urn:uuid:x'><ms:laurl xmlns:ms='urn:microsoft' "
                                      "licenseUrl='https://l.example/'/></ContentProtection>");

  ASSERT_THAT(set.protections, SizeIs(1));
  EXPECT_EQ(set.protections[0].licenceUrl, "https://l.example/");
}

TEST(DashManifestTest, FindsProtectionOfARepresentation) {
  EXPECT_TRUE(setOf("", "<Representation><ContentProtection schemeIdUri='x'/></Representation>").isProtected());
  EXPECT_FALSE(setOf("", "<Representation/>").isProtected());
}

TEST(DashManifestTest, ReadsADescribedSound) {
  const DashAdaptationSet set = readDashManifest(kManifest)->periods[0].adaptationSets[1];

  EXPECT_EQ(set.id, 7);
  EXPECT_EQ(set.language, "de-DE");
  EXPECT_EQ(set.contentType, "audio");  // taken from the MIME type
  EXPECT_TRUE(isAudioDescription(set));
  EXPECT_TRUE(hasRole(set, "alternate"));
  EXPECT_FALSE(hasRole(set, "main"));
  EXPECT_EQ(set.roles[0].id, "r");
  EXPECT_EQ(audioChannelsOf(set), 2);  // said by its representation
  ASSERT_THAT(set.labels, SizeIs(1));
  EXPECT_EQ(set.labels[0].language, "de");
  EXPECT_EQ(set.labels[0].text, "H\xC3\xB6rfassung");
}

TEST(DashManifestTest, ReadsPropertiesOfEveryLevel) {
  const DashManifest manifest = readDashManifest(kManifest).value();

  EXPECT_TRUE(hasDescriptor(manifest.essentialProperties, "urn:dvb:dash:fontdownload:2014", "1"));
  EXPECT_TRUE(hasDescriptor(manifest.periods[0].supplementalProperties, "urn:example:period", "p"));
  EXPECT_TRUE(hasDescriptor(manifest.periods[0].adaptationSets[1].supplementalProperties, "urn:example:set", "s"));
}

TEST(DashManifestTest, ReadsSideLoadedText) {
  const DashAdaptationSet set = readDashManifest(kManifest)->periods[1].adaptationSets[0];

  EXPECT_EQ(set.id, std::nullopt);
  EXPECT_EQ(set.contentType, "text");
  EXPECT_EQ(set.baseUrl, "sub-eng.ttml");
  EXPECT_TRUE(isForHearingImpaired(set));
  EXPECT_FALSE(isAudioDescription(set));
}

TEST(DashManifestTest, KnowsTheWaysToSayDescription) {
  constexpr char kRole[] = "<Role schemeIdUri='urn:mpeg:dash:role:2011' value='description'/>";
  constexpr char kAccessibility[] = "<Accessibility schemeIdUri='urn:mpeg:dash:role:2011' value='description'/>";
  constexpr char kOther[] = "<Accessibility schemeIdUri='urn:tva:metadata:cs:AudioPurposeCS:2007' value='2'/>";

  EXPECT_TRUE(isAudioDescription(setOf("contentType='audio'", kRole)));
  EXPECT_TRUE(isAudioDescription(setOf("contentType='audio'", kAccessibility)));
  EXPECT_FALSE(isAudioDescription(setOf("contentType='audio'", kOther)));
  EXPECT_TRUE(isForHearingImpaired(setOf("contentType='audio'", kOther)));
}

TEST(DashManifestTest, CountsChannelsInEveryScheme) {
  constexpr char kCount[] = "urn:mpeg:dash:23003:3:audio_channel_configuration:2011";
  constexpr char kLayout[] = "urn:mpeg:mpegB:cicp:ChannelConfiguration";
  constexpr char kDolby[] = "tag:dolby.com,2014:dash:audio_channel_configuration:2011";

  EXPECT_EQ(channels(kCount, "6"), 6);
  EXPECT_EQ(channels(kLayout, "7"), 8);
  EXPECT_EQ(channels(kLayout, "99"), 0);
  EXPECT_EQ(channels(kDolby, "F801"), 6);
  EXPECT_EQ(channels(kDolby, "FA01"), 8);
  EXPECT_EQ(channels(kDolby, "A000"), 2);
  EXPECT_EQ(channels("urn:other", "2"), 0);
  EXPECT_EQ(channels(kCount, "many"), 0);
  EXPECT_EQ(channels(kCount, "-3"), 0);
}

TEST(DashManifestTest, TakesWhatASingleContentComponentSays) {
  const DashAdaptationSet set = setOf("", "<ContentComponent contentType='audio' lang='fra'/>");

  EXPECT_EQ(set.contentType, "audio");
  EXPECT_EQ(set.language, "fra");
}

TEST(DashManifestTest, DoesNotMindAnotherNamespace) {
  EXPECT_TRUE(readDashManifest("<d:MPD xmlns:d='urn:whatever' type='dynamic'/>")->isDynamic);
}

TEST(DashManifestTest, ReadsFontsThatMayBeFetched) {
  const auto manifest = readDashManifest(
      "<MPD xmlns:dvb='urn:dvb:dash:dash-extensions:2014-1'><Period><AdaptationSet>"
      "<EssentialProperty schemeIdUri='urn:dvb:dash:fontdownload:2014' value='1' dvb:url='f.woff' dvb:fontFamily='F'/>"
      "<SupplementalProperty schemeIdUri='urn:dvb:dash:fontdownload:2014' value='1' dvb:url='g.woff' dvb:fontFamily='G'/>"
      "<SupplementalProperty schemeIdUri='urn:dvb:dash:fontdownload:2014' value='1' dvb:url='nameless.woff'/>"
      "<SupplementalProperty schemeIdUri='urn:example:other' dvb:url='h.woff' dvb:fontFamily='H'/>"
      "</AdaptationSet></Period></MPD>");
  ASSERT_TRUE(manifest);
  const auto& fonts = manifest->periods[0].adaptationSets[0].fonts;
  ASSERT_EQ(fonts.size(), 2U);
  EXPECT_EQ(fonts[0].family + " " + fonts[0].url, "F f.woff");
  EXPECT_EQ(fonts[1].family + " " + fonts[1].url, "G g.woff");
}

TEST(DashManifestTest, RefusesWhatIsNoManifest) {
  EXPECT_FALSE(readDashManifest(""));
  EXPECT_FALSE(readDashManifest("<html/>"));
  EXPECT_FALSE(readDashManifest("<MPD><Period>"));
  EXPECT_FALSE(readDashManifest("MPD"));
}

TEST(DashManifestTest, RefusesEntitiesSoThatASmallTextStaysSmall) {
  EXPECT_FALSE(readDashManifest("<!DOCTYPE MPD [<!ENTITY a 'b'>]><MPD><BaseURL>&a;</BaseURL></MPD>"));
  EXPECT_FALSE(readDashManifest("<!DOCTYPE MPD [<!ENTITY a SYSTEM 'file:///etc/hostname'>]><MPD><BaseURL>&a;</BaseURL></MPD>"));
  EXPECT_TRUE(readDashManifest("<!DOCTYPE MPD><MPD/>"));
}

TEST(DashManifestTest, EveryCutOfAManifestEndsWithoutHarm) {
  const std::string whole = kManifest;
  for (std::size_t length = 0; length < whole.size(); ++length) {
    EXPECT_FALSE(readDashManifest(std::string_view(whole).substr(0, length))) << length;
  }
}

}  // namespace
