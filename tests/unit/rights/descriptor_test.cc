// SPDX-License-Identifier: Apache-2.0
// The reader of content-access-streaming descriptors, and the choice of what to play of one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "platform/mediamgmnt/content_choice.h"
#include "platform/mediamgmnt/content_descriptor.h"

using mediamgmnt::ChoiceVerdict;
using mediamgmnt::chooseContent;
using mediamgmnt::ContentChoice;
using mediamgmnt::ContentDescriptor;
using mediamgmnt::readContentDescriptor;
using ::testing::HasSubstr;

namespace {

constexpr char kWhole[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<Contents xmlns="urn:oipf:iptv:ContentAccessStreamingDescriptor:2008-1">
 <ContentItem>
  <Title>Film &amp; Test</Title>
  <Synopsis>Not needed</Synopsis>
  <ContentID>crid://example.org/film</ContentID>
  <ContentURL MIMEType="video/mp4" DRMSystemID="urn:dvb:casystemid:19219" TransferType="streaming">http://example.org/a.mp4?x=1&amp;y=2</ContentURL>
  <ContentURL MIMEType="application/dash+xml">
     http://example.org/a.mpd
  </ContentURL>
  <ParentalRating Scheme="dvb-si" Region="DE">16</ParentalRating>
  <ParentalRating Scheme="urn:oipf:GermanyFSKCS">FSK12</ParentalRating>
  <DRMControlInformation>
    <DRMSystemID>urn:dvb:casystemid:19219</DRMSystemID>
    <DRMContentID>cid:1</DRMContentID>
    <RightsIssuerURL>http://issuer.example/?a=1&amp;b</RightsIssuerURL>
    <DRMPrivateData><![CDATA[<private/>]]></DRMPrivateData>
  </DRMControlInformation>
 </ContentItem>
</Contents>)";

ContentDescriptor readGood(const std::string& text) {
  std::string problem;
  const auto descriptor = readContentDescriptor(text, problem);
  EXPECT_TRUE(descriptor.has_value()) << problem;
  return descriptor.value_or(ContentDescriptor{{{}}});
}

std::string problemOf(const std::string& text) {
  std::string problem;
  EXPECT_FALSE(readContentDescriptor(text, problem).has_value());
  EXPECT_EQ(problem.find('\n'), std::string::npos) << "one line for the log";
  return problem;
}

/// A descriptor with these lines in its one item.
std::string withItem(const std::string& lines) { return "<Contents><ContentItem>" + lines + "</ContentItem></Contents>"; }

TEST(ContentDescriptorTest, ReadsAllParts) {
  const ContentDescriptor descriptor = readGood(kWhole);

  ASSERT_EQ(descriptor.items.size(), 1U);
  const auto& item = descriptor.items[0];
  EXPECT_EQ(item.title, "Film & Test");
  EXPECT_EQ(item.contentId, "crid://example.org/film");
  ASSERT_EQ(item.urls.size(), 2U);
  EXPECT_EQ(item.urls[0].url, "http://example.org/a.mp4?x=1&y=2");
  EXPECT_EQ(item.urls[0].mimeType, "video/mp4");
  EXPECT_EQ(item.urls[0].drmSystemId, "urn:dvb:casystemid:19219");
  EXPECT_EQ(item.urls[0].transferType, "streaming");
  EXPECT_EQ(item.urls[1].url, "http://example.org/a.mpd");
  EXPECT_EQ(item.urls[1].drmSystemId, "");
  ASSERT_EQ(item.ratings.size(), 2U);
  EXPECT_EQ(item.ratings[0].scheme, "dvb-si");
  EXPECT_EQ(item.ratings[0].region, "DE");
  EXPECT_EQ(item.ratings[0].value, "16");
  EXPECT_EQ(item.ratings[1].region, "");
  ASSERT_EQ(item.rights.size(), 1U);
  EXPECT_EQ(item.rights[0].systemId, "urn:dvb:casystemid:19219");
  EXPECT_EQ(item.rights[0].contentId, "cid:1");
  EXPECT_EQ(item.rights[0].issuerUrl, "http://issuer.example/?a=1&b");
}

TEST(ContentDescriptorTest, KnowsNamesInAnyNamespaceAndNone) {
  for (
      const char* const text : {
          "<Contents><ContentItem><Title>t</Title></ContentItem></Contents>",
          R"(<c:Contents xmlns:c="urn:a"><d:ContentItem xmlns:d="urn:b"><Title xmlns="urn:c">t</Title></d:ContentItem></c:Contents>)",
      }) {
    EXPECT_EQ(readGood(text).items[0].title, "t") << text;
  }
}

TEST(ContentDescriptorTest, KnowsAttributesWhateverTheirCase) {
  const auto descriptor = readGood(withItem(R"(<ContentURL mimetype="video/mp4" DrmSystemId="x">u</ContentURL>)"));

  EXPECT_EQ(descriptor.items[0].urls[0].mimeType, "video/mp4");
  EXPECT_EQ(descriptor.items[0].urls[0].drmSystemId, "x");
}

TEST(ContentDescriptorTest, ReadsAnItemThatHoldsNothing) { EXPECT_TRUE(readGood(withItem("")).items[0].urls.empty()); }

TEST(ContentDescriptorTest, ReadsOtherEncodings) {
  const std::string text = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" + withItem("<Title>\xE4</Title>");
  EXPECT_EQ(readGood(text).items[0].title, "\xC3\xA4");
}

struct BadText {
  const char* name;
  std::string text;
  const char* problem;
};

void PrintTo(const BadText& text, std::ostream* out) { *out << text.name; }

class BadDescriptorTest : public ::testing::TestWithParam<BadText> {};

TEST_P(BadDescriptorTest, IsRefusedWithAReason) { EXPECT_THAT(problemOf(GetParam().text), HasSubstr(GetParam().problem)); }

INSTANTIATE_TEST_SUITE_P(
    Texts, BadDescriptorTest,
    ::testing::Values(
        BadText{"Empty", "", "no well-formed XML"}, BadText{"CutShort", "<Contents><ContentItem>", "no well-formed XML"},
        BadText{"Binary", std::string("\x00\x01\xFF\xFE<Contents>", 14), "no well-formed XML"},
        BadText{"Page", "<!DOCTYPE html><html><body><p>Hello</p></body></html>", "not Contents"},
        BadText{"OtherRoot", "<MPD/>", "not Contents"}, BadText{"NoItem", "<Contents/>", "no ContentItem"},
        BadText{"TooLarge", withItem("<Title>" + std::string(256 * 1024, 'x') + "</Title>"), "larger than 256 KiB"},
        BadText{"TooDeep", std::string(100000, '<'), "no well-formed XML"},
        BadText{"Nested",
                [] {
                  std::string text;
                  for (int i = 0; i < 2000; ++i) text += "<Contents>";
                  for (int i = 0; i < 2000; ++i) text += "</Contents>";
                  return text;
                }(),
                "no well-formed XML"},
        BadText{"UnknownEntity", withItem("<Title>&nothing;</Title>"), "no well-formed XML"},
        BadText{"EntityBomb",
                "<!DOCTYPE x [<!ENTITY a 'aaaaaaaaaaaaaaaaaaaaaaaa'><!ENTITY b '&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;'>"
                "<!ENTITY c '&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;'><!ENTITY d '&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;'>"
                "<!ENTITY e '&d;&d;&d;&d;&d;&d;&d;&d;&d;&d;'><!ENTITY f '&e;&e;&e;&e;&e;&e;&e;&e;&e;&e;'>]>" +
                    withItem("<ContentURL MIMEType='&f;&f;'>&f;&f;&f;</ContentURL>"),
                "declares entities"},
        BadText{"ExternalEntity", "<!DOCTYPE x [<!ENTITY a SYSTEM 'file:///etc/passwd'>]>" + withItem("<Title>&a;</Title>"),
                "declares entities"},
        BadText{"ParameterEntity", "<!DOCTYPE x [<!ENTITY % a SYSTEM 'http://127.0.0.1:1/x'>%a;]>" + withItem("<Title>t</Title>"),
                "declares entities"}),
    [](const auto& info) { return info.param.name; });

TEST(ContentDescriptorTest, ReadsOneOfExactlyTheLargestSize) {
  const std::string frame = withItem("<Title></Title>");
  const std::string text = withItem("<Title>" + std::string(mediamgmnt::kLargestDescriptor - frame.size(), 'x') + "</Title>");

  ASSERT_EQ(text.size(), mediamgmnt::kLargestDescriptor);
  readGood(text);
}

/// A document type that is only named is not looked up.
TEST(ContentDescriptorTest, FetchesNoDocumentType) {
  EXPECT_EQ(readGood("<!DOCTYPE Contents SYSTEM 'file:///none.dtd'>" + withItem("<Title>t</Title>")).items[0].title, "t");
}

class ContentChoiceTest : public ::testing::Test {
 protected:
  ContentChoice choose(const std::string& text) {
    m_descriptor = readGood(text);
    return chooseContent(m_descriptor);
  }

