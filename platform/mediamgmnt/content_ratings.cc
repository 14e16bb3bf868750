// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/content_ratings.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <string_view>

#include "platform/mediamgmnt/rating_schemes.h"

namespace mediamgmnt {
namespace {

constexpr double kNsPerSecond = 1e9;

bool callsItselfARating(const std::string& scheme) {
  std::string lower(scheme);
  std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return std::tolower(c); });
  return lower.find("rating") != std::string::npos;
}

void add(const DashDescriptor& descriptor, std::vector<Rating>& ratings) {
  Rating rating = readRating(descriptor.scheme, descriptor.value, {});
  if (std::find(ratings.begin(), ratings.end(), rating) == ratings.end()) ratings.push_back(std::move(rating));
}

void addProperties(const std::vector<DashDescriptor>& properties, std::vector<Rating>& ratings) {
  for (const DashDescriptor& each : properties) {
    if (isKnownScheme(each.scheme) || callsItselfARating(each.scheme)) add(each, ratings);
  }
}

void addPeriod(const DashPeriod& period, std::vector<Rating>& ratings) {
  addProperties(period.supplementalProperties, ratings);
  addProperties(period.essentialProperties, ratings);
  for (const DashAdaptationSet& set : period.adaptationSets) {
    for (const DashDescriptor& each : set.ratings) add(each, ratings);
    addProperties(set.supplementalProperties, ratings);
    addProperties(set.essentialProperties, ratings);
  }
}

/// A number and its letter off the front of @p text, in seconds of @p unit. @return false when that is not there.
bool takePart(std::string_view& text, char letter, double unit, double& seconds) {
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
  if (error != std::errc() || end == text.data() + text.size() || *end != letter || number < 0) return false;
  seconds += number * unit;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()) + 1);
  return true;
}

}  // namespace

std::int64_t parseDurationNs(const std::string& text) {
  constexpr double kLongest = 1e9;
  std::string_view rest = text;
  if (rest.substr(0, 1) != "P") return -1;
  rest.remove_prefix(1);
  double seconds = 0;
  bool any = takePart(rest, 'D', 86400, seconds);
  if (rest.substr(0, 1) == "T") {
    rest.remove_prefix(1);
    any = takePart(rest, 'H', 3600, seconds) || any;
    any = takePart(rest, 'M', 60, seconds) || any;
    any = takePart(rest, 'S', 1, seconds) || any;
  }
  return any && rest.empty() && seconds < kLongest ? static_cast<std::int64_t>(seconds * kNsPerSecond) : -1;
}

std::vector<RatedSpan> ratedSpans(const DashManifest& manifest) {
  std::vector<RatedSpan> spans;
  std::int64_t next = 0;
  for (const DashPeriod& period : manifest.periods) {
    RatedSpan span;
    addProperties(manifest.supplementalProperties, span.ratings);
    addProperties(manifest.essentialProperties, span.ratings);
    addPeriod(period, span.ratings);
    const std::int64_t start = parseDurationNs(period.start);
    span.startNs = spans.empty() ? 0 : std::max(start >= 0 ? start : next, spans.back().startNs);
    next = (start >= 0 ? start : next) + std::max<std::int64_t>(parseDurationNs(period.duration), 0);
    spans.push_back(std::move(span));
  }
  return spans;
}

const RatedSpan& spanAt(const std::vector<RatedSpan>& spans, std::int64_t positionNs) {
  const auto later = std::find_if(spans.begin() + 1, spans.end(), [=](const RatedSpan& each) { return each.startNs > positionNs; });
  return *(later - 1);
}

}  // namespace mediamgmnt
