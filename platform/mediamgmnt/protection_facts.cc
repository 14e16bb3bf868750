// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/protection_facts.h"

#include <charconv>
#include <utility>

#include "host/mediamgmnt.h"

namespace mediamgmnt {
namespace {

/// @return nothing when @p key is no "PARENTAL_RATING.ITEM.n".
std::optional<std::size_t> ratingIndex(std::string_view key) {
  constexpr std::string_view kPrefix = property::kParentalRatingItemPrefix;
  if (key.substr(0, kPrefix.size()) != kPrefix) return std::nullopt;
  key.remove_prefix(kPrefix.size());
  std::size_t index = 0;
  const auto [end, error] = std::from_chars(key.data(), key.data() + key.size(), index);
  if (error != std::errc() || end != key.data() + key.size()) return std::nullopt;
  return index;
}

}  // namespace

void ProtectionFacts::setRightsError(RightsError error) {
  std::lock_guard lock(m_mutex);
  m_rightsError = std::move(error);
}

void ProtectionFacts::setParental(ParentalState state) {
  std::lock_guard lock(m_mutex);
  m_parental = std::move(state);
}

ParentalState ProtectionFacts::parental() const {
  std::lock_guard lock(m_mutex);
  return m_parental;
}

void ProtectionFacts::forget() {
  std::lock_guard lock(m_mutex);
  m_rightsError.reset();
  m_parental = {};
}

std::optional<std::string> ProtectionFacts::answer(std::string_view key) const {
  std::lock_guard lock(m_mutex);
  return key.substr(0, 4) == "DRM_" ? answerRights(key) : answerParental(key);
}

std::optional<std::string> ProtectionFacts::answerRights(std::string_view key) const {
  if (!m_rightsError) return std::nullopt;
  if (key == property::kDrmErrorState) return std::to_string(m_rightsError->state);
  if (key == property::kDrmContentId) return m_rightsError->contentId;
  if (key == property::kDrmSystemId) return m_rightsError->systemId;
  if (key == property::kDrmRightsIssuerUrl) return m_rightsError->issuerUrl;
  return std::nullopt;
}

std::optional<std::string> ProtectionFacts::answerParental(std::string_view key) const {
  if (key == property::kParentalDrmContentId) return m_parental.contentId;
  if (key == property::kParentalDrmSystemId) return m_parental.systemId;
  if (key == property::kParentalBlocked) return m_parental.blocked ? "1" : "0";
  if (key == property::kParentalRatingLength) return std::to_string(m_parental.ratings.size());
  const std::optional<std::size_t> index = ratingIndex(key);
  if (!index || *index >= m_parental.ratings.size()) return std::nullopt;
  return m_parental.ratings[*index];
}

}  // namespace mediamgmnt
