// SPDX-License-Identifier: Apache-2.0
// Component collections and components as a page uses them: the real plugin behind the page layer, over a media library that lists
// what the test tells it to.
#include <gmock/gmock.h>

#include "platform/script/js_text.h"
#include "tests/unit/script/page_fixture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class PageComponentsTest : public PageTest {
 protected:
  static void list(const std::string& kind, const std::vector<std::string>& records) {
    library().setProperty(kind + "_COMPONENT.LENGTH", std::to_string(records.size()));
    for (std::size_t i = 0; i < records.size(); ++i) {
      library().setProperty(kind + "_COMPONENT.ITEM." + std::to_string(i), records[i]);
    }
  }

  /// Two languages and a picture; the first language is presented.
  static void listAFilm() {
    list("VIDEO", {"0|avc|0|1|100|||0||1.5|"});
    list("AUDIO", {"1|aac|0|2|101|||0||main|deu|0|2|", "1|ac3|1|3|102|||0||more|eng|1|6|"});
    list("SUBTITLE", {"2|ttml|0|4|103|||0|||fra||1|"});
    list("ACTIVE_AUDIO", {"1|aac|0|2|101|||0||main|deu|0|2|"});
  }

  /// What evaluating it sends to the media library.
  std::vector<std::string> sentBy(const std::string& source) {
    library().clearCalls();
    eval(source);
    return library().actions();
  }
};

TEST_F(PageComponentsTest, ShowEveryFieldWithItsType) {
  listAFilm();
  const std::string show = "((c) => Object.keys(Object.getPrototypeOf(c)).map((k) => k + ':' + typeof c[k] + ':' + c[k]).join())";

  EXPECT_EQ(
      eval(show + "(av.getComponents(0).item(0))"),
      "type:number:0,encoding:string:avc,encrypted:boolean:false,componentTag:number:1,pid:number:100,aspectRatio:number:1.5");
  EXPECT_EQ(eval(show + "(av.getComponents(1).item(1))"),
            "type:number:1,encoding:string:ac3,encrypted:boolean:true,componentTag:number:3,pid:number:102,"
            "language:string:eng,audioDescription:boolean:true,audioChannels:number:6");
  EXPECT_EQ(eval(show + "(av.getComponents(2).item(0))"),
            "type:number:2,encoding:string:ttml,encrypted:boolean:false,componentTag:number:4,pid:number:103,"
            "language:string:fra,hearingImpaired:boolean:true");
}

TEST_F(PageComponentsTest, AreFoundByTheConstantsOfTheElement) {
  listAFilm();

  EXPECT_EQ(eval("av.getComponents(av.COMPONENT_TYPE_VIDEO).item(0).encoding"), "avc");
  EXPECT_EQ(eval("av.getComponents(av.COMPONENT_TYPE_AUDIO).item(0).encoding"), "aac");
  EXPECT_EQ(eval("av.getComponents(av.COMPONENT_TYPE_SUBTITLE).item(0).encoding"), "ttml");
  EXPECT_EQ(eval("av.getCurrentActiveComponents(av.COMPONENT_TYPE_AUDIO).item(0).language"), "deu");
}

TEST_F(PageComponentsTest, AreReadLikeAnArray) {
  listAFilm();
  eval("globalThis.audio = av.getComponents(1)");

  EXPECT_EQ(eval("audio.length + audio.item(1).language + audio[1].language + audio['0'].language"), "2engengdeu");
  EXPECT_EQ(eval("const seen = []; for (const c of audio) seen.push(c.language); seen.join()"), "deu,eng");
  EXPECT_EQ(eval("[...audio].map((c) => c.pid).join() + Array.from(audio, (c) => c.audioChannels).join()"), "101,1022,6");
  EXPECT_EQ(eval("Array.prototype.find.call(audio, (c) => c.audioDescription).language"), "eng");
  EXPECT_EQ(eval("(1 in audio) + ' ' + (2 in audio) + ' ' + Object.keys(audio).join()"), "true false 0,1");
  EXPECT_EQ(eval("let n = 0; for (let i = 0; i < audio.length; i += 1) n += audio[i].pid; n"), "203");
}

