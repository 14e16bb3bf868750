// SPDX-License-Identifier: Apache-2.0
// Commands in any order, as a viewer gives them who presses keys faster than anything can follow: whatever was asked before, what
// is asked last comes to pass. With all that a sound device has between it and the decoder.
#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "listener.h"
#include "sample_server.h"
#include "test_player.h"

namespace {

struct Order {
  const char* command;
  std::string argument;
};

std::string printed(const std::vector<Order>& orders) {
  std::string text;
  for (const Order& each : orders) text.append(each.command).append(" ").append(each.argument).append("; ");
  return text;
}

class AnyOrder {
 public:
  explicit AnyOrder(unsigned seed) : m_random(seed) {}

  std::vector<Order> take(int count) {
    std::vector<Order> orders;
    for (int i = 0; i < count; ++i) orders.push_back(next());
    return orders;
  }
  /// Most follow at once; some when something has come of the ones before.
  std::chrono::milliseconds pause() { return std::chrono::milliseconds(below(3) == 0 ? below(120) : 0); }

 private:
  int below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(m_random); }

  Order next() {
    static const std::vector<std::string> kSpeeds = {"1.00", "1.00", "2.00", "8.00", "0.50", "-1.00", "-2.00", "-8.00"};
    switch (below(8)) {
      case 0:
      case 1: return {"PLAY", kSpeeds[static_cast<std::size_t>(below(static_cast<int>(kSpeeds.size())))]};
      case 2: return {"PAUSE", ""};
      case 3:
      case 4: return {"SEEK", std::to_string(below(17000)) + ".00"};
      case 5: return {"SELECT_AUDIO_COMPONENT", std::to_string(below(3))};
      case 6: return {below(2) == 0 ? "UNSELECT_COMPONENT_BY_TYPE" : "SELECT_DEFAULT_COMPONENT", std::to_string(below(3))};
      default: return {below(4) == 0 ? "STOP" : "SELECT_SUBTITLE_COMPONENT", "0"};
    }
  }

  std::mt19937 m_random;
};

struct Case {
  const char* name;
  const char* path;
  double latest = 9000;  ///< what is sought at last has not come further; live, its window has moved, but it began further on
};

void PrintTo(const Case& each, std::ostream* out) { *out << each.name; }

class OrdersTest : public testing::TestWithParam<Case> {
 protected:
  /// @return what was asked, when what is asked last does not come to pass.
  std::string tryWith(unsigned seed) {
    TestPlayer player;
    player.start(SampleServer::instance().url(GetParam().path));
    AnyOrder any(seed);
    const std::vector<Order> orders = any.take(12);
    for (const Order& each : orders) {
      player.command(each.command, each.argument);
      std::this_thread::sleep_for(any.pause());  // the moment is what is tried
    }
    player.command("SEEK", "3000.00");
    player.command("PLAY", "1.00");
    const bool plays = TestPlayer::eventually(
        [&] {
          const double position = player.number("POSITION");
          return player.get("PLAY_SPEED") == "1.00" && position > 3700 && position < GetParam().latest;
        },
        15);
    if (plays) return "";
    return printed(orders) + testing::PrintToString(player.words()) + " at " + player.get("POSITION").value_or("none") +
           ", speed " + player.get("PLAY_SPEED").value_or("none");
  }

  Listener m_listener;
};

TEST_P(OrdersTest, WhatIsAskedLastComesToPass) {
  for (unsigned seed = 1; seed <= 6; ++seed) EXPECT_EQ(tryWith(seed), "") << "seed " << seed;
}

INSTANTIATE_TEST_SUITE_P(Every, OrdersTest,
                         testing::Values(Case{"Mp4", "tracks.mp4"}, Case{"Ts", "tracks.ts"}, Case{"Dash", "dash/tracks.mpd"},
                                         Case{"Hls", "hls/tracks.m3u8"}, Case{"Mp3", "tone.mp3"},
                                         Case{"TextFragments", "text-frag.mp4"}, Case{"DashText", "dash/text.mpd"},
                                         Case{"DashPeriods", "short/dash/periods.mpd"},
                                         Case{"LiveDash", "live/dash/live.mpd", 11000},
                                         Case{"LiveHls", "live/hls/window.m3u8", 11000}),
                         [](const auto& each) { return std::string(each.param.name); });

}  // namespace
