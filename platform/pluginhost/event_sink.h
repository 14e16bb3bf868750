// SPDX-License-Identifier: Apache-2.0
// Where raised events go: the process's event queue, if a shell has made one.
#pragma once

#include "platform/pluginhost/shell.h"

namespace pluginhost {

/// Thread: any. Never waits for the script thread. @return false when there is no queue; the event is lost.
bool enqueueEvent(Event event);

}  // namespace pluginhost