  static std::string url(const std::string& attributes, const std::string& address) {
    return "<ContentURL " + attributes + ">" + address + "</ContentURL>";
  }

 private:
  ContentDescriptor m_descriptor;
};

TEST_F(ContentChoiceTest, TakesTheFirstThatNeedsNoForeignRights) {
  const ContentChoice choice = choose(kWhole);

  EXPECT_EQ(choice.verdict, ChoiceVerdict::Playable);
  EXPECT_EQ(choice.url->url, "http://example.org/a.mpd");
  ASSERT_NE(choice.rights, nullptr) << "the item's only ones";
  EXPECT_EQ(choice.rights->contentId, "cid:1");
}

TEST_F(ContentChoiceTest, SkipsTypesThatDoNotPlay) {
  const auto choice = choose(withItem(url("MIMEType='video/x-ms-wmv'", "http://h/1") + url("MIMEType='image/png'", "http://h/2") +
                                      url("MIMEType='Video/MP4; codecs=\"avc1\"'", "http://h/3")));

  EXPECT_EQ(choice.verdict, ChoiceVerdict::Playable);
  EXPECT_EQ(choice.url->url, "http://h/3");
}

TEST_F(ContentChoiceTest, TriesOneWithoutAType) { EXPECT_EQ(choose(withItem(url("", "http://h/1"))).url->url, "http://h/1"); }

TEST_F(ContentChoiceTest, SkipsEmptyAddressesAndDownloads) {
  const auto choice =
      choose(withItem(url("", " ") + url("TransferType='playable_download'", "http://h/1") +
                      url("TransferType='Full_Download'", "http://h/2") + url("TransferType='Streaming'", "http://h/3")));

  EXPECT_EQ(choice.url->url, "http://h/3");
}

TEST_F(ContentChoiceTest, LooksIntoLaterItems) {
  const auto choice = choose("<Contents><ContentItem><Title>1</Title></ContentItem><ContentItem><Title>2</Title>" +
                             url("", "http://h/1") + "</ContentItem></Contents>");

  EXPECT_EQ(choice.item->title, "2");
}

TEST_F(ContentChoiceTest, TakesClearKey_InBothOfItsForms) {
  for (const char* const system : {"urn:uuid:1077EFEC-C0B2-4D02-ACE3-3C1E52E2FB4B", "e2719d58-a985-b3c9-781a-b030af78d30e"}) {
    EXPECT_EQ(choose(withItem(url("DRMSystemID='" + std::string(system) + "'", "http://h/1"))).verdict, ChoiceVerdict::Playable);
  }
}

TEST_F(ContentChoiceTest, TellsWhichRightsAreMissing) {
  const std::string rights =
      "<DRMControlInformation><DRMSystemID>other</DRMSystemID></DRMControlInformation>"
      "<DRMControlInformation><DRMSystemID>URN:X</DRMSystemID><DRMContentID>c</DRMContentID></DRMControlInformation>";

  const auto choice =
      choose(withItem(url("DRMSystemID='urn:x'", "http://h/1") + url("DRMSystemID='urn:y'", "http://h/2") + rights));

  EXPECT_EQ(choice.verdict, ChoiceVerdict::NoRights);
  EXPECT_EQ(choice.url->drmSystemId, "urn:x");
  ASSERT_NE(choice.rights, nullptr);
  EXPECT_EQ(choice.rights->contentId, "c");
}

TEST_F(ContentChoiceTest, FindsNothing) {
  EXPECT_EQ(choose(withItem("")).verdict, ChoiceVerdict::NothingPlayable);
  EXPECT_EQ(choose(withItem(url("MIMEType='text/html' DRMSystemID='x'", "http://h/1"))).verdict, ChoiceVerdict::NothingPlayable);
}

TEST(DescriptorTypeTest, IsKnownWithParametersAndInAnyCase) {
  EXPECT_TRUE(mediamgmnt::isDescriptorType("application/vnd.oipf.ContentAccessStreaming+xml"));
  EXPECT_TRUE(mediamgmnt::isDescriptorType("APPLICATION/vnd.oipf.contentaccessstreaming+xml ; charset=utf-8"));
  EXPECT_FALSE(mediamgmnt::isDescriptorType("application/vnd.oipf.ContentAccessDownload+xml"));
  EXPECT_FALSE(mediamgmnt::isDescriptorType(""));
}

}  // namespace
