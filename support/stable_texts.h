// SPDX-License-Identifier: Apache-2.0
// Copies of texts that stay where they are for a while.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <string>

#include "support/av_control_mutex.h"

/// The player borrows the texts of its queued commands, so whoever queues them keeps each alive and unchanged until the command has
/// run. A ring longer than the queue does that without a hand-back: a text is reused only after kSlots newer ones.
///
/// Thread: any.
class StableTexts {
 public:
  static constexpr std::size_t kSlots = 64;  ///< a source hands over four texts, the queue holds ten commands, one more runs

  /// @return a copy that is valid until kSlots further texts; null for null.
  const char* keep(const char* text);

  /// Gives @p take a copy (null for null) that is valid until kSlots further texts. When @p take refuses it, its slot is free
  /// again: texts that a full queue refuses must not push out those that it still borrows. The command queue's lock is taken
  /// inside.
  /// @return what @p take says.
  bool handOver(const char* text, const std::function<bool(const char*)>& take);

 private:
  AVControlMutex m_mutex{"stable_texts"};
  std::array<std::string, kSlots> m_texts;
  std::size_t m_next = 0;
};
