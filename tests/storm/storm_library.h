// SPDX-License-Identifier: Apache-2.0
// A media library for storms: it plays nothing, answers commands with status words from a thread of its own, can have bad manners,
// and can fire status words from further threads at every handle that it ever gave away.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "host/mediamgmnt.h"

namespace storm {

/// How the library behaves. The default keeps the contract.
struct Manners {
  std::chrono::milliseconds callTime{0};  ///< each of the ten functions takes that long
  bool opens = true;                      ///< openPlayer gives handles
  bool accepts = true;                    ///< commands, reads and writes succeed
  bool answersStop = true;                ///< "STOP" is answered with "STOPPED"
  int repeats = 1;                        ///< how often each word of an answer is said
  bool callsAfterClose = false;           ///< words are also sent to handles that were closed
  bool serial = true;                     ///< at most one callback of a handle at a time
};

/// The library behind the ten C functions of this executable. Thread: any. One storm at a time, between start() and finish().
class StormLibrary {
 public:
  static StormLibrary& instance();

  void start(const Manners& manners);
  /// Fires random words of @p words at random handles from @p threads threads until finish().
  void attack(unsigned int threads, const std::vector<std::string>& words);
  /// Joins all threads; the words that were still waiting are dropped. No callback runs when it returns.
  void finish();

  /// Says @p word on the calling thread. Works for closed handles too.
  void say(unsigned long handle, const std::string& word);
  /// @return false when the deadline passed first.
  bool waitUntilAllClosed(std::chrono::seconds limit);
  /// @return false when the deadline passed before @p count words were delivered.
  bool waitForDeliveries(std::size_t count, std::chrono::seconds limit);

  unsigned long lastHandle() const;
  std::size_t opened() const;
  std::size_t closed() const;
  std::size_t deliveries() const;
  std::size_t commands(const std::string& name) const;

  // What the C functions do.
  unsigned long open();
  int close(unsigned long handle);
  int command(unsigned long handle, const char* name);
  int write(unsigned long handle, const char* key);
  int read(unsigned long handle, const char* key, char* buffer, int size);
  int setCallback(unsigned long handle, MediaMessageCallback callback);
  void takeTime() const;

 private:
  struct Line {  // one handle
    std::mutex talking;
    MediaMessageCallback callback = nullptr;
    bool open = true;
  };
  struct Word {
    unsigned long handle;
    std::string text;
  };

  std::shared_ptr<Line> find(unsigned long handle) const;
  void answer(unsigned long handle, const std::vector<const char*>& words);
  void answerLoop();
  void attackLoop(unsigned int seed, const std::vector<std::string>& words);
  unsigned long pickHandle(std::uint32_t random) const;
  void deliver(unsigned long handle, const std::string& word);

  mutable std::mutex m_mutex;
  std::condition_variable m_changed;
  Manners m_manners;
  std::map<unsigned long, std::shared_ptr<Line>> m_lines;
  std::map<std::string, std::size_t> m_commands;
  std::deque<Word> m_words;
  std::vector<std::thread> m_threads;
  unsigned long m_lastHandle = 0;
  std::size_t m_opened = 0;
  std::size_t m_closed = 0;
  std::size_t m_deliveries = 0;
  bool m_running = false;
};

/// Every status word of the contract, and two texts that are none.
std::vector<std::string> everyWord();

}  // namespace storm
