// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/voice.h"

#include <algorithm>
#include <utility>

namespace mediamgmnt {
namespace {

/// A stop takes a few milliseconds; a page must not wait for a pipeline that takes longer.
constexpr std::chrono::milliseconds kLatestAnswer{60};

}  // namespace

Voice::Voice(Dispatcher& dispatcher, PlaybackFacts& facts) : m_dispatcher(dispatcher), m_facts(facts) {}

bool Voice::say(const char* word) {
  std::lock_guard lock(m_mutex);
  if (m_done < m_answered) return false;  // a word of what the page has been told is stopped
  m_dispatcher.enqueue(word);
  return true;
}

void Voice::sayReady() {
  std::lock_guard lock(m_mutex);
  m_dispatcher.enqueue(status::kReadyToPlay);
}

void Voice::tell(TextTrackNotice notice) {
  std::lock_guard lock(m_mutex);
  const bool isHeard = m_done >= m_answered || notice.type == TTML_SUBTITLE_HIDE;  // what is stopped is not shown either
  if (isHeard) m_dispatcher.enqueue(std::move(notice));
}

Voice::Ticket Voice::stopAsked() {
  std::lock_guard lock(m_mutex);
  const Ticket ticket = ++m_asked;
  m_dispatcher.enqueueAlarm(Dispatcher::Clock::now() + kLatestAnswer, [this, ticket] { answerLate(ticket); });
  return ticket;
}

void Voice::stopDone(Ticket ticket) {
  std::lock_guard lock(m_mutex);
  m_done = std::max(m_done, ticket);
  if (m_answered < ticket) return answerLocked(ticket);
  m_facts.rewind();  // the control thread may have left an anchor after the late answer
}

void Voice::answerLate(Ticket ticket) {
  std::lock_guard lock(m_mutex);
  if (m_answered < ticket) answerLocked(ticket);
}

void Voice::answerLocked(Ticket ticket) {
  for (; m_answered < ticket; ++m_answered) {
    m_facts.rewind();
    m_dispatcher.enqueue(status::kStopped);
    m_dispatcher.enqueue(status::kPlayPositionChanged);
  }
}

}  // namespace mediamgmnt
