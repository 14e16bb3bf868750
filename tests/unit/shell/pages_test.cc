// SPDX-License-Identifier: Apache-2.0
// The page and its element: each page of pages/ checks itself.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/unit/shell/avc_run.h"

namespace {

class AvcRunPage : public testing::TestWithParam<const char*> {};

TEST_P(AvcRunPage, PassesItsChecks) {
  const Outcome outcome = runScripted({"pages/check.js", std::string("pages/") + GetParam() + ".js", "--", "one", "2"});
  EXPECT_EQ(outcome.status, 0) << outcome.out << outcome.err;
  EXPECT_THAT(outcome.out, testing::ContainsRegex("^passed [1-9][0-9]* checks\n$"));
}

INSTANTIATE_TEST_SUITE_P(Pages, AvcRunPage,
                         testing::Values("components", "element", "environment", "events", "geometry", "handlers", "queue",
                                         "release", "source", "subtitles", "collect"),
                         [](const auto& info) { return std::string(info.param); });

TEST(AvcRunMarkup, AHandlerThatIsNoScriptIsToldAndLeavesTheObjectItsSource) {
  const Outcome outcome = runText(R"(
    document.body.innerHTML = '<object id="o" type="video/mp4" onPlayStateChange="return (" data="http://media.example/clip"></object>';
    const e = document.body.querySelector('#o');
    console.log(e.data, e.onPlayStateChange);
    e.setAttribute('onPlayStateChange', 'no script');
    console.log(typeof e.play);
    exit();
  )");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "http://media.example/clip null\nfunction\n");
  EXPECT_THAT(outcome.err, testing::ContainsRegex("uncaught SyntaxError.*\navc-run: uncaught SyntaxError"));
}

// No exit() here: the run must notice that the film is over.
TEST(AvcRunEnd, ComesByItselfAfterTheLastObjectFinished) {
  const Outcome outcome = runText(R"(
    const e = document.createElement('object');
    e.type = 'video/mp4';
    e.onPlayStateChange = (state) => { if (state === 5) console.log('finished'); };
    e.data = 'http://media.example/clip?ms=100';
    e.play(1);
  )");
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.out, "finished\n");
}

}  // namespace
