// SPDX-License-Identifier: Apache-2.0
// What one player's text-track callback says, and when on the playing clock.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/mediamgmnt.h"
#include "test_player.h"

struct Notice {
  _TextTrackEventType type;
  std::string first;
  std::string second;
  double position;  ///< POSITION, read as the first thing in the callback
};
using Notices = std::vector<Notice>;

/// A document as its track has it.
struct Sample {
  int start;  ///< milliseconds
  int end;
  std::string text;
};
using Samples = std::vector<Sample>;

/// Hears the player that it was made for, which ends first. Thread: the test's.
class SubtitleLog {
 public:
  explicit SubtitleLog(const TestPlayer& player);
  ~SubtitleLog();
  SubtitleLog(const SubtitleLog&) = delete;
  SubtitleLog& operator=(const SubtitleLog&) = delete;

  Notices notices() const;
  /// The documents among them.
  Notices documents() const;
  /// The kinds of all of them but documents, "SHOW HIDE CHANGE FONT".
  std::string signals() const;
  void forget();
  /// Throws, which ends the test, when @p condition does not come to hold.
  void waitFor(const std::function<bool(const SubtitleLog&)>& condition, const char* what) const;
  void waitForDocuments(std::size_t count) const;
  /// The document that covers the place is the newest.
  void waitForDocumentAt(const Samples& samples, double position) const;

 private:
  unsigned long m_handle;
};

/// What the sample media's track of that language consists of. @p set is "" or "short/".
Samples samplesOf(const std::string& set, const std::string& language);
/// Null when no sample covers the place.
const Sample* sampleAt(const Samples& samples, double position);
