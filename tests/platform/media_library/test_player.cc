// SPDX-License-Identifier: Apache-2.0
#include "test_player.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

#include "host/mediamgmnt.h"

namespace {

struct Record {
  Words words;
  std::function<void(const std::string&)> handler;
};

std::mutex mutex;
std::condition_variable changed;
std::map<unsigned long, Record> records;  // guarded by mutex

void onMessage(unsigned long handle, const char* message, void*) {
  std::function<void(const std::string&)> handler;
  {
    std::lock_guard lock(mutex);
    handler = records[handle].handler;
  }
  if (handler) handler(message);
  std::lock_guard lock(mutex);
  records[handle].words.emplace_back(message);
  changed.notify_all();
}

}  // namespace

TestPlayer::TestPlayer() : m_handle(openPlayer(1)) {
  EXPECT_NE(m_handle, 0UL);
  EXPECT_NE(registerCallback(m_handle, onMessage), 0);
}

TestPlayer::~TestPlayer() { close(); }

void TestPlayer::close() {
  if (!std::exchange(m_open, false)) return;
  EXPECT_NE(closePlayer(m_handle), 0);
}

int TestPlayer::command(const char* name, const std::string& argument) { return cmdPlayer(m_handle, name, argument.c_str()); }

int TestPlayer::set(const char* key, const std::string& value) { return setPlayerProperty(m_handle, key, value.c_str()); }

std::optional<std::string> TestPlayer::get(const char* key) const {
  char buffer[128];
  if (getPlayerProperty(m_handle, key, buffer, sizeof buffer) == 0) return std::nullopt;
  return buffer;
}

double TestPlayer::number(const char* key) const {
  const std::optional<std::string> text = get(key);
  EXPECT_TRUE(text.has_value()) << key;
  return text ? std::stod(*text) : -1;
}

void TestPlayer::load(const std::string& url) {
  EXPECT_NE(set("INPUT", url), 0);
  wordsUntil("READY_TO_PLAY");
}

void TestPlayer::start(const std::string& url) {
  load(url);
  EXPECT_NE(command("PLAY", "1.00"), 0);
  wordsUntil("PLAY_SPEED_CHANGED");
}

Words TestPlayer::wordsUntil(const std::string& last, int seconds) {
  const bool came = waitFor([&last](const Words& words) { return count(words, last) > 0; }, seconds);
  EXPECT_TRUE(came) << "no " << last << ", but " << testing::PrintToString(words()) << ", error "
                    << get("LAST_ERR_CODE").value_or("none");
  return words();
}

Words TestPlayer::wordsUpTo(std::size_t wanted, int seconds) {
  const bool came = waitFor([wanted](const Words& words) { return words.size() >= wanted; }, seconds);
  EXPECT_TRUE(came) << "only " << testing::PrintToString(words());
  return words();
}

Words TestPlayer::words() const {
  std::lock_guard lock(mutex);
  return records[m_handle].words;
}

void TestPlayer::forget() {
  std::lock_guard lock(mutex);
  records[m_handle].words.clear();
}

bool TestPlayer::waitFor(const std::function<bool(const Words&)>& condition, int seconds) const {
  std::unique_lock lock(mutex);
  return changed.wait_for(lock, std::chrono::seconds(seconds), [&] { return condition(records[m_handle].words); });
}

bool TestPlayer::eventually(const std::function<bool()>& condition, int seconds) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(2));  // between two looks; the condition decides
  }
  return true;
}

void TestPlayer::onWord(std::function<void(const std::string&)> handler) {
  std::lock_guard lock(mutex);
  records[m_handle].handler = std::move(handler);
}

long count(const Words& words, const std::string& word) { return std::count(words.begin(), words.end(), word); }

Words without(Words words, const std::string& word) {
  words.erase(std::remove(words.begin(), words.end(), word), words.end());
  return words;
}
