// SPDX-License-Identifier: Apache-2.0
// Finds tracks in lists: the one that a page has chosen, and the one to begin with. No state. Thread: any.
#pragma once

#include "platform/mediamgmnt/component.h"
#include "platform/mediamgmnt/preferences.h"

namespace mediamgmnt {

/// The component that a viewer with these preferences gets: the first language that is there, undescribed before described; without
/// one of them what the source marks as main, then its first. @return null when there is none of that kind.
const Component* defaultComponent(ComponentKind kind, const ComponentList& list, const Languages& languages);

/// The component of @p list that is the same to a viewer as @p wanted, or comes nearest: of the same language at least for sound
/// and subtitles. @return null when there is none.
const Component* matchingComponent(const ComponentList& list, const Component& wanted);

}  // namespace mediamgmnt
