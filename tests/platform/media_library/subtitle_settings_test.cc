// SPDX-License-Identifier: Apache-2.0
// The viewer's subtitle settings on their way to the players.
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <string>
#include <vector>

#include "host/mediamgmnt.h"
#include "platform/mediamgmnt/media_subtitles.h"

namespace {

struct Told {
  unsigned long handle;
  int value;
  std::string text;

  bool operator==(const Told&) const = default;
};

std::mutex mutex;
std::condition_variable changed;
std::vector<Told> log;  // guarded by mutex

void onSettings(unsigned long handle, _SubtitleSettingsParams params) {
  std::lock_guard lock(mutex);
  log.push_back({handle, params.value, std::string(params.text, static_cast<std::size_t>(params.textLength))});
  changed.notify_all();
}

std::vector<Told> toldUpTo(std::size_t count) {
  std::unique_lock lock(mutex);
  changed.wait_for(lock, std::chrono::seconds(20), [count] { return log.size() >= count; });
  return log;
}

_SubtitleSettingsParams settings(int value, const std::string& text) {
  _SubtitleSettingsParams params{};
  params.value = value;
  std::memcpy(params.text, text.data(), text.size());
  params.textLength = static_cast<std::int32_t>(text.size());
  return params;
}

TEST(SubtitleSettingsTest, ReachThePlayersThatThereAreAndThoseToCome) {
  const unsigned long first = openPlayer(1);
  const unsigned long deaf = openPlayer(1);
  registerSubtitleSettingsChangedCallback(first, onSettings);
  {
    std::lock_guard lock(mutex);
    EXPECT_TRUE(log.empty()) << "none were set yet";
  }
  const _SubtitleSettingsParams large = settings(1, "size=large");
  EXPECT_NE(mediaChangeSubtitleSettings(&large), 0);
  EXPECT_EQ(toldUpTo(1), (std::vector<Told>{{first, 1, "size=large"}}));

  const unsigned long second = openPlayer(1);
  registerSubtitleSettingsChangedCallback(second, onSettings);
  EXPECT_EQ(toldUpTo(2).back(), (Told{second, 1, "size=large"}));

  setPlayerProperty(second, "INPUT", "http://127.0.0.1:1/none.mp4");
  EXPECT_EQ(toldUpTo(3).back(), (Told{second, 1, "size=large"}))
      << "whoever began to listen meanwhile hears of them with the source";

  closePlayer(first);
  const _SubtitleSettingsParams whole = settings(-2, std::string(64, 'x'));
  EXPECT_NE(mediaChangeSubtitleSettings(&whole), 0);
  EXPECT_EQ(toldUpTo(4).back(), (Told{second, -2, std::string(64, 'x')}));
  closePlayer(second);
  closePlayer(deaf);
  EXPECT_NE(mediaChangeSubtitleSettings(&large), 0) << "no player is no failure";
  EXPECT_EQ(mediaChangeSubtitleSettings(nullptr), 0);
  EXPECT_EQ(toldUpTo(4).size(), 4U);
}

}  // namespace
