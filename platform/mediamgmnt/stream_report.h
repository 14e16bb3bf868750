// SPDX-License-Identifier: Apache-2.0
// How a presentation is going: what is stored, how fast, what is lost.
#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace mediamgmnt {

/// What is empty is not known of this source, or not yet.
struct StreamReport {
  std::optional<long long> bufferedMs;
  std::optional<long long> mediaRate;
  std::optional<long long> lineRate;
  std::optional<long long> pictures;
  std::optional<long long> dropped;
};

/// The newest report of a player. Threads: any.
class StreamReportStore {
 public:
  void set(const StreamReport& report);
  /// @return the text of a key of media_report.h; nothing for another key and for what is not known.
  std::optional<std::string> text(std::string_view key) const;

 private:
  mutable std::mutex m_mutex;
  StreamReport m_report;  // guarded by m_mutex
};

}  // namespace mediamgmnt
