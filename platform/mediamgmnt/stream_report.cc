// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/stream_report.h"

#include "platform/mediamgmnt/media_report.h"
#include "platform/mediamgmnt/number_text.h"

namespace mediamgmnt {

void StreamReportStore::set(const StreamReport& report) {
  std::lock_guard lock(m_mutex);
  m_report = report;
}

std::optional<std::string> StreamReportStore::text(std::string_view key) const {
  std::lock_guard lock(m_mutex);
  std::optional<long long> value;
  if (key == report::kBuffered) value = m_report.bufferedMs;
  if (key == report::kMediaRate) value = m_report.mediaRate;
  if (key == report::kLineRate) value = m_report.lineRate;
  if (key == report::kPictures) value = m_report.pictures;
  if (key == report::kDropped) value = m_report.dropped;
  return value ? std::optional(formatWhole(*value)) : std::nullopt;
}

}  // namespace mediamgmnt
