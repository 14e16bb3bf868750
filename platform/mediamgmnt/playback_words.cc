// SPDX-License-Identifier: Apache-2.0
// The answers to commands, in the order that applications rely on.
#include <utility>

#include "platform/mediamgmnt/playback.h"

namespace mediamgmnt {

/// "PLAYING" is what leaves paused, so it comes after all that would lead away from playing again.
void Playback::answerPlay() {
  m_facts.setSpeed(m_stepping ? m_wantedRate : m_rate);
  if (std::exchange(m_bufferReadyDue, false)) m_voice.say(status::kBufferReady);
  answerSeeks();
  if (std::exchange(m_playingDue, false)) m_voice.say(status::kPlaying);
  m_pausedSaid = false;
  if (std::exchange(m_speedDue, false)) m_voice.say(status::kPlaySpeedChanged);
}

/// A seek in flight is answered first: a page that waits for a seek does not listen to "PAUSED".
void Playback::answerPause() {
  m_pauseDue = m_playingDue = m_speedDue = false;
  if (m_pipeline != nullptr && m_prerolled && !m_next) m_facts.endRunAt(pipelinePosition());
  m_facts.setSpeed(0);
  answerSeeks();
  m_voice.say(status::kPaused);
  m_voice.say(status::kPlaySpeedChanged);
  m_pausedSaid = true;
}

/// Whoever is paused does not listen to "ERROR", and would wait for ever for an answer to its play.
void Playback::leavePaused() {
  if (std::exchange(m_pausedSaid, false)) m_voice.say(status::kPlaying);
}

void Playback::answerSeeks() {
  for (; m_seeksDue > 0; --m_seeksDue) m_voice.say(status::kPlayPositionChanged);
}

/// Answered by "BUFFER_READY" and "PLAYING" once it is over.
void Playback::announceUnderrun() {
  if (std::exchange(m_bufferReadyDue, true)) return;
  m_voice.say(status::kBuffering);
  m_playingDue = true;
}

}  // namespace mediamgmnt
