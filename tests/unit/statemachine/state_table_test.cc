// SPDX-License-Identifier: Apache-2.0
// The whole table: seven states times every event. A pair without a row does nothing at all.
#include <functional>
#include <map>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/playing_plugin.h"

namespace {

using fixture::inputActions;
using fixture::kFirstUrl;
using fixture::kNextUrl;
using fixture::lengthOf;
using fixture::Strings;
using fixture::operator+;

enum Result { kNoResult, kFalse, kTrue };

Result asResult(bool value) { return value ? kTrue : kFalse; }

struct Event {
  const char* name;
  std::function<Result(StateMachine&)> raise;
};

Result queue(StateMachine& machine, const char* url, unsigned int length) { return asResult(machine.onQueue(url, length)); }

const std::vector<Event>& allEvents() {
  using M = StateMachine;
  static const std::vector<Event> events{
      {"AlreadyPlaying", [](M& m) { return m.onAlreadyPlaying(), kNoResult; }},
      {"Play", [](M& m) { return m.onPlay(1.0), kNoResult; }},
      {"PlayZero", [](M& m) { return m.onPlay(0.0), kNoResult; }},
      {"Stop", [](M& m) { return asResult(m.onStop()); }},
      {"Seek", [](M& m) { return asResult(m.onSeek(30000.0)); }},
      {"Queue", [](M& m) { return queue(m, kNextUrl, lengthOf(kNextUrl)); }},
      {"QueueNothing", [](M& m) { return queue(m, nullptr, 0); }},
      {"QueueNothingOfSomeLength", [](M& m) { return queue(m, nullptr, 4); }},
      {"QueueEmpty", [](M& m) { return queue(m, "", 0); }},
      {"QueueTextNull", [](M& m) { return queue(m, "null", 4); }},
      {"BufferUnderrun", [](M& m) { return m.onBufferUnderrun(), kNoResult; }},
      {"BufferReady", [](M& m) { return m.onBufferReady(), kNoResult; }},
      {"Error", [](M& m) { return m.onError(), kNoResult; }},
      {"RewindToStart", [](M& m) { return m.onRewindToStart(), kNoResult; }},
      {"ReachedEnd", [](M& m) { return m.onReachedEnd(), kNoResult; }},
      {"TransitToConnecting", [](M& m) { return m.TransitToConnecting(), kNoResult; }},
      {"ConnectionLost", [](M& m) { return m.onConnectionLost(), kNoResult; }},
      {"ConnectionEstablished", [](M& m) { return m.onConnectionEstablished(), kNoResult; }},
      {"DataChanged", [](M& m) { return asResult(m.onDataChanged(kNextUrl, lengthOf(kNextUrl))); }},
      {"TypeChanged", [](M& m) { return asResult(m.onTypeChanged()); }},
      {"SetSource", [](M& m) { return asResult(m.onSetSource(kNextUrl, lengthOf(kNextUrl))); }},
      {"ToPausedState", [](M& m) { return m.toPausedState(), kNoResult; }},
      {"GetCurrentPosition",
       [](M& m) {
         double position = 0.0;
         return asResult(m.getCurrentPosition(&position));
       }},
  };
  return events;
}

/// What an event does in a state.
struct Outcome {
  int to;
  Result result = kNoResult;
  Strings actions = {};  ///< commands and writes that reach the library
  Strings entries = {};  ///< property changes and script events, in order
  int error = -1;
  std::vector<int> defaults = {};  ///< default components selected
  bool queued = false;             ///< media is queued afterwards
};

const Strings kPlayAndResize{"PLAY 1.00", "SET_WINDOW_PROPERTIES 0|0|1280|720|"};
const std::string kSpeedZero = "speed=double:0";
const std::string kSpeedOfPlay = "speed=double:2";  // the last play() of the set-up
const std::string kNextData = std::string("data=string:") + kNextUrl;

Strings enters(int id) {
  const std::string number = std::to_string(id);
  return {"playState=int:" + number, "onPlayStateChange(int:" + number + ")"};
}

/// Leaving the error state changes the property only.
Strings silently(int id) { return {"playState=int:" + std::to_string(id)}; }

using Key = std::pair<int, std::string>;

void addPlayRows(std::map<Key, Outcome>& rows) {
  for (const int idle : {0, 3}) {
    rows[{idle, "Play"}] = {.to = 4, .actions = kPlayAndResize, .entries = enters(4)};
    rows[{idle, "PlayZero"}] = {.to = idle, .actions = {"PAUSE"}, .entries = {kSpeedZero}};
  }
  rows[{1, "Play"}] = {.to = 1, .actions = {"PLAY 1.00"}};
  rows[{1, "PlayZero"}] = {.to = 1, .actions = {"PAUSE"}, .entries = {"playPosition=double:1500"}};
  rows[{4, "Play"}] = {.to = 4, .actions = {"PLAY 1.00"}};
  rows[{4, "PlayZero"}] = {.to = 4, .actions = {"PAUSE"}};
  rows[{5, "Play"}] = {.to = 4, .actions = inputActions(kFirstUrl) + kPlayAndResize, .entries = enters(3) + enters(4)};
  rows[{5, "PlayZero"}] = {.to = 6, .entries = enters(3) + enters(6) + Strings{kSpeedZero}, .error = 2, .defaults = {0, 1}};
  rows[{6, "Play"}] = {.to = 4, .actions = inputActions(kFirstUrl) + kPlayAndResize, .entries = silently(3) + enters(4)};
  rows[{6, "PlayZero"}] = {.to = 3, .entries = silently(3), .error = 2};  // and stays there: deliberate
}

void addStopAndSeekRows(std::map<Key, Outcome>& rows) {
  rows[{0, "Stop"}] = {.to = 0, .result = kTrue};
  for (const int id : {1, 2, 4, 5}) {
    rows[{id, "Stop"}] = {.to = id, .result = kTrue, .actions = {"STOP"}, .entries = {kSpeedZero}};
  }
  rows[{3, "Stop"}] = {.to = 3, .result = kFalse};
  rows[{6, "Stop"}] = {.to = 0, .result = kTrue, .actions = {"STOP"}, .entries = silently(0)};
  for (const int id : {0, 1, 2, 3, 4}) {
    rows[{id, "Seek"}] = {.to = id, .result = kTrue, .actions = {"SEEK 30000.00"}};
  }
  for (const int id : {5, 6}) {
    rows[{id, "Seek"}] = {.to = id, .result = kFalse};
  }
}

void addQueueRows(std::map<Key, Outcome>& rows) {
  rows[{0, "Queue"}] = {
      .to = 4, .result = kTrue, .actions = inputActions(kNextUrl) + kPlayAndResize, .entries = Strings{kNextData} + enters(4)};
  rows[{0, "QueueTextNull"}] = {// plays on: whether the text could become the source does not count in stopped
                                .to = 4,
                                .result = kTrue,
                                .actions = kPlayAndResize,
                                .entries = Strings{"data=string:null"} + enters(4)};
  rows[{5, "Queue"}] = {.to = 4,
                        .result = kTrue,
                        .actions = inputActions(kNextUrl) + inputActions(kNextUrl) + kPlayAndResize,
                        .entries = Strings{kNextData} + enters(3) + enters(4)};
  rows[{5, "QueueTextNull"}] = {.to = 5, .result = kFalse, .entries = {"data=string:null"}};
  for (const int id : {1, 2, 3, 4}) {
    rows[{id, "Queue"}] = {.to = id, .result = kTrue, .queued = true};
    rows[{id, "QueueTextNull"}] = {.to = id, .result = kTrue};
  }
  rows[{6, "Queue"}] = {.to = 6, .result = kFalse};
  rows[{6, "QueueTextNull"}] = {.to = 6, .result = kFalse};
  for (const char* nothing : {"QueueNothing", "QueueNothingOfSomeLength", "QueueEmpty"}) {
    for (int id = 0; id <= 6; ++id) {
      const bool clears = id >= 1 && id <= 4;
      rows[{id, nothing}] = {.to = id, .result = clears ? kTrue : kFalse};
    }
  }
}

void addSourceRows(std::map<Key, Outcome>& rows) {
  const Strings input = inputActions(kNextUrl);
  for (const char* change : {"DataChanged", "SetSource"}) {
    rows[{0, change}] = {.to = 0, .result = kTrue, .actions = input, .entries = {kNextData}};
    for (const int id : {1, 2, 3, 4}) {
      rows[{id, change}] = {
          .to = 0, .result = kTrue, .actions = input + Strings{"STOP"}, .entries = enters(0) + Strings{kNextData, kSpeedZero}};
    }
    rows[{5, change}] = {.to = 0, .result = kTrue, .actions = input, .entries = enters(0) + Strings{kNextData}};
    rows[{6, change}] = {
        .to = 0, .result = kTrue, .actions = input + Strings{"STOP"}, .entries = silently(0) + Strings{kNextData, kSpeedZero}};
  }
  for (int id = 0; id <= 6; ++id) {
    rows[{id, "TypeChanged"}] = {.to = id, .result = kTrue, .actions = {"STOP"}, .entries = {kSpeedZero}};
    rows[{id, "GetCurrentPosition"}] = {.to = id, .result = kTrue};
  }
}

void addLibraryRows(std::map<Key, Outcome>& rows) {
  rows[{2, "AlreadyPlaying"}] = {.to = 1, .entries = enters(1)};
  rows[{4, "AlreadyPlaying"}] = {.to = 1, .entries = Strings{kSpeedOfPlay} + enters(1)};
  rows[{1, "BufferUnderrun"}] = {.to = 4, .entries = Strings{kSpeedZero} + enters(4)};
  rows[{3, "BufferReady"}] = {.to = 1, .entries = enters(4) + Strings{kSpeedOfPlay} + enters(1)};
  rows[{4, "BufferReady"}] = {.to = 1, .entries = Strings{kSpeedOfPlay} + enters(1)};
  for (const int id : {0, 1, 3, 4}) {
    rows[{id, "Error"}] = {.to = 6, .entries = enters(6) + Strings{kSpeedZero}, .defaults = {0, 1}};
    rows[{id, "ToPausedState"}] = {.to = 2, .entries = enters(2)};
  }
  rows[{1, "RewindToStart"}] = {.to = 2, .entries = enters(2)};
  rows[{1, "ReachedEnd"}] = {.to = 5, .entries = enters(5)};
  rows[{0, "TransitToConnecting"}] = {.to = 3, .entries = enters(3)};
  rows[{4, "ConnectionLost"}] = {.to = 3, .entries = enters(3)};
  rows[{0, "ConnectionEstablished"}] = {.to = 4, .entries = enters(4)};
  rows[{3, "ConnectionEstablished"}] = {.to = 4, .entries = enters(4)};
}

const std::map<Key, Outcome>& table() {
  static const std::map<Key, Outcome> rows = [] {
    std::map<Key, Outcome> all;
    addPlayRows(all);
    addStopAndSeekRows(all);
    addQueueRows(all);
    addSourceRows(all);
    addLibraryRows(all);
    return all;
  }();
  return rows;
}

struct Cell {
  int from;
  const Event* event;
};

constexpr const char* kStateNames[] = {"Stopped", "Playing", "Paused", "Connecting", "Buffering", "Finished", "Error"};

std::string nameOf(const Cell& cell) { return std::string(kStateNames[cell.from]) + "_" + cell.event->name; }

std::ostream& operator<<(std::ostream& out, const Cell& cell) { return out << nameOf(cell); }

std::vector<Cell> allCells() {
  std::vector<Cell> cells;
  for (int from = 0; from <= 6; ++from) {
    for (const Event& event : allEvents()) {
      cells.push_back({from, &event});
    }
  }
  return cells;
}

class StateTableTest : public fixture::PlayingPluginTest, public ::testing::WithParamInterface<Cell> {
 protected:
  /// A source is set, the library plays (so that a stop is sent), and the last play() had the speed 2.
  void prepare() {
    ASSERT_TRUE(av->setDataProperty(kFirstUrl, lengthOf(kFirstUrl)));
    ASSERT_TRUE(av->JS_Play(2.0));  // waits for the library's readiness, which never comes here
    ASSERT_TRUE(av->startPlayer(1.0));
    if (GetParam().from == 0) {
      machine().transitTo(1);  // stopped is where it starts: go away first
    }
    enter(GetParam().from);
  }

