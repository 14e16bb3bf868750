// SPDX-License-Identifier: Apache-2.0
// What a DASH manifest says about ratings, over time. Plain data. Thread: any.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/mediamgmnt/dash_manifest.h"
#include "platform/mediamgmnt/rating.h"

namespace mediamgmnt {

/// The ratings from one moment of the presentation on.
struct RatedSpan {
  std::int64_t startNs = 0;
  std::vector<Rating> ratings;
};

/// One span for each period, those of the whole presentation included; in order, the first from 0 on. Ratings are Rating elements,
/// and supplemental and essential properties of a known scheme or one that calls itself a rating.
std::vector<RatedSpan> ratedSpans(const DashManifest& manifest);

/// The span at @p positionNs. @p spans is not empty.
const RatedSpan& spanAt(const std::vector<RatedSpan>& spans, std::int64_t positionNs);

/// Reads "PT1H2M3.5S". @return a negative number for another text.
std::int64_t parseDurationNs(const std::string& text);

}  // namespace mediamgmnt
