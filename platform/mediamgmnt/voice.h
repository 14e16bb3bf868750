// SPDX-License-Identifier: Apache-2.0
// Says a player's status words in the right order, also when the control thread is held up inside the pipeline.
#pragma once

#include <mutex>

#include "platform/mediamgmnt/dispatcher.h"
#include "platform/mediamgmnt/playback_facts.h"

namespace mediamgmnt {

/// The control thread says its words through this. A stop is answered when the control thread has done it, or by the dispatcher
/// when that takes too long; in the second case the control thread stays unheard until it has caught up.
///
/// Threads: say(), sayReady() and stopDone() on the control thread, tell() and stopAsked() any. Borrows both arguments.
class Voice {
 public:
  using Ticket = unsigned long;

  Voice(Dispatcher& dispatcher, PlaybackFacts& facts);

  /// @return whether it is heard.
  bool say(const char* word);
  /// That a source can be played is heard always: a stop is none of the source, which stays.
  void sayReady();
  /// Unheard after a stop like a word.
  void tell(TextTrackNotice notice);

  /// Every ticket is answered once: "STOPPED", position 0, "PLAY_POSITION_CHANGED". Give each to stopDone(): two
  /// threads may ask at once, and the second one's be done first.
  Ticket stopAsked();
  void stopDone(Ticket ticket);

 private:
  void answerLate(Ticket ticket);
  void answerLocked(Ticket ticket);

  Dispatcher& m_dispatcher;
  PlaybackFacts& m_facts;
  std::mutex m_mutex;  // taken before the dispatcher's and the facts' own
  Ticket m_asked = 0;  // guarded by m_mutex, like all below
  Ticket m_answered = 0;
  Ticket m_done = 0;
};

}  // namespace mediamgmnt
