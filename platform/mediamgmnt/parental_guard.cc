// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/parental_guard.h"

#include <algorithm>
#include <utility>

#include "host/mediamgmnt.h"

namespace mediamgmnt {
namespace {

constexpr media::Rect kNowhere{0, 0, 0, 0};

bool isUnderstood(const Rating& rating) { return rating.minimumAge.has_value(); }

std::vector<std::string> textsOf(const std::vector<Rating>& ratings) {
  std::vector<std::string> texts(ratings.size());
  std::transform(ratings.begin(), ratings.end(), texts.begin(), ratingText);
  return texts;
}

}  // namespace

ParentalGuard::ParentalGuard(media::VideoSurface& surface, ProtectionFacts& facts, std::function<void()> wake)
    : m_surface(surface), m_facts(facts), m_wake(std::move(wake)) {}

void ParentalGuard::setRect(media::Rect rect) {
  std::lock_guard lock(m_mutex);
  m_rect = rect;
  if (!m_blocked) m_surface.setRect(rect);
}

void ParentalGuard::setContent(const std::string& contentId, const std::string& systemId) {
  std::lock_guard lock(m_mutex);
  m_contentId = contentId;
  m_systemId = systemId;
}

void ParentalGuard::setRatings(RatingSource source, std::vector<Rating> ratings) {
  {
    std::lock_guard lock(m_mutex);
    std::vector<Rating>& present = m_ratings[static_cast<std::size_t>(source)];
    if (present == ratings) return;
    present = std::move(ratings);
    judgeLocked();
  }
  m_wake();
}

void ParentalGuard::judge() {
  std::lock_guard lock(m_mutex);
  judgeLocked();
}

void ParentalGuard::judgeLocked() {
  const bool blocked = mediamgmnt::isBlocked(allRatingsLocked(), ParentalLimitStore::instance().get());
  if (std::exchange(m_blocked, blocked) != blocked) m_surface.setRect(blocked ? kNowhere : m_rect);
}

void ParentalGuard::forget() {
  std::lock_guard lock(m_mutex);
  for (auto& ratings : m_ratings) ratings.clear();
  m_contentId.clear();
  m_systemId.clear();
  judgeLocked();
}

bool ParentalGuard::isBlocked() const {
  std::lock_guard lock(m_mutex);
  return m_blocked;
}

const char* ParentalGuard::takeWord() {
  std::lock_guard lock(m_mutex);
  const std::vector<Rating> ratings = allRatingsLocked();
  const ParentalState state{textsOf(ratings), m_blocked, m_contentId, m_systemId};
  const ParentalState before = m_facts.parental();
  if (state.ratings == before.ratings && state.blocked == before.blocked) return nullptr;
  m_facts.setParental(state);
  const bool puzzling = !ratings.empty() && std::none_of(ratings.begin(), ratings.end(), isUnderstood);
  return puzzling ? status::kParentalRatingError : status::kParentalRatingChange;
}

std::vector<Rating> ParentalGuard::allRatingsLocked() const {
  std::vector<Rating> all;
  for (const auto& ratings : m_ratings) all.insert(all.end(), ratings.begin(), ratings.end());
  return all;
}

}  // namespace mediamgmnt