TEST_F(PageComponentsTest, AreUndefined_OutsideTheList) {
  listAFilm();
  eval("globalThis.audio = av.getComponents(1)");

  for (const char* outside : {"audio.item(2)", "audio.item(-1)", "audio[2]", "audio[-1]", "audio['01']", "audio[1e9]"}) {
    EXPECT_EQ(eval(outside), "undefined") << outside;
  }
}

/// Nothing that a page may pass throws or fails. What holds no whole number is deliberately taken for 0.
TEST_F(PageComponentsTest, TakeAnyArgument) {
  listAFilm();
  eval("globalThis.audio = av.getComponents(1)");

  EXPECT_EQ(eval("audio.item().language + audio.item(null).language + audio.item(undefined).language"), "deudeudeu");
  EXPECT_EQ(eval("audio.item(true).language + audio.item(false).language"), "engdeu");
  for (const char* strange : {"1.5", "NaN", "'1'", "{}", "audio", "Symbol()", "1e300"}) {
    EXPECT_EQ(eval("audio.item(" + std::string(strange) + ").language"), "deu") << strange;
  }
}

TEST_F(PageComponentsTest, OfAllKinds_ForNoArgumentUndefinedAndNull) {
  listAFilm();

  EXPECT_EQ(eval("av.getComponents().length"), "4");
  EXPECT_EQ(eval("const all = av.getComponents(); av.getComponents(undefined) === all && av.getComponents(null) === all"), "true");
  EXPECT_EQ(eval("av.getComponents(null, 1) === av.getComponents()"), "true");
}

TEST_F(PageComponentsTest, GiveNullForAnUnknownType_AndUndefinedForNoType) {
  EXPECT_EQ(eval("av.getComponents(3) + ' ' + av.getComponents(-1) + ' ' + av.getCurrentActiveComponents(3)"), "null null null");
  for (const char* strange : {"'0'", "0.5", "{}", "[]", "function () {}"})
    EXPECT_EQ(eval("String(av.getComponents(" + std::string(strange) + "))"), "undefined") << strange;
}

/// A collection is always the same object. Each item is a fresh one, with what the media library says then: deliberate.
TEST_F(PageComponentsTest, KeepTheIdentityOfACollection_NotOfItsItems) {
  listAFilm();

  EXPECT_EQ(eval("globalThis.audio = av.getComponents(1); audio.mark = 1; av.getComponents(1) === audio"), "true");
  EXPECT_EQ(eval("av.getCurrentActiveComponents(1) === audio"), "false");
  collect();
  EXPECT_EQ(eval("av.getComponents(1).mark"), "1");
  EXPECT_EQ(eval("const kept = audio.item(0); kept === kept && audio.item(0) !== kept && audio[0] !== audio[0]"), "true");
  EXPECT_EQ(eval("Object.getPrototypeOf(audio[0]) === Object.getPrototypeOf(audio[1])"), "true");
}

TEST_F(PageComponentsTest, ShowTheirOwnMoment) {
  listAFilm();
  eval("globalThis.audio = av.getComponents(1); globalThis.kept = audio[0]");
  list("AUDIO", {"1|opus|0|9|109|||0||main|ita|0|2|"});

  EXPECT_EQ(eval("kept.language + audio[0].language + audio.length"), "deuita1");
}

TEST_F(PageComponentsTest, GoAwayDuringALoop_WithoutAnException) {
  listAFilm();
  library().addHook(fakes::isRead("AUDIO_COMPONENT.ITEM.0"), [](const fakes::Call&) { list("AUDIO", {}); });

  EXPECT_EQ(eval("const seen = []; for (const c of av.getComponents(1)) seen.push(c.language); seen.join()"), "deu");
}

TEST_F(PageComponentsTest, GoAwayWithinOneAccess_WithoutAnException) {
  listAFilm();
  library().addHook(fakes::isRead("AUDIO_COMPONENT.LENGTH"), [](const fakes::Call&) {
    library().setProperty("AUDIO_COMPONENT.ITEM.0", "NOT_AVAILABLE");
    library().setProperty("AUDIO_COMPONENT.LENGTH", "1");
  });

  EXPECT_EQ(eval("av.getComponents(1)[0]"), "undefined");
}

