// SPDX-License-Identifier: Apache-2.0
// What the tests of a player without an owner share.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "player/player.h"
#include "tests/fakes/recording_media_library.h"
#include "tests/support/blocked_worker.h"

/// A player of a freshly opened handle, without an owner: nothing but the library sees what it does.
class PlayerTestBase : public ::testing::Test {
 protected:
  PlayerTestBase() {
    library().reset();
    handle = ::openPlayer(1);
    player = std::make_unique<Player>(handle, nullptr);
    library().clearCalls();
  }
  ~PlayerTestBase() override {
    player.reset();
    library().reset();
  }

  static fakes::RecordingMediaLibrary& library() { return fakes::RecordingMediaLibrary::instance(); }

  std::unique_ptr<fixture::BlockedWorker> blockWorker() {
    auto blocked = std::make_unique<fixture::BlockedWorker>(library(), [this] { EXPECT_TRUE(player->stopBroadcast()); });
    library().clearCalls();
    return blocked;
  }

  /// Runs everything that is queued, ends the player, and says which commands and writes reached the library meanwhile.
  std::vector<std::string> actionsUntilClosed() {
    player->close();
    return library().actions();
  }

  unsigned long handle = 0;
  std::unique_ptr<Player> player;
};
