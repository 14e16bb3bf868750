// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/track_choice.h"

#include <algorithm>

namespace mediamgmnt {
namespace {

/// The first of those with the greatest score above 0.
template <typename Score>
const Component* best(const ComponentList& list, Score score) {
  const Component* found = nullptr;
  int most = 0;
  for (const Component& each : list) {
    const int points = score(each);
    if (points <= most) continue;
    most = points;
    found = &each;
  }
  return found;
}

bool isSpecial(const Component& component) { return component.audioDescription || component.hearingImpaired; }

const Component* inLanguage(ComponentKind kind, const ComponentList& list, const std::string& language) {
  return best(list, [&](const Component& each) {
    if (each.kind != kind || each.language != language) return 0;
    return 1 + (isSpecial(each) ? 0 : 2) + (each.isMain ? 1 : 0);
  });
}

}  // namespace

const Component* defaultComponent(ComponentKind kind, const ComponentList& list, const Languages& languages) {
  for (const std::string& language : languages) {
    if (const Component* const found = inLanguage(kind, list, language)) return found;
  }
  return best(list, [&](const Component& each) {
    if (each.kind != kind) return 0;
    return 1 + (isSpecial(each) ? 0 : 2) + (each.isMain ? 4 : 0);
  });
}

const Component* matchingComponent(const ComponentList& list, const Component& wanted) {
  return best(list, [&](const Component& each) {
    if (each.kind != wanted.kind || each.language != wanted.language) return 0;
    int points = 1;
    if (each.audioDescription == wanted.audioDescription && each.hearingImpaired == wanted.hearingImpaired) points += 32;
    if (each.tag == wanted.tag && each.pid == wanted.pid) points += 16;
    if (each.label == wanted.label) points += 8;
    if (each.streamId == wanted.streamId) points += 4;
    if (each.encoding == wanted.encoding) points += 2;
    if (each.channels == wanted.channels) points += 1;
    return points;
  });
}

}  // namespace mediamgmnt
