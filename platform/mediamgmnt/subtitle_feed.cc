// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/subtitle_feed.h"

#include <algorithm>
#include <utility>

namespace mediamgmnt {
namespace {

/// A track is known a few milliseconds after its first document at most.
constexpr std::size_t kMostEarly = 16;

/// A stream that brings ever new fonts must not fill the memory; one that is told again does no harm.
constexpr std::size_t kMostFonts = 64;

bool isSame(const TimedDocument& one, const TimedDocument& other) { return one.start == other.start && *one.text == *other.text; }

}  // namespace

void SubtitleFeed::due(const void* stream, TimedDocument document) {
  std::lock_guard lock(m_mutex);
  if (m_track && m_track->stream == stream) return takeLocked(std::move(document));
  if (m_early.size() == kMostEarly) m_early.pop_front();
  m_early.emplace_back(stream, std::move(document));
}

void SubtitleFeed::takeLocked(TimedDocument document) {
  m_due = std::move(document);
  if (m_shown && !m_seekExpected) tellLocked(*m_due);
}

void SubtitleFeed::tellLocked(const TimedDocument& document) {
  if (document.text->empty()) return;  // a time without subtitles
  if (m_told && isSame(*m_told, document)) return;
  m_told = document;
  tellFontsLocked(document);
  m_voice.tell({TTML_SUBTITLE, document.text, nullptr});
}

void SubtitleFeed::tellFontsLocked(const TimedDocument& document) {
  SubtitleFonts fonts = fontsNamedIn(*document.text, m_track->fonts);
  for (SubtitleFont& each : fontsDefinedIn(*document.text, m_track->documentBase)) fonts.push_back(std::move(each));
  for (const SubtitleFont& each : fonts) {
    if (std::find(m_fontsTold.begin(), m_fontsTold.end(), each) != m_fontsTold.end()) continue;
    if (m_fontsTold.size() == kMostFonts) m_fontsTold.clear();
    m_fontsTold.push_back(each);
    m_voice.tell(
        {TTML_SUBTITLE_FONT, std::make_shared<const std::string>(each.family), std::make_shared<const std::string>(each.location)});
  }
}

void SubtitleFeed::flushed() {
  std::lock_guard lock(m_mutex);
  forgetDueLocked();
  beginAnewLocked();
}

void SubtitleFeed::seekDone() {
  std::lock_guard lock(m_mutex);
  beginAnewLocked();
}

void SubtitleFeed::beginAnewLocked() {
  if (std::exchange(m_seekExpected, false)) m_told.reset();
}

void SubtitleFeed::forgetDueLocked() {
  m_due.reset();
  m_early.clear();
}

void SubtitleFeed::expectSeek() {
  std::lock_guard lock(m_mutex);
  m_seekExpected = true;
}

/// The same track of another period is none to the page.
void SubtitleFeed::present(const Component& track) {
  std::lock_guard lock(m_mutex);
  if (m_track && m_track->stream == track.stream) {
    m_track = track;  // what is known of it grows
    return;
  }
  const bool isOther = m_track && !looksAlike(*m_track, track);
  m_track = track;
  m_due.reset();
  if (isOther) {
    m_told.reset();
    if (m_shown) m_voice.tell({TTML_SUBTITLE_CHANGE, nullptr, nullptr});
  }
  for (auto& [stream, document] : std::exchange(m_early, {})) {
    if (stream == track.stream) takeLocked(std::move(document));
  }
}

void SubtitleFeed::show(bool shown, std::int64_t position) {
  std::lock_guard lock(m_mutex);
  if (std::exchange(m_shown, shown) == shown) return;
  m_voice.tell({shown ? TTML_SUBTITLE_SHOW : TTML_SUBTITLE_HIDE, nullptr, nullptr});
  m_told.reset();
  if (!shown || !m_due) return;
  const bool isOver = m_due->end != TimedDocument::kUnknown && position >= m_due->end;
  if (!isOver) tellLocked(*m_due);
}

void SubtitleFeed::interrupt() {
  std::lock_guard lock(m_mutex);
  forgetDueLocked();
  if (m_track) m_track->stream = nullptr;  // may be another one's address by now
}

void SubtitleFeed::end() {
  std::lock_guard lock(m_mutex);
  forgetDueLocked();
  m_told.reset();
  m_track.reset();
  m_fontsTold.clear();
  m_seekExpected = false;
  if (std::exchange(m_shown, false)) m_voice.tell({TTML_SUBTITLE_HIDE, nullptr, nullptr});
}

}  // namespace mediamgmnt
