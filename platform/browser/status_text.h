// SPDX-License-Identifier: Apache-2.0
// What an A/V Control object is doing, in words for the status overlay. Script thread.
#pragma once

#include <string>

#include "host/corvel_native.h"

namespace browser {

/// A few lines, each ended by a line end.
std::string describeObject(CorvelNativePluginBase& object);

}  // namespace browser
