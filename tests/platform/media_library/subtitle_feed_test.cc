// SPDX-License-Identifier: Apache-2.0
// Which documents reach the page, without any media.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "platform/mediamgmnt/subtitle_feed.h"

namespace mediamgmnt {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Said = std::vector<std::string>;

constexpr std::int64_t kSecond = 1'000'000'000;

class SubtitleFeedTest : public testing::Test {
 protected:
  SubtitleFeedTest() {
    s_said.clear();
    m_dispatcher.setTextTrackCallback([](unsigned long, _TextTrackEventType type, void* data) {
      const auto* const texts = static_cast<const _TextTrackText*>(data);
      const auto text = [&](int which) { return std::string(texts[which].text, static_cast<std::size_t>(texts[which].length)); };
      std::lock_guard lock(s_mutex);
      switch (type) {
        case TTML_SUBTITLE: s_said.push_back(text(0)); break;
        case TTML_SUBTITLE_FONT: s_said.push_back("font " + text(0) + " " + text(1)); break;
        case TTML_SUBTITLE_SHOW: s_said.emplace_back("show"); break;
        case TTML_SUBTITLE_HIDE: s_said.emplace_back("hide"); break;
        case TTML_SUBTITLE_CHANGE: s_said.emplace_back("change"); break;
        default: s_said.emplace_back("unexpected"); break;
      }
    });
    s_stopped = false;
    m_dispatcher.setMessageCallback([](unsigned long, const char* word, void*) {
      std::lock_guard lock(s_mutex);
      s_idle = s_idle || word == std::string_view(status::kPlaying);
      s_stopped = s_stopped || word == std::string_view(status::kStopped);
      s_changed.notify_all();
    });
    m_thread = std::thread([this] { m_dispatcher.run(); });
  }
  ~SubtitleFeedTest() override {
    m_dispatcher.close();
    m_thread.join();
  }

  /// All that was said since the last call. A word goes through the same queue, behind it.
  Said said() {
    std::unique_lock lock(s_mutex);
    s_idle = false;
    m_dispatcher.enqueue(status::kPlaying);
    EXPECT_TRUE(s_changed.wait_for(lock, std::chrono::seconds(10), [] { return s_idle; }));
    return std::exchange(s_said, {});
  }

  void due(const void* stream, const std::string& text, int second) {
    m_feed.due(stream, {std::make_shared<const std::string>(text), second * kSecond, (second + 1) * kSecond});
  }
  void present(const void* stream, const std::string& language) {
    Component track;
    track.kind = ComponentKind::Subtitle;
    track.stream = stream;
    track.language = language;
    track.documentBase = "http://media.example/dash/";
    track.fonts = {{"Offered", "http://media.example/o.woff"}};
    m_feed.present(track);
  }
  void show() { m_feed.show(true, TimedDocument::kUnknown); }

