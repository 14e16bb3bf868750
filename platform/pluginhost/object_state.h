// SPDX-License-Identifier: Apache-2.0
// What the host keeps of one scriptable object.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/corvel_native.h"
#include "platform/pluginhost/property_store.h"
#include "platform/pluginhost/table_index.h"

/// Made and destroyed by CorvelNativePropertyBase. `tables` and `store` are set once, by install, before another thread knows the
/// object; the rest is safe from any thread.
struct CorvelNativeObjectState {
 public:
  explicit CorvelNativeObjectState(CorvelNativePropertyBase* parentObject);
  CorvelNativeObjectState(const CorvelNativeObjectState&) = delete;
  CorvelNativeObjectState& operator=(const CorvelNativeObjectState&) = delete;

  /// @return false when a table is null but its count is not 0; then nothing changes.
  bool install(const pluginhost::Tables& installed);

  /// @return the row of that name when it has that type, else -1.
  int findRow(std::string_view name, std::int32_t type) const;
  const CorvelNativeProperty* row(unsigned int index) const {
    return tables && index < tables->tables().propertyCount ? &tables->tables().properties[index] : nullptr;
  }
  const CorvelNativeMethod* method(unsigned int index) const {
    return tables && index < tables->tables().methodCount ? &tables->tables().methods[index] : nullptr;
  }

  /// Values without a row.
  void introduce(std::string_view name, bool value);
  std::optional<bool> introduced(std::string_view name) const;
  /// @return false when that name was not introduced.
  bool setIntroduced(std::string_view name, bool value);

  const std::uint64_t id;
  CorvelNativePropertyBase* const parent;  ///< for a debugger's eyes: it may dangle, so it is never dereferenced
  std::shared_ptr<const pluginhost::TableIndex> tables;
  pluginhost::PropertyStore store;

 private:
  struct Introduced {
    std::string name;
    bool value;
  };
  mutable std::mutex m_introducedMutex;  ///< a leaf
  std::vector<Introduced> m_introduced;  ///< guarded by m_introducedMutex
};
