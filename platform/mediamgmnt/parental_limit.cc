// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/parental_limit.h"

#include <algorithm>
#include <utility>

namespace mediamgmnt {
namespace {

/// @return nothing when no rating of that region is understood.
std::optional<int> strictest(const std::vector<Rating>& ratings, const std::optional<std::string>& region) {
  std::optional<int> age;
  for (const Rating& rating : ratings) {
    if (!rating.minimumAge || (region && rating.region != *region)) continue;
    age = std::max(age.value_or(0), *rating.minimumAge);
  }
  return age;
}

std::optional<int> decidingAge(const std::vector<Rating>& ratings, const std::string& country) {
  if (country.empty()) return strictest(ratings, std::nullopt);
  for (const std::string& region : {country, std::string()}) {
    if (const auto age = strictest(ratings, region)) return age;
  }
  return strictest(ratings, std::nullopt);
}

}  // namespace

bool isBlocked(const std::vector<Rating>& ratings, const ParentalLimit& limit) {
  if (!limit.age) return false;
  const std::optional<int> age = decidingAge(ratings, limit.country);
  return age && *age > *limit.age;
}

ParentalLimitStore& ParentalLimitStore::instance() {
  static ParentalLimitStore* const store = new ParentalLimitStore;
  return *store;
}

ParentalLimit ParentalLimitStore::get() const {
  std::lock_guard lock(m_mutex);
  return m_limit;
}

void ParentalLimitStore::set(ParentalLimit limit) {
  std::lock_guard lock(m_mutex);
  m_limit = std::move(limit);
}

}  // namespace mediamgmnt
