// SPDX-License-Identifier: Apache-2.0
// What a player answers about rights and parental ratings.
#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mediamgmnt {

/// What the page is told when rights are missing.
struct RightsError {
  static constexpr int kNoLicence = 0;
  static constexpr int kInvalidLicence = 1;

  int state = kNoLicence;
  std::string contentId;
  std::string systemId;
  std::string issuerUrl;
};

/// What the page is told about ratings. Texts are those of the rating records.
struct ParentalState {
  std::vector<std::string> ratings;
  bool blocked = false;
  std::string contentId;
  std::string systemId;
};

/// Threads: any, for all functions.
class ProtectionFacts {
 public:
  void setRightsError(RightsError error);
  void setParental(ParentalState state);
  ParentalState parental() const;
  /// Nothing is known, as after a new source.
  void forget();

  /// @return nothing for a property of another subject, and for rights that nothing was wrong with.
  std::optional<std::string> answer(std::string_view key) const;

 private:
  std::optional<std::string> answerRights(std::string_view key) const;
  std::optional<std::string> answerParental(std::string_view key) const;

  mutable std::mutex m_mutex;
  std::optional<RightsError> m_rightsError;  // guarded by m_mutex
  ParentalState m_parental;                  // guarded by m_mutex
};

}  // namespace mediamgmnt
