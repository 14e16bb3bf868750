// SPDX-License-Identifier: Apache-2.0
// One player of the media library under test, with everything it said.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

using Words = std::vector<std::string>;

/// Opens a player and records its words; closes it at the end. Thread: the test's.
class TestPlayer {
 public:
  TestPlayer();
  ~TestPlayer();
  TestPlayer(const TestPlayer&) = delete;
  TestPlayer& operator=(const TestPlayer&) = delete;

  unsigned long handle() const { return m_handle; }
  void close();

  int command(const char* name, const std::string& argument = "");
  int set(const char* key, const std::string& value);
  /// Nothing when the library has no answer.
  std::optional<std::string> get(const char* key) const;
  /// The number that get() gives; fails the test without one.
  double number(const char* key) const;

  /// Sets the source and waits for its word.
  void load(const std::string& url);
  /// load(), then plays until the page would see it playing.
  void start(const std::string& url);

  /// All words since the last forget(), after waiting until @p last is among them. Fails the test when it does not come.
  Words wordsUntil(const std::string& last, int seconds = 30);
  /// Waits until @p count words have come since the last forget().
  Words wordsUpTo(std::size_t count, int seconds = 30);
  Words words() const;
  void forget();
  bool waitFor(const std::function<bool(const Words&)>& condition, int seconds) const;
  /// Looks at the player every few milliseconds until @p condition holds. @return false when it never does.
  static bool eventually(const std::function<bool()>& condition, int seconds = 30);

  /// Called on the library's thread with each word, before it is recorded.
  void onWord(std::function<void(const std::string&)> handler);

 private:
  unsigned long m_handle = 0;
  bool m_open = true;
};

/// How often @p word is among @p words.
long count(const Words& words, const std::string& word);
/// @p words without those that a slow or quick machine adds.
Words without(Words words, const std::string& word);
