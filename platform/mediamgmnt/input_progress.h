// SPDX-License-Identifier: Apache-2.0
// How far each stream of a source has been taken apart.
#pragma once

#include <chrono>
#include <cstddef>
#include <mutex>
#include <vector>

namespace mediamgmnt {

/// Times are those of the medium. Threads: any.
class InputProgress {
 public:
  using Id = std::size_t;

  Id add();
  /// @param isMedia sound or picture: what a presentation lasts for; taken for true before it is said
  void describe(Id input, bool isMedia);
  /// The stream is taken apart from elsewhere on.
  void restart(Id input);
  void advance(Id input, std::chrono::nanoseconds end);
  void finish(Id input);

  bool hasEnd() const;
  /// All streams have ended, and none has ever come this far.
  bool isAllShorterThan(std::chrono::nanoseconds length) const;
  /// All sounds and pictures have ended by this time.
  bool isMediaOverAt(std::chrono::nanoseconds position) const;

 private:
  struct Input {
    std::chrono::nanoseconds end{0};
    bool isMedia = true;
    bool hasEnded = false;
  };

  mutable std::mutex m_mutex;
  std::vector<Input> m_inputs;  // guarded by m_mutex, like all below
  std::chrono::nanoseconds m_reach{0};
};

}  // namespace mediamgmnt
