// SPDX-License-Identifier: Apache-2.0
// Finds a plugin object by its id, so that a queued event never holds a pointer to an object that may be gone.
#pragma once

#include <cstdint>
#include <memory>

#include "host/corvel_native.h"

namespace pluginhost {

/// An object and what keeps it alive while it is used.
struct PinnedObject {
  CorvelNativePluginBase* object;  ///< null when the object is gone
  std::shared_ptr<CorvelNativePluginBase> pin;
};

/// All plugin objects of the process. Thread: any.
class ObjectRegistry {
 public:
  static void add(std::uint64_t id, CorvelNativePluginBase* object);
  static void remove(std::uint64_t id);
  /// From now on the object is found as long as one of the shell's references to it lives, and the one that is found pins it.
  /// An object that was never adopted (its maker did not go through PluginLibrary) is found until its destruction and not pinned:
  /// whoever made it keeps it alive while events are handed out.
  static void adopt(std::uint64_t id, const std::shared_ptr<CorvelNativePluginBase>& object);
  static PinnedObject find(std::uint64_t id);

  /// True when the plugin object that this thread destroyed last has that id.
  static bool destroyedHere(std::uint64_t id);
};

}  // namespace pluginhost
