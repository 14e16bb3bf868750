// SPDX-License-Identifier: Apache-2.0
// Everything that can be wrong with a source, and the code that a page sees for it.
#include <gtest/gtest.h>

#include "sample_server.h"
#include "test_player.h"

namespace {

struct Fault {
  const char* name;
  const char* address;  ///< a whole URL, or a path of the sample server
  const char* code;
};

class ErrorTest : public testing::TestWithParam<Fault> {
 protected:
  static std::string url() {
    const std::string address = GetParam().address;
    return address.find("://") != std::string::npos ? address : SampleServer::instance().url(address);
  }

  TestPlayer m_player;
};

/// A pause prepares a source, and is answered as soon as the source answers.
using PausedErrorTest = ErrorTest;

TEST_P(ErrorTest, EndsInOneErrorAndTheNextSourcePlays) {
  std::optional<std::string> codeAtTheWord;
  m_player.onWord([&](const std::string& word) {
    if (word == "ERROR") codeAtTheWord = m_player.get("LAST_ERR_CODE");
  });
  m_player.load(url());

  m_player.command("PLAY", "1.00");

  m_player.wordsUntil("ERROR", 40);
  EXPECT_EQ(codeAtTheWord, GetParam().code);
  EXPECT_EQ(m_player.get("PLAY_SPEED"), "0.00");

  m_player.set("INPUT", SampleServer::instance().url("short/two.mp4"));
  m_player.command("PLAY", "1.00");
  const bool played = m_player.waitFor(
      [](const Words& words) { return words.back() == "PLAY_SPEED_CHANGED" && count(words, "READY_TO_PLAY") == 2; }, 20);
  const Words words = m_player.words();
  EXPECT_EQ(count(words, "ERROR"), 1);
  EXPECT_EQ(count(words, "FINISHED"), 0);
  ASSERT_TRUE(played) << testing::PrintToString(words);
  EXPECT_EQ((Words{words.end() - 5, words.end()}),
            (Words{"READY_TO_PLAY", "CONNECTED", "BUFFER_READY", "PLAYING", "PLAY_SPEED_CHANGED"}));
  m_player.onWord(nullptr);
}

TEST_P(PausedErrorTest, IsToldOnceAPlayIsAskedFor) {
  m_player.load(url());
  m_player.command("PAUSE");
  m_player.wordsUntil("ERROR", 40);
  EXPECT_EQ(count(m_player.words(), "PLAYING"), 0);
  m_player.forget();

  m_player.command("PLAY", "1.00");

  const Words words = m_player.wordsUntil("ERROR", 40);
  ASSERT_GE(words.size(), 2U);
  EXPECT_EQ((Words{words.end() - 2, words.end()}), (Words{"PLAYING", "ERROR"}));
  EXPECT_EQ(m_player.get("LAST_ERR_CODE"), GetParam().code);
  EXPECT_EQ(m_player.get("PLAY_SPEED"), "0.00");
}

INSTANTIATE_TEST_SUITE_P(Faults, PausedErrorTest,
                         testing::Values(Fault{"RandomBytes", "broken/random.mp4", "0"}, Fault{"NoMoov", "broken/no-moov.mp4", "4"},
                                         Fault{"NoSegments", "broken/no-segments.mpd", "5"}),
                         [](const auto& info) { return info.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Faults, ErrorTest,
    testing::Values(Fault{"RefusedConnection", "http://127.0.0.1:1/two.mp4", "1"},
                    Fault{"UnknownHost", "http://host.invalid/two.mp4", "1"}, Fault{"NoHost", "http:///two.mp4", "1"},
                    Fault{"SilentServer", "fault/hang/two.mp4", "1"}, Fault{"ClosedWithoutAnswer", "fault/drop/two.mp4", "1"},
                    Fault{"NotFound", "fault/status/404/two.mp4", "5"}, Fault{"Gone", "fault/status/410/two.mp4", "5"},
                    Fault{"Forbidden", "fault/status/403/two.mp4", "5"}, Fault{"ServerError", "fault/status/500/two.mp4", "1"},
                    Fault{"ClosedInTheBody", "fault/close/short/two.mp4", "1"},
                    Fault{"StalledInTheBody", "fault/stall/short/two.mp4", "1"}, Fault{"RandomBytes", "broken/random.mp4", "0"},
                    Fault{"PageInsteadOfMp4", "broken/page.mp4", "0"}, Fault{"PageInsteadOfMpd", "broken/page.mpd", "0"},
                    Fault{"NoMoov", "broken/no-moov.mp4", "4"}, Fault{"Truncated", "broken/truncated.mp4", "4"},
                    Fault{"MalformedMpd", "broken/malformed.mpd", "4"}, Fault{"MalformedM3u8", "broken/malformed.m3u8", "4"},
                    Fault{"TextAsPlaylist", "broken/text.m3u8", "0"}, Fault{"ManifestNotFound", "short/dash/none.mpd", "5"},
                    Fault{"NoSegments", "broken/no-segments.mpd", "5"}, Fault{"DashSegmentMissing", "broken/dash-gap/av.mpd", "6"},
                    Fault{"HlsSegmentMissing", "broken/hls-gap/master.m3u8", "6"},
                    Fault{"LiveThatDriesUp", "live/dry/hls/live.m3u8", "1"}, Fault{"UnknownCodec", "broken/unknown-codec.mp4", "0"},
                    Fault{"UnknownScheme", "nothing://here", "0"}, Fault{"EmptyFile", "broken/empty.mp4", "0"},
                    Fault{"FileNotFound", "file:///none/two.mp4", "5"}),
    [](const auto& info) { return info.param.name; });

}  // namespace
