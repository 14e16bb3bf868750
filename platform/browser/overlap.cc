// SPDX-License-Identifier: Apache-2.0
#include "platform/browser/overlap.h"

#include <algorithm>
#include <iterator>

#include "platform/mediamgmnt/media_plane.h"

namespace browser {

namespace {

/// Do two stretches of a line share any of it from 0 to @p end? The page layer keeps their numbers far inside an int.
bool meet(int from, int length, int otherFrom, int otherLength, int end) {
  return std::max({from, otherFrom, 0}) < std::min({from + length, otherFrom + otherLength, end});
}

bool overlap(const script::PlaneWindow& one, const script::PlaneWindow& other) {
  return meet(one.x, one.width, other.x, other.width, kMediaPlaneWidth) &&
         meet(one.y, one.height, other.y, other.height, kMediaPlaneHeight);
}

}  // namespace

bool anyOverlap(const std::vector<script::PlaneWindow>& windows) {
  for (auto one = windows.begin(); one != windows.end(); ++one) {
    if (std::any_of(std::next(one), windows.end(), [&](const auto& other) { return overlap(*one, other); })) return true;
  }
  return false;
}

}  // namespace browser
