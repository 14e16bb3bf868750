// SPDX-License-Identifier: Apache-2.0
// Pages with bad manners: their handlers call back into the element that is telling them something.
#include <functional>

#include "tests/storm/storm_test.h"

namespace storm {
namespace {

constexpr char kUrl[] = "http://media.example/film.mp4";
constexpr int kEnough = 300;      // handler runs
constexpr int kEnoughStops = 20;  // a stop of a running player waits at least one tenth of a second
constexpr unsigned int kAttackers = 2;

class HostilePageTest : public StormTest {
 protected:
  using Action = std::function<void(AVControlPlugin&)>;

  /// Runs @p action in every handler until @p enough handlers have run, with every word raining down to keep the events coming.
  void runActionInEveryHandler(const Action& action, int enough) {
    int runs = 0;
    page.onEvent([&](AVControlPlugin& element, const pluginhost::Event&) {
      if (runs < enough) {
        ++runs;
        action(element);
      }
    });
    library.start({});
    AVControlPlugin& element = page.create();
    Page::setData(element, kUrl);
    element.JS_Play(1.0);
    library.attack(kAttackers, everyWord());

    EXPECT_TRUE(page.runUntil([&] { return runs >= enough; }, kPatience));
    endStorm();
  }
};

TEST_F(HostilePageTest, Ends_WhenEveryHandlerPlays) {
  runActionInEveryHandler([](AVControlPlugin& element) { element.JS_Play(1.0); }, kEnough);
}

TEST_F(HostilePageTest, Ends_WhenEveryHandlerPauses) {
  runActionInEveryHandler([](AVControlPlugin& element) { element.JS_Play(0.0); }, kEnough);
}

TEST_F(HostilePageTest, Ends_WhenEveryHandlerStops) {
  runActionInEveryHandler([](AVControlPlugin& element) { element.JS_Stop(); }, kEnoughStops);
}

TEST_F(HostilePageTest, Ends_WhenEveryHandlerSetsData) {
  runActionInEveryHandler([](AVControlPlugin& element) { Page::setData(element, kUrl); }, kEnough);
}

TEST_F(HostilePageTest, Ends_WhenEveryHandlerSeeks) {
  runActionInEveryHandler([](AVControlPlugin& element) { element.JS_Seek(2000.0); }, kEnough);
}

TEST_F(HostilePageTest, Ends_WhenEveryHandlerQueues) {
  runActionInEveryHandler([](AVControlPlugin& element) { Page::queue(element, kUrl); }, kEnough);
}

TEST_F(HostilePageTest, Ends_WhenEveryHandlerDoesEverything) {
  runActionInEveryHandler(
      [](AVControlPlugin& element) {
        element.JS_Stop();
        Page::setData(element, kUrl);
        element.JS_Play(1.0);
        element.JS_Seek(2000.0);
        Page::queue(element, kUrl);
        element.JS_Play(0.0);
      },
      kEnoughStops);
}

TEST_F(HostilePageTest, Ends_WhenEveryHandlerRemovesItsElement) {
  int removals = 0;
  bool remove = false;
  page.onEvent([&](AVControlPlugin& element, const pluginhost::Event&) {
    element.JS_Play(1.0);
    remove = true;  // a shell destroys after the handler, never inside it
  });
  library.start({});
  library.attack(kAttackers, everyWord());

  while (removals < kEnough) {
    AVControlPlugin& element = page.create();
    Page::setData(element, kUrl);
    element.JS_Play(1.0);
    ASSERT_TRUE(page.runUntil([&] { return remove; }, kPatience));
    remove = false;
    page.destroy();
    ++removals;
  }

  EXPECT_GE(library.closed(), static_cast<std::size_t>(kEnough));
  endStorm();
}

}  // namespace
}  // namespace storm
