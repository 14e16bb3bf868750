// SPDX-License-Identifier: Apache-2.0
// Watches the ratings of what a player presents: covers its picture the moment they exceed the limit, and says what the page is to
// be told.
#pragma once

#include <array>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "platform/mediamgmnt/parental_limit.h"
#include "platform/mediamgmnt/protection_facts.h"
#include "platform/mediamgmnt/rating.h"
#include "platform/mediamgmnt/video_plane.h"

namespace mediamgmnt {

/// Threads: setRatings() any: a streaming thread calls it before it hands on what is rated, so that no picture slips through; all
/// else on the control thread. Borrows surface and facts. Locks: its own, then the plane's; @p wake is called with none held.
class ParentalGuard {
 public:
  /// @p wake is called, on any thread, when word() has something to tell.
  ParentalGuard(media::VideoSurface& surface, ProtectionFacts& facts, std::function<void()> wake);

  /// Where the picture is when it may be seen.
  void setRect(media::Rect rect);
  /// Whom the ratings are about. Empty where nobody says.
  void setContent(const std::string& contentId, const std::string& systemId);
  void setRatings(RatingSource source, std::vector<Rating> ratings);
  /// Judges again by the present limit.
  void judge();
  /// Nothing is rated, as after a new source.
  void forget();

  bool isBlocked() const;

  /// The status word that tells what has changed since the last call, with the facts to go with it; null when nothing has.
  const char* takeWord();

 private:
  void judgeLocked();
  std::vector<Rating> allRatingsLocked() const;

  media::VideoSurface& m_surface;
  ProtectionFacts& m_facts;
  const std::function<void()> m_wake;
  mutable std::mutex m_mutex;
  media::Rect m_rect = kWholePlane;              // guarded by m_mutex, like all below
  std::array<std::vector<Rating>, 3> m_ratings;  ///< index is RatingSource
  std::string m_contentId;
  std::string m_systemId;
  bool m_blocked = false;

  static constexpr media::Rect kWholePlane{0, 0, 1280, 720};
};

}  // namespace mediamgmnt
