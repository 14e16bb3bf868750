// SPDX-License-Identifier: Apache-2.0
// Lists of components, wishes and what becomes of them, without any pipeline.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "platform/mediamgmnt/components.h"
#include "platform/mediamgmnt/track_choice.h"

namespace {

using mediamgmnt::Component;
using mediamgmnt::ComponentKind;
using mediamgmnt::ComponentList;
using mediamgmnt::Components;
using mediamgmnt::DecodedFacts;
using mediamgmnt::Preferences;
using testing::ElementsAre;
using testing::IsEmpty;

/// Addresses that tell streams apart.
std::array<char, 16> streams;

Component track(ComponentKind kind, int stream, const std::string& language, bool described = false) {
  Component component;
  component.kind = kind;
  component.stream = &streams[static_cast<std::size_t>(stream)];
  component.streamId = "stream-" + std::to_string(stream);
  component.tag = stream;
  component.language = language;
  component.audioDescription = described;
  return component;
}

Component sound(int stream, const std::string& language, bool described = false) {
  return track(ComponentKind::Audio, stream, language, described);
}
Component text(int stream, const std::string& language) { return track(ComponentKind::Subtitle, stream, language); }

class TrackListsTest : public testing::Test {
 protected:
  void begin(const ComponentList& list) {
    m_components.beginPresentation();
    m_components.offer(list);
    settle();
  }
  /// What is chosen comes, as a pipeline would do it.
  void settle() {
    const auto choice = m_components.choice();
    for (const ComponentKind kind : mediamgmnt::kComponentKinds) {
      if (choice[kind].stream != nullptr) m_components.present(kind, choice[kind].stream, {});
      m_components.show(kind, choice[kind].shown);
    }
  }
  std::vector<std::string> languages(ComponentKind kind, bool active = false) {
    std::vector<std::string> found;
    for (std::size_t i = 0; i < m_components.length(kind, active); ++i) {
      const std::string record = m_components.record(kind, active, i).value_or("");
      for (const char* const language : {"eng", "deu", "fra", "und"}) {
        if (record.find(std::string("|") + language + "|") != std::string::npos) found.emplace_back(language);
      }
    }
    return found;
  }
  std::string activeSound() { return m_components.record(ComponentKind::Audio, true, 0).value_or("none"); }

