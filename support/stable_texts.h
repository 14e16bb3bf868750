// SPDX-License-Identifier: Apache-2.0
// Copies of texts that stay where they are for a while.
#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "support/av_control_mutex.h"

/// The player borrows the texts of its queued commands, so whoever queues them keeps each alive and unchanged until the command has
/// run. A ring longer than the queue does that without a hand-back: a text is reused only after kSlots newer ones.
///
/// Thread: any.
class StableTexts {
 public:
  static constexpr std::size_t kSlots = 64;  ///< a source hands over four texts, the queue holds ten commands, one more runs

  /// @return a copy that is valid until kSlots further calls; null for null.
  const char* keep(const char* text);

 private:
  AVControlMutex m_mutex{"stable_texts"};
  std::array<std::string, kSlots> m_texts;
  std::size_t m_next = 0;
};
