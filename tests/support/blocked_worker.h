// SPDX-License-Identifier: Apache-2.0
// Holds a player's worker inside a library call, so that what is queued meanwhile stays in the queue until the test lets go.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "tests/support/plugin_fixture.h"

namespace fixture {

/// Thread: the test's. The worker waits inside the library's "STOPBROADCAST".
class BlockedWorker {
 public:
  /// @p queueStopBroadcast queues that command on the worker to be held.
  BlockedWorker(fakes::RecordingMediaLibrary& library, const std::function<void()>& queueStopBroadcast) {
    library.addHook(fakes::isCommand("STOPBROADCAST"), [state = m_state](const fakes::Call&) {
      state->entered.open();
      state->leave.wait();
    });
    queueStopBroadcast();
    EXPECT_TRUE(m_state->entered.wait()) << "the worker did not take the command";
  }
  BlockedWorker(const BlockedWorker&) = delete;
  BlockedWorker& operator=(const BlockedWorker&) = delete;
  ~BlockedWorker() { release(); }

  /// Lets the worker go on, now and at every later "STOPBROADCAST".
  void release() { m_state->leave.open(); }

 private:
  struct State {
    Gate entered;
    Gate leave;
  };
  const std::shared_ptr<State> m_state = std::make_shared<State>();
};

}  // namespace fixture