// --- Selection

TEST_F(PageComponentsTest, AreSelectedByObjectAndByType) {
  listAFilm();
  eval("globalThis.english = av.getComponents(1)[1]");

  EXPECT_THAT(sentBy("av.selectComponent(english)"), ElementsAre("SELECT_AUDIO_COMPONENT 1"));
  EXPECT_THAT(sentBy("av.unselectComponent(english)"), ElementsAre("UNSELECT_AUDIO_COMPONENT 1"));
  EXPECT_THAT(sentBy("av.selectComponent(av.COMPONENT_TYPE_AUDIO)"), ElementsAre("SELECT_DEFAULT_COMPONENT 1"));
  EXPECT_THAT(sentBy("av.unselectComponent(2)"), ElementsAre("UNSELECT_COMPONENT_BY_TYPE 2"));
  EXPECT_EQ(eval("av.enableSubtitles"), "0");
}

TEST_F(PageComponentsTest, AreNotSelectedByAnythingElse) {
  listAFilm();

  for (const char* strange : {"", "null", "undefined", "'1'", "1.5", "true", "{}", "av", "av.getComponents(1)", "[]"}) {
    const std::string arguments = std::string("(") + strange + ")";
    EXPECT_THAT(sentBy("av.selectComponent" + arguments), IsEmpty()) << strange;
    EXPECT_EQ(eval("av.unselectComponent" + arguments), "undefined") << strange;
  }
}

/// What a page writes to a component's rows is its own affair: selection goes by the record.
TEST_F(PageComponentsTest, AreSelectedAsTheyCame_WhateverThePageWroteToThem) {
  listAFilm();
  eval("globalThis.english = av.getComponents(1)[1]; english.language = 'xxx'; english.pid = 7; english.type = 0");

  EXPECT_THAT(sentBy("av.selectComponent(english)"), ElementsAre("SELECT_AUDIO_COMPONENT 1"));
}

TEST_F(PageComponentsTest, OfAnotherElementAreNotKnown) {
  listAFilm();
  eval("globalThis.english = av.getComponents(1)[1]; globalThis.other = makeObject()");

  EXPECT_THAT(sentBy("other.selectComponent(english)"), IsEmpty());
}

// --- Subtitles from out of band

TEST_F(PageComponentsTest, AlsoComeFromThePageItself) {
  eval("av.numOfSubtitles = 1; av.subParamAttr = '2|ttml|0|0|0|||0|http://media.example/de.ttml||deu||0|'");

  EXPECT_EQ(eval("av.getComponents(2).length + av.getComponents(2)[0].language"), "1deu");
  EXPECT_THAT(sentBy("av.selectComponent(av.getComponents(2)[0])"), IsEmpty());
  EXPECT_EQ(eval("av.enableSubtitles"), "1");
}

// --- Kept by script when their element is gone

TEST_F(PageComponentsTest, AnswerSafely_OnceTheirElementIsGone) {
  listAFilm();
  eval(
      "globalThis.kept = [av.getComponents(), av.getComponents(1), av.getCurrentActiveComponents(1)];"
      "globalThis.english = kept[1][1]");

  eval("layer.destroyAll()");

  EXPECT_EQ(eval("kept.map((c) => c.length).join() + ' ' + kept.map((c) => [...c].length).join()"), "0,0,0 0,0,0");
  EXPECT_EQ(eval("kept.map((c) => typeof c.item(0) + typeof c[0]).join()"),
            "undefinedundefined,undefinedundefined,undefinedundefined");
  EXPECT_EQ(eval("english.language + english.audioChannels + english.audioDescription"), "eng6true");
  library().clearCalls();
  EXPECT_EQ(eval("av.selectComponent(english)"), "undefined") << "the element has become a new object";
  EXPECT_THAT(library().actions(), IsEmpty());
}

TEST_F(PageComponentsTest, OutliveTheirCollectionAndTheirElement) {
  listAFilm();
  eval("globalThis.english = av.getComponents(1)[1]; layer.destroyAll(); av = null");
  collect();

  EXPECT_EQ(eval("english.language + english.encoding + english.componentTag"), "engac33");
}

}  // namespace