  Outcome expected() const {
    const auto row = table().find({GetParam().from, GetParam().event->name});
    return row != table().end() ? row->second : Outcome{.to = GetParam().from};
  }

  /// A new player empties the text behind "data"; whether a host is told of that is its own business.
  Strings visibleEntries() const {
    Strings lines;
    for (const std::string& line : hostEntries()) {
      if (line != "data=string:") {
        lines.push_back(line);
      }
    }
    return lines;
  }
};

TEST_P(StateTableTest, EveryStateAndEvent) {
  prepare();

  const Result result = GetParam().event->raise(machine());

  const Outcome outcome = expected();
  EXPECT_EQ(outcome.to, state());
  EXPECT_EQ(outcome.result, result);
  EXPECT_EQ(outcome.actions, finishedActions());
  EXPECT_EQ(outcome.entries, visibleEntries());
  EXPECT_EQ(outcome.error, errorCode());
  EXPECT_EQ(outcome.defaults, defaultSelections());
  EXPECT_EQ(outcome.queued, av->alreadyHasQueuedMedia());
}

INSTANTIATE_TEST_SUITE_P(Table, StateTableTest, ::testing::ValuesIn(allCells()),
                         [](const auto& info) { return nameOf(info.param); });

TEST(StateTableRowsTest, EachNamesAnEventThatExists) {
  for (const auto& [key, outcome] : table()) {
    bool known = false;
    for (const Event& event : allEvents()) {
      known = known || key.second == event.name;
    }
    EXPECT_TRUE(known) << key.second;
  }
}

}  // namespace