  Preferences m_preferences;
  Components m_components{m_preferences};
};

const ComponentList kTwo = {sound(1, "eng"), sound(2, "deu"), sound(3, "eng", true)};

TEST_F(TrackListsTest, BeginsWithTheSourcesFirst) {
  begin(kTwo);

  EXPECT_THAT(languages(ComponentKind::Audio), ElementsAre("eng", "deu", "eng"));
  EXPECT_THAT(languages(ComponentKind::Audio, true), ElementsAre("eng"));
}

TEST_F(TrackListsTest, WhatIsPresentedFirstBeginsTheList) {
  m_preferences.setLanguages(ComponentKind::Audio, "ger");
  begin(kTwo);

  EXPECT_THAT(languages(ComponentKind::Audio), ElementsAre("deu", "eng", "eng"));
  EXPECT_EQ(m_components.record(ComponentKind::Audio, false, 0), m_components.record(ComponentKind::Audio, true, 0));
}

TEST_F(TrackListsTest, DescribedSoundIsNobodysDefault) {
  begin({sound(3, "eng", true), sound(1, "eng")});

  EXPECT_EQ(activeSound(), "1||0|1|0|||0|||eng|0|0|");
}

TEST_F(TrackListsTest, SelectionReplacesAndUnselectionEmpties) {
  begin(kTwo);

  EXPECT_TRUE(m_components.select(ComponentKind::Audio, 1));
  EXPECT_TRUE(m_components.isSwitchDue());
  EXPECT_THAT(languages(ComponentKind::Audio, true), ElementsAre("eng"));  // until it is there
  settle();
  EXPECT_FALSE(m_components.isSwitchDue());
  EXPECT_THAT(languages(ComponentKind::Audio, true), ElementsAre("deu"));

  EXPECT_FALSE(m_components.unselect(ComponentKind::Audio, 0));
  EXPECT_TRUE(m_components.unselect(ComponentKind::Audio, 1));
  settle();
  EXPECT_THAT(languages(ComponentKind::Audio, true), IsEmpty());
}

TEST_F(TrackListsTest, RefusesWhatIsNotInTheList) {
  begin(kTwo);

  EXPECT_FALSE(m_components.select(ComponentKind::Audio, 3));
  EXPECT_FALSE(m_components.select(ComponentKind::Video, 0));
  EXPECT_FALSE(m_components.select("1|other|"));
  EXPECT_FALSE(m_components.unselect(ComponentKind::Audio, 7));
}

TEST_F(TrackListsTest, TakesAPlaceOnTrustBeforeThereIsAList) {
  EXPECT_TRUE(m_components.select(ComponentKind::Audio, 1));
  begin(kTwo);

  EXPECT_THAT(languages(ComponentKind::Audio, true), ElementsAre("deu"));
  EXPECT_THAT(languages(ComponentKind::Audio), ElementsAre("deu", "eng", "eng"));
}

TEST_F(TrackListsTest, APlaceThatTurnsOutNotToBeIsTheDefault) {
  EXPECT_TRUE(m_components.select(ComponentKind::Audio, 9));
  begin(kTwo);

  EXPECT_THAT(languages(ComponentKind::Audio, true), ElementsAre("eng"));
}

TEST_F(TrackListsTest, ALaterListWaitsUntilOneOfItsStreamsIsPresented) {
  begin(kTwo);
  EXPECT_TRUE(m_components.select(ComponentKind::Audio, 1));
  settle();

  m_components.offer({sound(5, "fra"), sound(6, "deu")});

  EXPECT_THAT(languages(ComponentKind::Audio), ElementsAre("eng", "deu", "eng"));
  const auto next = m_components.choiceFrom({sound(5, "fra"), sound(6, "deu")});
  EXPECT_EQ(next[ComponentKind::Audio].streamId, "stream-6");  // the wish finds its language

  m_components.present(ComponentKind::Audio, &streams[6], DecodedFacts{});
  EXPECT_THAT(languages(ComponentKind::Audio), ElementsAre("deu", "fra"));
  EXPECT_EQ(activeSound(), "1||0|6|0|2||0|||deu|0|0|");  // its records cannot be taken for those of the first list
}

TEST_F(TrackListsTest, APeriodThatLooksTheSameKeepsItsRecords) {
  begin(kTwo);
  const std::string before = activeSound();
  ComponentList same = kTwo;
  for (std::size_t i = 0; i < same.size(); ++i) same[i].stream = &streams[i + 8];

  m_components.offer(same);
  const bool changed = m_components.present(ComponentKind::Audio, &streams[8], DecodedFacts{});

  EXPECT_FALSE(changed);
  EXPECT_EQ(activeSound(), before);
}

TEST_F(TrackListsTest, AReplayKeepsListAndWish) {
  begin(kTwo);
  EXPECT_TRUE(m_components.select(ComponentKind::Audio, 1));
  settle();
  m_components.endPresentation();
  EXPECT_THAT(languages(ComponentKind::Audio, true), IsEmpty());
  EXPECT_THAT(languages(ComponentKind::Audio), ElementsAre("eng", "deu", "eng"));

  begin(kTwo);

  EXPECT_THAT(languages(ComponentKind::Audio), ElementsAre("eng", "deu", "eng"));
  EXPECT_THAT(languages(ComponentKind::Audio, true), ElementsAre("deu"));
}

TEST_F(TrackListsTest, LanguagesThatBecomeKnownLateCount) {
  m_preferences.setLanguages(ComponentKind::Audio, "deu");
  m_components.beginPresentation();
  m_components.offer({sound(1, "und"), sound(2, "und")});
  m_components.offer({sound(1, "eng"), sound(2, "deu")});

  EXPECT_EQ(m_components.choice()[ComponentKind::Audio].streamId, "stream-2");
  EXPECT_THAT(languages(ComponentKind::Audio), ElementsAre("deu", "eng"));
}

TEST_F(TrackListsTest, TheProcessWideDefaultEndsWishesWithTheNextPresentation) {
  begin(kTwo);
  EXPECT_TRUE(m_components.select(ComponentKind::Audio, 1));
  m_preferences.selectDefaults(ComponentKind::Audio);
  settle();
  EXPECT_THAT(languages(ComponentKind::Audio, true), ElementsAre("deu"));

  m_components.endPresentation();
  begin(kTwo);

  EXPECT_THAT(languages(ComponentKind::Audio, true), ElementsAre("eng"));
}

TEST_F(TrackListsTest, AWishMadeAfterTheDefaultHolds) {
  begin(kTwo);
  m_preferences.selectDefaults(ComponentKind::Audio);
  m_components.endPresentation();
  EXPECT_TRUE(m_components.select(ComponentKind::Audio, 1));

  begin(kTwo);

  EXPECT_THAT(languages(ComponentKind::Audio, true), ElementsAre("deu"));
}

TEST_F(TrackListsTest, SubtitlesAreHiddenUntilTheyAreSelected) {
  m_preferences.setLanguages(ComponentKind::Subtitle, "deu");
  begin({text(1, "eng"), text(2, "deu")});
  EXPECT_THAT(languages(ComponentKind::Subtitle, true), IsEmpty());

  m_components.selectDefault(ComponentKind::Subtitle);
  settle();
  EXPECT_THAT(languages(ComponentKind::Subtitle, true), ElementsAre("deu"));

  m_components.unselect(ComponentKind::Subtitle);
  settle();
  EXPECT_THAT(languages(ComponentKind::Subtitle, true), IsEmpty());
}

TEST_F(TrackListsTest, SubtitlesOfAnotherLanguageAreNoReplacement) {
  begin({text(1, "eng"), text(2, "deu")});
  const std::size_t german = languages(ComponentKind::Subtitle)[0] == "deu" ? 0 : 1;
  EXPECT_TRUE(m_components.select(ComponentKind::Subtitle, german));
  settle();

  m_components.offer({text(3, "eng"), text(4, "fra")});

  EXPECT_FALSE(m_components.choiceFrom({text(3, "eng"), text(4, "fra")})[ComponentKind::Subtitle].shown);
}

TEST_F(TrackListsTest, ANewSourceForgetsEverything) {
  begin(kTwo);
  EXPECT_TRUE(m_components.select(ComponentKind::Audio, 1));

  m_components.forgetSource();

  EXPECT_THAT(languages(ComponentKind::Audio), IsEmpty());
  begin(kTwo);
  EXPECT_THAT(languages(ComponentKind::Audio, true), ElementsAre("eng"));
}

TEST_F(TrackListsTest, WhatTheDecoderKnowsCompletesTheRecord) {
  m_components.beginPresentation();
  m_components.offer({sound(1, "eng")});

  EXPECT_TRUE(m_components.present(ComponentKind::Audio, &streams[1], DecodedFacts{6, 0}));

  EXPECT_EQ(activeSound(), "1||0|1|0|||0|||eng|0|6|");
  EXPECT_EQ(m_components.record(ComponentKind::Audio, false, 0), activeSound());
}

/// A page's object is selected by the place at which its record was first read, and among the active ones that is the first.
class GrowingTrackTest : public TrackListsTest {
 protected:
  GrowingTrackTest() {
    begin({sound(1, "eng"), sound(2, "deu")});
    m_listed = told(1);
  }
  std::string told(std::size_t index) { return m_components.record(ComponentKind::Audio, false, index).value_or("none"); }
  void hearTheSecond() {
    m_components.select(ComponentKind::Audio, 1);
    m_components.present(ComponentKind::Audio, &streams[2], DecodedFacts{6, 0});
  }

