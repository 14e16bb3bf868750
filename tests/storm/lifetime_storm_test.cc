// SPDX-License-Identifier: Apache-2.0
// Elements are made, used and destroyed by the thousand while status words arrive from threads that know nothing of it.
#include <random>
#include <string>

#include "tests/storm/storm_test.h"

namespace storm {
namespace {

constexpr int kRounds = 2000;
constexpr unsigned int kAttackers = 3;
constexpr int kStopEvery = 40;  // a stop that finds the player running waits at least one tenth of a second

class LifetimeStormTest : public StormTest {
 protected:
  std::string anyUrl() { return "http://media.example/" + std::to_string(m_random() % 100) + ".mp4"; }
  unsigned int dice(unsigned int sides) { return static_cast<unsigned int>(m_random()) % sides; }

  void useElement(AVControlPlugin& element) {
    static constexpr double kSpeeds[] = {1.0, 0.0, 2.0, -1.0};
    switch (dice(6)) {
      case 0: Page::setData(element, anyUrl()); break;
      case 1: element.JS_Seek(dice(90000)); break;
      case 2: Page::queue(element, anyUrl()); break;
      case 3: page.runQueued(); break;
      default: element.JS_Play(kSpeeds[dice(4)]);
    }
  }

  void runRound(int round) {
    AVControlPlugin& element = page.create();
    Page::setData(element, anyUrl());
    element.JS_Play(1.0);
    for (unsigned int i = dice(8); i > 0; --i) {
      useElement(element);
    }
    if (round % kStopEvery == 0) {
      element.JS_Stop();
    }
    page.destroy();
    page.runQueued();
  }

 private:
  std::minstd_rand m_random{20};
};

TEST_F(LifetimeStormTest, EndsClean_WhileEveryWordArrives) {
  library.start({});
  library.attack(kAttackers, everyWord());

  for (int round = 0; round < kRounds; ++round) {
    runRound(round);
  }

  EXPECT_GT(library.deliveries(), static_cast<std::size_t>(kRounds));
  endStorm();
}

TEST_F(LifetimeStormTest, EndsClean_WhileWordsOverlapAndComeAfterTheClose) {
  Manners manners;
  manners.serial = false;
  manners.callsAfterClose = true;
  library.start(manners);
  library.attack(kAttackers, everyWord());

  for (int round = 0; round < kRounds; ++round) {
    runRound(round);
  }

  EXPECT_GT(library.deliveries(), static_cast<std::size_t>(kRounds));
  endStorm();
}

/// Brings the element to the end of its media with another one queued: that starts the renew thread.
class RenewStormTest : public LifetimeStormTest {
 protected:
  void reachEndWithQueuedMedia(AVControlPlugin& element) {
    Page::setData(element, anyUrl());
    Page::queue(element, anyUrl());  // the stopped state plays it
    for (const char* word : {"CONNECTED", "BUFFER_READY", "PLAYING"}) {
      library.say(element.getNativePlayerHandle(), word);
    }
    Page::queue(element, anyUrl());
    library.say(element.getNativePlayerHandle(), "FINISHED");
  }

  /// What the page does while the renewal runs.
  void interfere(AVControlPlugin& element) {
    switch (dice(5)) {
      case 0: Page::setData(element, anyUrl()); break;
      case 1: element.JS_Play(1.0); break;
      case 2: element.JS_Seek(10.0); break;
      case 3: Page::queue(element, anyUrl()); break;
      default: break;
    }
  }
};

TEST_F(RenewStormTest, EndsClean_WhenDestroyedDuringTheRenewal) {
  library.start({});

  for (int round = 0; round < kRounds; ++round) {
    AVControlPlugin& element = page.create();
    reachEndWithQueuedMedia(element);
    interfere(element);
    page.destroy();
    page.runQueued();
  }

  EXPECT_GT(library.opened(), static_cast<std::size_t>(kRounds));  // some renewals got as far as a second player
  endStorm();
}

TEST_F(RenewStormTest, EndsClean_WhileEveryWordArrives) {
  library.start({});
  library.attack(kAttackers, everyWord());

  for (int round = 0; round < kRounds / 2; ++round) {
    AVControlPlugin& element = page.create();
    for (unsigned int i = dice(3) + 1; i > 0; --i) {
      reachEndWithQueuedMedia(element);
      interfere(element);
    }
    page.destroy();
    page.runQueued();
  }

  EXPECT_GT(library.opened(), static_cast<std::size_t>(kRounds / 2));
  endStorm();
}

}  // namespace
}  // namespace storm