  static inline std::mutex s_mutex;
  static inline std::condition_variable s_changed;
  static inline Said s_said;
  static inline bool s_idle = false;
  static inline bool s_stopped = false;
  const int m_english = 0;
  const int m_german = 0;
  PlaybackFacts m_facts;
  Dispatcher m_dispatcher{7};
  Voice m_voice{m_dispatcher, m_facts};
  SubtitleFeed m_feed{m_voice};
  std::thread m_thread;
};

TEST_F(SubtitleFeedTest, TellsNothingWhileSubtitlesAreHidden) {
  present(&m_english, "eng");
  due(&m_english, "one", 1);
  EXPECT_THAT(said(), IsEmpty());
}

TEST_F(SubtitleFeedTest, TellsTheDueDocumentWhenTheyAreShown) {
  present(&m_english, "eng");
  due(&m_english, "one", 1);
  due(&m_english, "two", 2);
  m_feed.show(true, 2 * kSecond);
  EXPECT_THAT(said(), ElementsAre("show", "two"));
  m_feed.show(true, 2 * kSecond);
  EXPECT_THAT(said(), IsEmpty()) << "shown already";
}

TEST_F(SubtitleFeedTest, TellsNoDocumentThatIsOver) {
  present(&m_english, "eng");
  due(&m_english, "one", 1);
  m_feed.show(true, 2 * kSecond);
  EXPECT_THAT(said(), ElementsAre("show"));
}

TEST_F(SubtitleFeedTest, HidesAndShowsAgain) {
  present(&m_english, "eng");
  show();
  due(&m_english, "one", 1);
  m_feed.show(false, TimedDocument::kUnknown);
  due(&m_english, "two", 2);
  show();
  EXPECT_THAT(said(), ElementsAre("show", "one", "hide", "show", "two"));
}

TEST_F(SubtitleFeedTest, KeepsADocumentUntilItsTrackIsPresented) {
  show();
  due(&m_english, "one", 1);
  EXPECT_THAT(said(), ElementsAre("show"));
  present(&m_english, "eng");
  EXPECT_THAT(said(), ElementsAre("one"));
}

TEST_F(SubtitleFeedTest, SaysAChangeBeforeTheOtherTracksDocuments) {
  present(&m_english, "eng");
  show();
  due(&m_english, "one", 1);
  due(&m_german, "eins", 1);
  due(&m_english, "two", 2);
  present(&m_german, "deu");
  EXPECT_THAT(said(), ElementsAre("show", "one", "two", "change", "eins"));
}

/// Of the next period.
TEST_F(SubtitleFeedTest, SaysNoChangeForTheSameTrackInAnotherStream) {
  present(&m_english, "eng");
  show();
  present(&m_german, "eng");
  due(&m_german, "one", 1);
  EXPECT_THAT(said(), ElementsAre("show", "one"));
}

TEST_F(SubtitleFeedTest, SaysNoChangeWhileSubtitlesAreHidden) {
  present(&m_english, "eng");
  present(&m_german, "deu");
  EXPECT_THAT(said(), IsEmpty());
}

TEST_F(SubtitleFeedTest, TellsADocumentOnceThatIsFetchedAgain) {
  present(&m_english, "eng");
  show();
  due(&m_english, "one", 1);
  m_feed.flushed();
  due(&m_english, "one", 1);
  due(&m_english, "one", 2);
  EXPECT_THAT(said(), ElementsAre("show", "one", "one")) << "the same text at another time is another document";
}

TEST_F(SubtitleFeedTest, BeginsAnewAfterASeekOfThePage) {
  present(&m_english, "eng");
  show();
  due(&m_english, "one", 1);
  m_feed.expectSeek();
  due(&m_english, "two", 2);
  m_feed.flushed();
  due(&m_english, "one", 1);
  m_feed.seekDone();
  EXPECT_THAT(said(), ElementsAre("show", "one", "one")) << "and nothing of the place that was left";
}

TEST_F(SubtitleFeedTest, GoesOnAfterASeekThatWasRefused) {
  present(&m_english, "eng");
  show();
  m_feed.expectSeek();
  m_feed.seekDone();
  due(&m_english, "one", 1);
  EXPECT_THAT(said(), ElementsAre("show", "one"));
}

TEST_F(SubtitleFeedTest, TellsNoEmptyDocument) {
  present(&m_english, "eng");
  show();
  due(&m_english, "", 1);
  EXPECT_THAT(said(), ElementsAre("show"));
}

TEST_F(SubtitleFeedTest, HidesAtTheEnd) {
  present(&m_english, "eng");
  show();
  due(&m_english, "one", 1);
  m_feed.end();
  m_feed.end();
  EXPECT_THAT(said(), ElementsAre("show", "one", "hide"));
}

TEST_F(SubtitleFeedTest, HidesAlsoAfterALateAnswerToAStop) {
  present(&m_english, "eng");
  show();
  const Voice::Ticket ticket = m_voice.stopAsked();
  {
    std::unique_lock lock(s_mutex);
    ASSERT_TRUE(s_changed.wait_for(lock, std::chrono::seconds(10), [] { return s_stopped; }));
  }
  due(&m_english, "one", 1);
  m_feed.end();
  m_voice.stopDone(ticket);
  EXPECT_THAT(said(), ElementsAre("show", "hide"));
}

TEST_F(SubtitleFeedTest, GoesOnWhenTheSourceIsOpenedAnew) {
  present(&m_english, "eng");
  show();
  due(&m_english, "one", 1);
  m_feed.interrupt();
  due(&m_german, "one", 1);
  present(&m_german, "eng");
  EXPECT_THAT(said(), ElementsAre("show", "one"));
}

TEST_F(SubtitleFeedTest, TellsFontsBeforeTheDocumentThatNamesThem) {
  present(&m_english, "eng");
  show();
  const std::string document =
      R"(<tt><head><resources><font family="F" src="f.ttf"/></resources></head><p fontFamily="Offered, F"/></tt>)";
  due(&m_english, document, 1);
  due(&m_english, document, 2);
  EXPECT_THAT(said(), ElementsAre("show", "font Offered http://media.example/o.woff", "font F http://media.example/dash/f.ttf",
                                  document, document));
}

/// As a live stream brings them for days.
TEST_F(SubtitleFeedTest, DoesNotGrow) {
  constexpr int kDocuments = 20000;
  std::vector<std::weak_ptr<const std::string>> texts;
  present(&m_english, "eng");
  show();
  for (int i = 0; i < kDocuments; ++i) {
    const std::string font = "<font family=\"f" + std::to_string(i) + "\" src=\"f.ttf\"/>";
    const auto text = std::make_shared<const std::string>(i % 100 == 0 ? "<tt>" + font + "</tt>" : "document " + std::to_string(i));
    texts.push_back(text);
    m_feed.due(i % 2 == 0 ? &m_english : &m_german, {text, i * kSecond, (i + 1) * kSecond});
    if (i % 1000 == 0) {
      EXPECT_FALSE(said().empty());
    }
  }
  EXPECT_FALSE(said().empty());
  const auto alive = std::count_if(texts.begin(), texts.end(), [](const auto& each) { return !each.expired(); });
  EXPECT_LE(alive, 20) << "the one that is due, and a few of a track that nobody presents";
}

}  // namespace
}  // namespace mediamgmnt
