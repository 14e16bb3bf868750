// SPDX-License-Identifier: Apache-2.0
// Do objects share a part of the video plane? Any thread, no failures.
#pragma once

#include <vector>

#include "platform/script/binding.h"

namespace browser {

/// Is there a part of the plane in two of @p windows?
bool anyOverlap(const std::vector<script::PlaneWindow>& windows);

}  // namespace browser
