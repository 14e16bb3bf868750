// SPDX-License-Identifier: Apache-2.0
// "data": which values are taken, what address is made of them, and when playback starts anew.
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "plugin/special_urls.h"
#include "tests/support/playing_plugin.h"

namespace {

using fakes::isCommand;
using fakes::isFunction;
using fakes::isWrite;
using fixture::inputActions;
using fixture::kFirstUrl;
using fixture::kNextUrl;
using fixture::lengthOf;
using fixture::Strings;
using fixture::text;
using fixture::operator+;

class DataTest : public fixture::PlayingPluginTest {
 protected:
  bool setDocument(const std::string& url) { return av->setDocumentUrl(url.c_str(), lengthOf(url)); }
  std::string data() const { return plugin.readShown("data"); }
  std::size_t opened() { return library().count(isFunction(fakes::Function::kOpenPlayer)); }
};

TEST_F(DataTest, SendsTheSourceWithItsOptionsFirst) {
  EXPECT_TRUE(plugin.write("data", text(kFirstUrl)));

  EXPECT_EQ(inputActions(kFirstUrl), finishedActions());
  EXPECT_EQ(std::string("string:") + kFirstUrl, data());
}

TEST_F(DataTest, SendsTheOptionsThatWereSet) {
  EXPECT_TRUE(plugin.write("type", text("video/mp4")));
  EXPECT_TRUE(plugin.write("userAgent", text("agent/1.0")));
  EXPECT_TRUE(plugin.write("nativeWindowSize", text("1920x1080")));
  EXPECT_EQ(Strings{}, finishedActions());  // they wait for the source

  EXPECT_TRUE(plugin.write("data", text(kFirstUrl)));

  const Strings expected{"FORCED_FORMAT=video/mp4", "USER_AGENT=agent/1.0", "NATIVE_WINDOW_SIZE=1920x1080",
                         std::string("INPUT=") + kFirstUrl};
  EXPECT_EQ(expected, finishedActions());
}

TEST_F(DataTest, RefusesNothingAndShortTexts) {
  EXPECT_FALSE(av->JS_SetDataProp(nullptr, 0));
  EXPECT_FALSE(av->JS_SetDataProp(nullptr, 20));
  for (const char* shortText : {"", "a", "http"}) {
    EXPECT_FALSE(setData(shortText)) << shortText;
  }

  EXPECT_EQ(Strings{}, finishedActions());
}

TEST_F(DataTest, TakesFiveBytes) {
  EXPECT_TRUE(setData("http:"));

  EXPECT_EQ(inputActions("http:"), finishedActions());
}

TEST_F(DataTest, TakesExactlyTheGivenBytes) {
  const std::string longer = std::string(kFirstUrl) + "-and-more";

  EXPECT_TRUE(av->JS_SetDataProp(longer.c_str(), lengthOf(kFirstUrl)));

  EXPECT_EQ(inputActions(kFirstUrl), finishedActions());
}

TEST_F(DataTest, AnythingThatBeginsWithHttpIsAbsolute) {
  EXPECT_TRUE(setDocument("http://page.example/app/index.html"));

  EXPECT_TRUE(setData("https://media.example/a.mp4"));
  EXPECT_EQ("string:https://media.example/a.mp4", data());
  EXPECT_TRUE(setData("httpfoo.mp4"));
  EXPECT_EQ("string:httpfoo.mp4", data());
}

TEST_F(DataTest, RelativeTextIsRefused_WithoutADocument) {
  EXPECT_FALSE(setData("a.mp4"));
  EXPECT_FALSE(setData("//media.example/a.mp4"));

  EXPECT_EQ(Strings{}, finishedActions());
}

TEST_F(DataTest, RelativeTextIsRefused_OnADocumentThatIsNotHttp) {
  ASSERT_TRUE(setDocument("dvb://1.2.3/app/index.html"));

  EXPECT_FALSE(setData("a.mp4"));
  EXPECT_FALSE(setData("//media.example/a.mp4"));
}

TEST_F(DataTest, RelativeTextIsAppendedToTheDocumentsFolder) {
  ASSERT_TRUE(setDocument("http://page.example/app/index.html"));

  EXPECT_TRUE(setData("a.mp4"));
  EXPECT_EQ(inputActions("http://page.example/app/a.mp4"), finishedActions());
  EXPECT_TRUE(setData("/root.mp4"));  // not resolved: appended like any other
  EXPECT_EQ("string:http://page.example/app//root.mp4", data());
  EXPECT_TRUE(setData("../b.mp4"));
  EXPECT_EQ("string:http://page.example/app/../b.mp4", data());
}

TEST_F(DataTest, SchemeRelativeTextGetsTheDocumentsScheme) {
  ASSERT_TRUE(setDocument("https://page.example/app/index.html"));

  EXPECT_TRUE(setData("//media.example/a.mp4"));

  EXPECT_EQ(inputActions("https://media.example/a.mp4"), finishedActions());
  EXPECT_EQ("string:https://media.example/a.mp4", data());
}

TEST_F(DataTest, LongestAbsoluteText) {
  const std::string longest = "http://media.example/" + std::string(2047 - 21, 'a');
  ASSERT_EQ(2047U, longest.size());

  EXPECT_TRUE(setData(longest));

  EXPECT_EQ("string:" + longest, data());
  EXPECT_EQ(inputActions(longest), finishedActions());
}

TEST_F(DataTest, LongerAbsoluteTextIsRefused_AndWhatPlaysStays) {
  ASSERT_TRUE(setData(kFirstUrl));
  const unsigned long before = av->getNativePlayerHandle();
  enter(1);

  EXPECT_FALSE(setData("http://media.example/" + std::string(2048 - 21, 'a')));

  EXPECT_EQ(std::string("string:") + kFirstUrl, data());
  EXPECT_EQ(before, av->getNativePlayerHandle());
  EXPECT_EQ(1, state());
  EXPECT_EQ(Strings{}, finishedActions());
}

TEST_F(DataTest, RelativeTextIsRefused_WhenTheWholeReaches2048) {
  const std::string folder = "http://page.example/app/";
  ASSERT_TRUE(setDocument(folder + "index.html"));

  EXPECT_FALSE(setData(std::string(2048 - folder.size(), 'a')));
  EXPECT_TRUE(setData(std::string(2047 - folder.size(), 'a')));

  EXPECT_EQ("string:" + folder + std::string(2047 - folder.size(), 'a'), data());
}

TEST_F(DataTest, SchemeRelativeTextCountsWithTheWholeFolder) {
  const std::string folder = "http://page.example/app/";
  ASSERT_TRUE(setDocument(folder + "index.html"));
  const auto schemeRelative = [&](std::size_t size) { return "//" + std::string(size - folder.size() - 2, 'a'); };

  EXPECT_FALSE(setData(schemeRelative(2048)));
  EXPECT_TRUE(setData(schemeRelative(2047)));

  EXPECT_EQ("string:http:" + schemeRelative(2047), data());
}

// Starting anew.

TEST_F(DataTest, TheFirstSourceKeepsThePlayer) {
  const unsigned long before = av->getNativePlayerHandle();

  ASSERT_TRUE(setData(kFirstUrl));

  EXPECT_EQ(before, av->getNativePlayerHandle());
  EXPECT_EQ(1U, opened());
}

TEST_F(DataTest, AnotherSourceGetsAnotherPlayer) {
  ASSERT_TRUE(setData(kFirstUrl));
  const unsigned long before = av->getNativePlayerHandle();
  forget();

  ASSERT_TRUE(setData(kNextUrl));

  EXPECT_NE(before, av->getNativePlayerHandle());
  EXPECT_EQ(inputActions(kNextUrl), finishedActions());
  EXPECT_EQ((std::vector<unsigned long>{av->getNativePlayerHandle()}), library().openHandles());
  EXPECT_EQ(Strings{std::string("data=string:") + kNextUrl}, Strings{hostEntries().back()});
}

TEST_F(DataTest, TheSameSourceAgainStartsAnew) {
  ASSERT_TRUE(setData(kFirstUrl));
  enter(1);
  const unsigned long before = av->getNativePlayerHandle();

  ASSERT_TRUE(setData(kFirstUrl));

  EXPECT_NE(before, av->getNativePlayerHandle());
  EXPECT_EQ(0, state());
  EXPECT_EQ(inputActions(kFirstUrl), finishedActions());
}

TEST_F(DataTest, TheSameSourceAgainChangesNothing_OnTheSpecialPages) {
  for (const char* page : SPECIAL_HOST_URLS) {
    ASSERT_TRUE(setDocument(std::string(page) + "index.html"));
    ASSERT_TRUE(setData(kFirstUrl));
    enter(1);
    const unsigned long before = av->getNativePlayerHandle();

    EXPECT_TRUE(setData(kFirstUrl));

    EXPECT_EQ(before, av->getNativePlayerHandle()) << page;
    EXPECT_EQ(1, state()) << page;
    EXPECT_EQ(Strings{}, finishedActions()) << page;
  }
}

TEST_F(DataTest, AnotherSourceStartsAnew_AlsoOnTheSpecialPages) {
  ASSERT_TRUE(setDocument(std::string(SPECIAL_HOST_URLS[0]) + "index.html"));
  ASSERT_TRUE(setData("http://media.example/a.mp4"));
  const unsigned long before = av->getNativePlayerHandle();

  EXPECT_TRUE(setData("http://media.example/b.mp4"));

  EXPECT_NE(before, av->getNativePlayerHandle());
}

TEST_F(DataTest, ANewPlayerTakesTheSameSourceAgain_AlsoOnTheSpecialPages) {
  ASSERT_TRUE(setDocument(std::string(SPECIAL_HOST_URLS[1]) + "index.html"));
  ASSERT_TRUE(setData(kFirstUrl));
  enter(6);
  ASSERT_EQ("bool:true", plugin.callShown("stop"));  // in error it opens another player

  EXPECT_EQ("string:", data());
  char* url = nullptr;
  ASSERT_TRUE(av->getURLForMediaSynchroniser(url));
  const std::unique_ptr<char, decltype(&std::free)> owned(url, &std::free);
  EXPECT_STREQ("", url);
  forget();

  EXPECT_TRUE(setData(kFirstUrl));

  EXPECT_EQ(inputActions(kFirstUrl), finishedActions());
}

/// A text that takes only the scheme of the document is compared by the length that it would have with the whole folder, which is
/// not the length of what is kept: it always counts as another one. Deliberate.
TEST_F(DataTest, TheSameSchemeRelativeTextStartsAnew_AlsoOnTheSpecialPages) {
  ASSERT_TRUE(setDocument(std::string(SPECIAL_HOST_URLS[1]) + "index.html"));
  ASSERT_TRUE(setData("//media.example/a.mp4"));
  const unsigned long first = av->getNativePlayerHandle();

  EXPECT_TRUE(setData("//media.example/a.mp4"));

  EXPECT_NE(first, av->getNativePlayerHandle());
  EXPECT_EQ("string:http://media.example/a.mp4", data());
  ASSERT_TRUE(setData("a.mp4"));
  const unsigned long relative = av->getNativePlayerHandle();
  EXPECT_TRUE(setData("a.mp4"));
  EXPECT_EQ(relative, av->getNativePlayerHandle());
}

TEST_F(DataTest, SpecialPagesAreComparedAsAWhole) {
  EXPECT_FALSE(is_host_url_in_special_list(nullptr));
  EXPECT_FALSE(is_host_url_in_special_list(""));
  for (const std::string page : SPECIAL_HOST_URLS) {
    EXPECT_TRUE(is_host_url_in_special_list(page.c_str()));
    EXPECT_FALSE(is_host_url_in_special_list((page + "x").c_str()));
    EXPECT_FALSE(is_host_url_in_special_list(page.substr(0, page.size() - 1).c_str()));
  }
}

TEST_F(DataTest, TheTestSuitePageHasItsPath) {
  const std::string page = SPECIAL_HOST_URLS[0];
  const std::string path = "/_TESTSUITE/TESTS/org.hbbtv_MEDIAPLAYER0170/";

  ASSERT_GT(page.size(), path.size());
  EXPECT_EQ(path, page.substr(page.size() - path.size()));
}

TEST_F(DataTest, ChangedMeansAnotherLengthOrNotASpecialPage) {
  ASSERT_TRUE(av->setDataProperty(kFirstUrl, lengthOf(kFirstUrl)));

  EXPECT_TRUE(av->dataChanged(kNextUrl, lengthOf(kNextUrl)));
  EXPECT_TRUE(av->dataChanged(kFirstUrl, lengthOf(kFirstUrl) - 1));
  EXPECT_TRUE(av->dataChanged(kFirstUrl, lengthOf(kFirstUrl)));
  ASSERT_TRUE(setDocument(std::string(SPECIAL_HOST_URLS[1]) + "index.html"));
  EXPECT_FALSE(av->dataChanged(kFirstUrl, lengthOf(kFirstUrl)));
  EXPECT_TRUE(av->dataChanged("http://media.example/secnd.mp4", lengthOf(kFirstUrl)));
}

TEST_F(DataTest, WhatPlaysIsStoppedAndClosed_BeforeTheNewSourceIsSent) {
  ASSERT_TRUE(setData(kFirstUrl));
  ASSERT_TRUE(av->startPlayer(1.0));
  enter(1);
  const unsigned long before = av->getNativePlayerHandle();

  ASSERT_TRUE(setData(kNextUrl));

  const auto stop = library().waitForCall(fakes::ofHandle(before, isCommand("STOP")));
  const auto close = library().waitForCall(fakes::ofHandle(before, isFunction(fakes::Function::kClosePlayer)));
  const auto open = library().waitForCall(isFunction(fakes::Function::kOpenPlayer));
  const auto input = library().waitForCall(isWrite("INPUT", kNextUrl));
  ASSERT_TRUE(stop && close && open && input);
  EXPECT_LT(stop->sequence, close->sequence);
  EXPECT_LT(close->sequence, open->sequence);
  EXPECT_LT(open->sequence, input->sequence);
  EXPECT_EQ(av->getNativePlayerHandle(), input->handle);
}

TEST_F(DataTest, WhatWasKnownOfTheOldSourceIsForgotten) {
  ASSERT_TRUE(setData(kFirstUrl));
  ASSERT_TRUE(say("READY_TO_PLAY"));
  ASSERT_TRUE(say("CONNECTED"));

  ASSERT_TRUE(setData(kNextUrl));
  forget();
  EXPECT_TRUE(av->JS_Play(1.0));

  EXPECT_EQ((Strings{"SET_WINDOW_PROPERTIES 0|0|1280|720|"}), finishedActions());  // deferred: this source is not ready yet
  EXPECT_EQ(3, state());                                                           // and not connected
}

TEST_F(DataTest, ADeferredPlayDiesWithTheOldSource) {
  ASSERT_TRUE(setData(kFirstUrl));
  ASSERT_TRUE(av->JS_Play(1.0));

  ASSERT_TRUE(setData(kNextUrl));
  forget();
  ASSERT_TRUE(say("READY_TO_PLAY"));

  EXPECT_EQ(Strings{}, finishedActions());
}

TEST_F(DataTest, TheWordsOfTheOldPlayerAreIgnored) {
  ASSERT_TRUE(setData(kFirstUrl));
  enter(1);
  const unsigned long before = av->getNativePlayerHandle();
  ASSERT_TRUE(setData(kNextUrl));
  forget();

  for (const char* word : {"PLAYING", "BUFFERING", "ERROR", "FINISHED", "READY_TO_PLAY"}) {
    library().invoke(before, word);
  }

  EXPECT_EQ(Strings{}, hostEntries());
  EXPECT_EQ(0, state());
}

TEST_F(DataTest, WithoutAPlayerTheValueIsKept) {
  library().failOpens(1);
  const fixture::TestPlugin poor = makePlugin();

  EXPECT_TRUE(poor.write("data", text(kFirstUrl)));

  EXPECT_EQ(std::string("string:") + kFirstUrl, poor.readShown("data"));
}

// The operations behind.

TEST_F(DataTest, SettingNothingEmptiesTheProperty) {
  ASSERT_TRUE(av->setDataProperty(kFirstUrl, lengthOf(kFirstUrl)));
  forget();

  EXPECT_TRUE(av->setDataProperty(nullptr, 0));

  EXPECT_EQ("string:", data());
  EXPECT_EQ(Strings{}, finishedActions());
  char* url = nullptr;
  EXPECT_FALSE(av->getURLForMediaSynchroniser(url));
}

TEST_F(DataTest, InputWithoutDataOnlyForcesTheFormat) {
  ASSERT_TRUE(av->setDataProperty(nullptr, 0));
  ASSERT_TRUE(plugin.write("type", text("video/mp4")));

  EXPECT_TRUE(av->setInput());

  EXPECT_EQ((Strings{"FORCED_FORMAT=video/mp4"}), finishedActions());
}

TEST_F(DataTest, InputThatIsNotHttpIsRefused) {
  EXPECT_FALSE(av->setDataProperty("file:///a.mp4", 13));

  EXPECT_EQ("string:file:///a.mp4", data());
  EXPECT_FALSE(av->setInput());
  EXPECT_EQ(Strings{}, finishedActions());
}

TEST_F(DataTest, PropertyRefuses2048Bytes) {
  const std::string tooLong = "http://" + std::string(2041, 'a');

  EXPECT_FALSE(av->setDataProperty(tooLong.c_str(), 2048));
  EXPECT_EQ("string:", data());
  EXPECT_TRUE(av->setDataProperty(tooLong.c_str(), 2047));
}

TEST_F(DataTest, TheFormatIsTheTypeAsThePageSetIt) {
  EXPECT_TRUE(av->forceFormat());  // "" while none was set
  ASSERT_TRUE(plugin.write("type", text("application/dash+xml; profiles=\"x\"")));
  EXPECT_TRUE(av->forceFormat());

  EXPECT_EQ((Strings{"FORCED_FORMAT=", "FORCED_FORMAT=application/dash+xml; profiles=\"x\""}), finishedActions());
}

// Queued media.

TEST_F(DataTest, TheNextAddressIsKeptAndCleared) {
  EXPECT_FALSE(av->alreadyHasQueuedMedia());
  av->queueUrl(kNextUrl, lengthOf(kNextUrl));
  EXPECT_TRUE(av->alreadyHasQueuedMedia());
  av->queueUrl(kNextUrl, 0);
  EXPECT_FALSE(av->alreadyHasQueuedMedia());
  av->queueUrl(kNextUrl, lengthOf(kNextUrl));
  av->queueUrl(nullptr, 3);
  EXPECT_FALSE(av->alreadyHasQueuedMedia());
}

TEST_F(DataTest, QueueRefuses2048Bytes) {
  enter(1);

  EXPECT_EQ("bool:false", plugin.callShown("queue", {text("http://" + std::string(2041, 'a'))}));
  EXPECT_FALSE(av->alreadyHasQueuedMedia());
  EXPECT_EQ("bool:true", plugin.callShown("queue", {text("http://" + std::string(2040, 'a'))}));
  EXPECT_TRUE(av->alreadyHasQueuedMedia());
}

TEST_F(DataTest, QueuedMediaBecomesTheSourceAtTheEnd_PausedAtItsStart) {
  ASSERT_TRUE(setData(kFirstUrl));
  enter(1);
  ASSERT_EQ("bool:true", plugin.callShown("queue", {text(kNextUrl)}));
  const unsigned long before = av->getNativePlayerHandle();
  forget();

  ASSERT_TRUE(say("FINISHED"));
  const auto input = library().waitForCall(isWrite("INPUT", kNextUrl));
  ASSERT_TRUE(input.has_value());
  ASSERT_TRUE(waitForEvent(plugin, "onPlayStateChange(int:0)"));

  EXPECT_NE(before, input->handle);
  EXPECT_EQ(av->getNativePlayerHandle(), input->handle);
  EXPECT_EQ((std::vector<unsigned long>{input->handle}), library().openHandles());
  EXPECT_FALSE(av->alreadyHasQueuedMedia());
  EXPECT_EQ(std::string("string:") + kNextUrl, data());
  EXPECT_EQ((Strings{"onPlayStateChange(int:5)", "onPlayStateChange(int:0)"}), events(plugin));
  forget();
  ASSERT_TRUE(say("READY_TO_PLAY"));
  EXPECT_EQ((Strings{"PAUSE"}), finishedActions());
  EXPECT_EQ(0, state());
}

TEST_F(DataTest, ThePageMustPlayTheQueuedMediaItself) {
  ASSERT_TRUE(setData(kFirstUrl));
  enter(1);
  ASSERT_EQ("bool:true", plugin.callShown("queue", {text(kNextUrl)}));
  ASSERT_TRUE(say("FINISHED"));
  ASSERT_TRUE(library().waitForCall(isWrite("INPUT", kNextUrl)));
  ASSERT_TRUE(say("READY_TO_PLAY"));
  forget();

  EXPECT_EQ("bool:true", plugin.callShown("play"));

  EXPECT_EQ((Strings{"SET_WINDOW_PROPERTIES 0|0|1280|720|", "PLAY 1.00", "SET_WINDOW_PROPERTIES 0|0|1280|720|"}),
            finishedActions());
  EXPECT_EQ(4, state());
}

/// A new "data" forgets the connection; queued media that takes over does not: play() need not wait to be told of it again.
/// Deliberate.
TEST_F(DataTest, TheConnectionStaysKnown_WhenQueuedMediaBecomesTheSource) {
  ASSERT_TRUE(setData(kFirstUrl));
  ASSERT_TRUE(say("READY_TO_PLAY"));
  ASSERT_TRUE(say("CONNECTED"));
  ASSERT_EQ("bool:true", plugin.callShown("play"));
  ASSERT_TRUE(say("BUFFER_READY"));
  ASSERT_EQ("bool:true", plugin.callShown("queue", {text(kNextUrl)}));
  ASSERT_TRUE(say("FINISHED"));
  ASSERT_TRUE(library().waitForCall(isWrite("INPUT", kNextUrl)));
  ASSERT_TRUE(say("READY_TO_PLAY"));
  forget();

  EXPECT_EQ("bool:true", plugin.callShown("play"));

  EXPECT_EQ((Strings{"onPlayStateChange(int:3)", "onPlayStateChange(int:4)"}), events(plugin));
  EXPECT_EQ((Strings{"SET_WINDOW_PROPERTIES 0|0|1280|720|", "PLAY 1.00"}), finishedActions());  // from buffering: one resize
}

}  // namespace
