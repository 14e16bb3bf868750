// SPDX-License-Identifier: Apache-2.0
#include "platform/pluginhost/object_registry.h"

#include <mutex>
#include <unordered_map>

namespace pluginhost {
namespace {

struct Entry {
  CorvelNativePluginBase* object;
  std::weak_ptr<CorvelNativePluginBase> owner;
  bool adopted;
};

struct Registry {
  std::mutex mutex;
  std::unordered_map<std::uint64_t, Entry> entries;
};

/// Never destroyed: objects may outlive this library's own exit routines.
Registry& registry() {
  static auto* const instance = new Registry;
  return *instance;
}

constinit thread_local std::uint64_t t_lastDestroyed = 0;

}  // namespace

void ObjectRegistry::add(std::uint64_t id, CorvelNativePluginBase* object) {
  const std::lock_guard lock(registry().mutex);
  registry().entries[id] = {object, {}, false};
}

void ObjectRegistry::remove(std::uint64_t id) {
  t_lastDestroyed = id;
  const std::lock_guard lock(registry().mutex);
  registry().entries.erase(id);
}

void ObjectRegistry::adopt(std::uint64_t id, const std::shared_ptr<CorvelNativePluginBase>& object) {
  const std::lock_guard lock(registry().mutex);
  registry().entries[id] = {object.get(), object, true};
}

PinnedObject ObjectRegistry::find(std::uint64_t id) {
  const std::lock_guard lock(registry().mutex);
  const auto found = registry().entries.find(id);
  if (found == registry().entries.end()) return {nullptr, nullptr};
  const Entry& entry = found->second;
  if (!entry.adopted) return {entry.object, nullptr};
  auto pin = entry.owner.lock();
  auto* const object = pin.get();
  return {object, std::move(pin)};
}

bool ObjectRegistry::destroyedHere(std::uint64_t id) { return t_lastDestroyed == id; }

}  // namespace pluginhost
