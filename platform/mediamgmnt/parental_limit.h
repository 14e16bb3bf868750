// SPDX-License-Identifier: Apache-2.0
// The viewer's limit: up to which age content is shown, and whose ratings count.
#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/mediamgmnt/rating.h"

namespace mediamgmnt {

struct ParentalLimit {
  std::optional<int> age;  ///< none: everything is shown
  std::string country;     ///< two letters, upper case; empty: all ratings count
};

/// Content is blocked when it is for an age above the limit. Of its ratings those of the viewer's country count; without any, those
/// of no country; without any, all. Of those that count the strictest decides; what is not understood decides nothing.
bool isBlocked(const std::vector<Rating>& ratings, const ParentalLimit& limit);

/// The process's limit. Threads: any.
class ParentalLimitStore {
 public:
  /// Never destroyed: streaming threads may outlive main().
  static ParentalLimitStore& instance();

  ParentalLimit get() const;
  void set(ParentalLimit limit);

 private:
  mutable std::mutex m_mutex;
  ParentalLimit m_limit;  // guarded by m_mutex
};

}  // namespace mediamgmnt
