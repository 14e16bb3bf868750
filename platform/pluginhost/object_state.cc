// SPDX-License-Identifier: Apache-2.0
#include "platform/pluginhost/object_state.h"

#include <algorithm>
#include <atomic>

namespace {

constinit std::atomic<std::uint64_t> g_lastId{0};

}  // namespace

CorvelNativeObjectState::CorvelNativeObjectState(CorvelNativePropertyBase* parentObject)
    : id(g_lastId.fetch_add(1, std::memory_order_relaxed) + 1), parent(parentObject) {}

bool CorvelNativeObjectState::install(const pluginhost::Tables& installed) {
  if (installed.properties == nullptr && installed.propertyCount != 0) return false;
  if (installed.methods == nullptr && installed.methodCount != 0) return false;
  tables = pluginhost::TableIndex::shared(installed);
  store.reset(installed.properties, installed.propertyCount);
  return true;
}

int CorvelNativeObjectState::findRow(std::string_view name, std::int32_t type) const {
  const int found = tables ? tables->findProperty(name) : -1;
  return found >= 0 && tables->tables().properties[found].defaultValue.details.type == type ? found : -1;
}

void CorvelNativeObjectState::introduce(std::string_view name, bool value) {
  if (setIntroduced(name, value)) return;
  const std::lock_guard lock(m_introducedMutex);
  m_introduced.push_back({std::string(name), value});
}

std::optional<bool> CorvelNativeObjectState::introduced(std::string_view name) const {
  const std::lock_guard lock(m_introducedMutex);
  const auto found =
      std::find_if(m_introduced.begin(), m_introduced.end(), [name](const auto& entry) { return entry.name == name; });
  return found == m_introduced.end() ? std::nullopt : std::optional(found->value);
}

bool CorvelNativeObjectState::setIntroduced(std::string_view name, bool value) {
  const std::lock_guard lock(m_introducedMutex);
  const auto found =
      std::find_if(m_introduced.begin(), m_introduced.end(), [name](const auto& entry) { return entry.name == name; });
  if (found == m_introduced.end()) return false;
  found->value = value;
  return true;
}
