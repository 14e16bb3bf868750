// SPDX-License-Identifier: Apache-2.0
// From the documents that come due to the page: which of them it gets, and what it is told around them.
#pragma once

#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>

#include "platform/mediamgmnt/component.h"
#include "platform/mediamgmnt/dispatcher.h"
#include "platform/mediamgmnt/subtitle_fonts.h"
#include "platform/mediamgmnt/voice.h"

namespace mediamgmnt {

/// A document as its track has it. Times are the source's, in nanoseconds.
struct TimedDocument {
  static constexpr std::int64_t kUnknown = -1;
  SharedText text;
  std::int64_t start = kUnknown;
  std::int64_t end = kUnknown;
};

/// One player's subtitles on their way out. Documents flow all the time, of the track that GStreamer has selected; the page gets
/// them while subtitles are shown.
///
/// A document is told once: what the pipeline brings a second time, because another track was fetched or the speed changed, is left
/// out. A seek of the page begins anew, since nobody knows what the page has kept. Nothing is kept but the document that is due,
/// the one told last, and what a track that is not known yet has brought.
///
/// Threads: any, for all functions. Borrows the voice.
class SubtitleFeed {
 public:
  explicit SubtitleFeed(Voice& voice) : m_voice(voice) {}

  /// @p document is due now. Of a track that has not been presented yet it waits for that.
  void due(const void* stream, TimedDocument document);
  /// The pipeline was emptied: what was due is not any more.
  void flushed();
  /// The page seeks: what comes due until the pipeline is emptied belongs to the place that is left.
  void expectSeek();
  /// The pipeline has taken the seek, or refused it.
  void seekDone();

  /// That track is presented from now on.
  void present(const Component& track);
  /// @p position is the pipeline's, in nanoseconds, or unknown: a document that is over is not shown.
  void show(bool shown, std::int64_t position);
  /// The source is opened anew at the same place.
  void interrupt();
  /// Nothing is presented any more.
  void end();

 private:
  void takeLocked(TimedDocument document);
  void tellLocked(const TimedDocument& document);
  void tellFontsLocked(const TimedDocument& document);
  void forgetDueLocked();
  void beginAnewLocked();

  Voice& m_voice;
  std::mutex m_mutex;    // taken before the voice's
  bool m_shown = false;  // guarded by m_mutex, like all below
  bool m_seekExpected = false;
  std::optional<Component> m_track;
  std::optional<TimedDocument> m_due;
  std::optional<TimedDocument> m_told;
  std::deque<std::pair<const void*, TimedDocument>> m_early;
  SubtitleFonts m_fontsTold;
};

}  // namespace mediamgmnt
