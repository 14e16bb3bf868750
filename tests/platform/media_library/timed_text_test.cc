// SPDX-License-Identifier: Apache-2.0
// WebVTT as timed text, and the fonts that documents ask for. Text only.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "platform/mediamgmnt/subtitle_fonts.h"
#include "platform/mediamgmnt/webvtt.h"
#include "platform/mediamgmnt/webvtt_markup.h"
#include "platform/mediamgmnt/webvtt_region.h"
#include "platform/mediamgmnt/xml_document.h"

namespace mediamgmnt {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(WebVttTest, ReadsCues) {
  const WebVttCues cues = readWebVtt(
      "\xEF\xBB\xBFWEBVTT - a title\r\nX-TIMESTAMP-MAP=LOCAL:00:00:00.000,MPEGTS:0\r\n\r\nNOTE\r\nnot --shown\r\n\r\n"
      "7\r\n00:01.500 --> 00:00:03.250 line:10%  align:start\r\nOne\r\ntwo\r\n\r\n01:00:00.000 --> 01:00:01.000\nThree");
  EXPECT_THAT(cues,
              ElementsAre(WebVttCue{1500, 3250, "line:10%  align:start", "One\ntwo"}, WebVttCue{3600000, 3601000, "", "Three"}));
}

TEST(WebVttTest, ReadsCuesWithoutAHeader) {
  EXPECT_THAT(
      readWebVtt("00:00.000 --> 00:01.000\na\n\n00:01.000 --> 00:02.000\n\n00:02.000 --> 00:03.000\nb\n00:03.000 --> 00:04.000\nc"),
      ElementsAre(WebVttCue{0, 1000, "", "a"}, WebVttCue{2000, 3000, "", "b"}, WebVttCue{3000, 4000, "", "c"}))
      << "a cue without text is none; the next times end a cue";
}

TEST(WebVttTest, PassesOverTimesThatMakeNoSense) {
  for (const char* const times :
       {"00:02.000 --> 00:01.000", "0:1 --> 0:2", "aa:00.000 --> 00:01.000", "00:00.000 -->", "--> 00:01.000",
        "00:00,000 --> 00:01,000", "1:2:3:4.000 --> 9:00.000", "-1:00.000 --> 00:09.000"}) {
    EXPECT_THAT(readWebVtt(std::string(times) + "\ntext\n"), IsEmpty()) << times;
  }
  EXPECT_THAT(readWebVtt(""), IsEmpty());
}

TEST(WebVttTest, MakesOneDocument) {
  const std::string document = ttmlOf({{0, 1000, "line:0", "a"}, {1000, 3723004, "", "b\nc"}, {2000, 3000, "line:0", "d"}});
  EXPECT_TRUE(XmlDocument(document, 1 << 20).isValid());
  EXPECT_THAT(document, HasSubstr("<p region=\"r0\" style=\"cue\" begin=\"00:00:00.000\" end=\"00:00:01.000\">a</p>"));
  EXPECT_THAT(document, HasSubstr("<p region=\"r1\" style=\"cue\" begin=\"00:00:01.000\" end=\"01:02:03.004\">b<br/>c</p>"));
  EXPECT_THAT(document, HasSubstr("<p region=\"r0\" style=\"cue\" begin=\"00:00:02.000\" end=\"00:00:03.000\">d</p>"));
}

TEST(WebVttTest, PlacesCues) {
  struct Row {
    const char* settings;
    const char* origin;
    const char* extent;
    const char* down;
    const char* align;
  };
  for (const Row& row :
       {Row{"", "0% 0%", "100% 95%", "after", "center"},
        Row{"line:10% position:25% size:50% align:start", "25% 10%", "50% 90%", "before", "start"},
        Row{"line:0 align:left", "0% 0%", "100% 100%", "before", "left"}, Row{"line:3", "0% 16%", "100% 84%", "before", "center"},
        Row{"line:-1", "0% 0%", "100% 95%", "after", "center"}, Row{"line:-4 align:end", "0% 0%", "100% 79%", "after", "end"},
        Row{"line:80%,end", "0% 0%", "100% 80%", "after", "center"},
        Row{"line:40%,center", "0% 0%", "100% 80%", "center", "center"},
        Row{"position:20% size:60% align:center", "0% 0%", "40% 95%", "after", "center"},
        Row{"position:90%,line-right size:30%", "60% 0%", "30% 95%", "after", "center"},
        Row{"position:12.5%,line-left align:end", "12.50% 0%", "87.50% 95%", "after", "end"},
        Row{"size:140% position:x line:%  nonsense : :", "0% 0%", "100% 95%", "after", "center"}}) {
    const std::string expected = std::string(" tts:origin=\"") + row.origin + "\" tts:extent=\"" + row.extent +
                                 "\" tts:displayAlign=\"" + row.down + "\" tts:textAlign=\"" + row.align + "\"";
    EXPECT_EQ(regionAttributesOf(row.settings), expected) << row.settings;
  }
  EXPECT_THAT(regionAttributesOf("vertical:rl"), HasSubstr("tts:writingMode=\"tbrl\""));
  EXPECT_THAT(regionAttributesOf("vertical:lr"), HasSubstr("tts:writingMode=\"tblr\""));
}

TEST(WebVttTest, KeepsMarkup) {
  EXPECT_EQ(ttmlMarkupOf("a\nb"), "a<br/>b");
  EXPECT_EQ(ttmlMarkupOf("<b>x</b><i>y</i><u>z</u>"),
            "<span tts:fontWeight=\"bold\">x</span><span tts:fontStyle=\"italic\">y</span>"
            "<span tts:textDecoration=\"underline\">z</span>");
  EXPECT_EQ(ttmlMarkupOf("<c.yellow.bg_blue.loud>x</c>"), "<span tts:color=\"yellow\" tts:backgroundColor=\"blue\">x</span>");
  EXPECT_EQ(ttmlMarkupOf("<v Anna>x</v> <c>y</c><00:01.000>z"), "x yz");
  EXPECT_EQ(ttmlMarkupOf("<lang de>x</lang>"), "<span xml:lang=\"de\">x</span>");
  EXPECT_EQ(ttmlMarkupOf("&amp;&lt;&gt;&quot;&nbsp;&#65;&#x42;"), "&amp;&lt;&gt;&quot;\xC2\xA0&#65;&#66;");
  EXPECT_EQ(ttmlMarkupOf("a & b &unknown; &#0; < c"), "a &amp; b &amp;unknown; &amp;#0; &lt; c");
  EXPECT_EQ(ttmlMarkupOf("<b><i>x</b>y</i>"), "<span tts:fontWeight=\"bold\"><span tts:fontStyle=\"italic\">x</span></span>y");
}

/// Whatever a network brings.
TEST(WebVttTest, IsAlwaysWellFormed) {
  std::mt19937 random(11);
  const std::string letters = "<>/&;#-->:.0123456789bicuv lang\"'\n\r\t\x01\xC3\xA4\xFF%,";
  for (int round = 0; round < 3000; ++round) {
    std::string text = "00:00.000 --> 00:01.000 line:" + std::to_string(random() % 30) + "%\n";
    for (unsigned length = random() % 80; length > 0; --length) text += letters[random() % letters.size()];
    const std::string document = ttmlOf(readWebVtt(text));
    ASSERT_TRUE(XmlDocument(document, 1 << 20).isValid()) << document;
  }
}

constexpr char kBase[] = "http://media.example/a/doc.ttml";

TEST(SubtitleFontsTest, AreFoundInADocument) {
  const std::string document = R"(<tt:tt xmlns:tt="http://www.w3.org/ns/ttml"><tt:head><tt:resources>
      <tt:font family="Beside" src="../f.woff"/>
      <tt:font family="Inside"><tt:source><tt:data type="font/woff">QUJD
        REVG</tt:data></tt:source></tt:font>
      <tt:font family="Referred" src="#d1"/><tt:data xml:id="d1">R0hJ</tt:data>
      <tt:font family="Outside"><tt:source src="https://fonts.example/x.ttf"/></tt:font>
      <tt:font family="Nowhere"/><tt:font src="no-family.ttf"/>
      </tt:resources></tt:head></tt:tt>)";
  EXPECT_EQ(fontsDefinedIn(document, kBase), (SubtitleFonts{{"Beside", "http://media.example/f.woff"},
                                                            {"Inside", "data:font/woff;base64,QUJDREVG"},
                                                            {"Referred", "data:font/sfnt;base64,R0hJ"},
                                                            {"Outside", "https://fonts.example/x.ttf"}}));
}

TEST(SubtitleFontsTest, AreNotFoundInWhatIsNoDocument) {
  EXPECT_TRUE(fontsDefinedIn("<tt><font family=\"F\" src=\"f.ttf\">", kBase).empty());
  EXPECT_TRUE(fontsDefinedIn("<tt/>", kBase).empty());
  EXPECT_TRUE(fontsDefinedIn("", kBase).empty());
}

TEST(SubtitleFontsTest, AreOfferedOnlyToDocumentsThatNameThem) {
  const SubtitleFonts offered = {{"One", "http://f.example/1"}, {"Two", "http://f.example/2"}};
  EXPECT_EQ(fontsNamedIn("<style tts:fontFamily=\"Two, default\"/>", offered), (SubtitleFonts{offered[1]}));
  EXPECT_TRUE(fontsNamedIn("<style/>", offered).empty());
}

}  // namespace
}  // namespace mediamgmnt