  std::string m_listed;
};

TEST_F(GrowingTrackTest, IsActiveAsTheListToldIt) {
  hearTheSecond();

  EXPECT_EQ(activeSound(), m_listed);
}

TEST_F(GrowingTrackTest, IsActiveAsItHasBecomeOnceTheListHasToldThat) {
  hearTheSecond();

  const std::string grown = told(1);

  EXPECT_EQ(grown, "1||0|2|0|||0|||deu|0|6|");
  EXPECT_EQ(activeSound(), grown);
}

TEST_F(GrowingTrackTest, IsActiveAsTheListToldItWhenTheSourceIsPresentedOnceMore) {
  begin({sound(1, "eng"), sound(2, "deu")});
  hearTheSecond();

  EXPECT_EQ(activeSound(), m_listed);
}

TEST_F(GrowingTrackTest, IsNotTakenForOneOfAnotherList) {
  begin({sound(1, "fra"), sound(2, "ita")});
  hearTheSecond();

  EXPECT_EQ(activeSound(), "1||0|2|0|2||0|||ita|0|6|");
}

TEST(PreferencesTest, TakesListsInEveryForm) {
  Preferences preferences;
  preferences.setLanguages(ComponentKind::Audio, " de,en-GB  fre");

  EXPECT_THAT(preferences.languages(ComponentKind::Audio), ElementsAre("deu", "eng", "fra"));
  EXPECT_THAT(preferences.languages(ComponentKind::Subtitle), IsEmpty());
  preferences.setLanguages(ComponentKind::Audio, "");
  EXPECT_THAT(preferences.languages(ComponentKind::Audio), IsEmpty());
}

TEST(TrackChoiceTest, FollowsTheOrderOfPreference) {
  const ComponentList list = {sound(1, "eng"), sound(2, "deu", true), sound(3, "deu"), sound(4, "fra")};

  EXPECT_EQ(defaultComponent(ComponentKind::Audio, list, {"ita", "deu", "eng"}), &list[2]);
  EXPECT_EQ(defaultComponent(ComponentKind::Audio, list, {"ita"}), &list[0]);
  EXPECT_EQ(defaultComponent(ComponentKind::Video, list, {"eng"}), nullptr);
}

TEST(TrackChoiceTest, TheSourcesMainTrackComesBeforeItsFirst) {
  ComponentList list = {sound(1, "eng"), sound(2, "deu")};
  list[1].isMain = true;

  EXPECT_EQ(defaultComponent(ComponentKind::Audio, list, {}), &list[1]);
}

TEST(TrackChoiceTest, FindsTheSameOfTwoTracksOfOneLanguage) {
  const ComponentList list = {sound(1, "eng"), sound(2, "eng"), sound(3, "eng", true)};

  EXPECT_EQ(matchingComponent(list, sound(2, "eng")), &list[1]);
  EXPECT_EQ(matchingComponent(list, sound(7, "eng", true)), &list[2]);
  EXPECT_EQ(matchingComponent(list, sound(1, "deu")), nullptr);
}

}  // namespace
