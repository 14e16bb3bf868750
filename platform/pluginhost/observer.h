// SPDX-License-Identifier: Apache-2.0
// Access to the observer that a shell has set.
#pragma once

#include "platform/pluginhost/shell.h"

namespace pluginhost {

/// @return null when nobody watches, which costs one load. Thread: any.
Observer* observer();

}  // namespace pluginhost
