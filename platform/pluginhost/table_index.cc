// SPDX-License-Identifier: Apache-2.0
#include "platform/pluginhost/table_index.h"

#include <dlfcn.h>

#include <algorithm>
#include <map>
#include <mutex>

namespace pluginhost {
namespace {

struct Cache {
  std::mutex mutex;
  std::map<Tables, std::weak_ptr<const TableIndex>> indexes;
};

/// Never destroyed: objects may outlive this library's own exit routines.
Cache& cache() {
  static auto* const instance = new Cache;
  return *instance;
}

/// Ends an index with its last object. Its entry must go too: another library's table may be loaded at the same address later.
void forget(const TableIndex* index) {
  {
    const std::lock_guard lock(cache().mutex);
    const auto found = cache().indexes.find(index->tables());
    if (found != cache().indexes.end() && found->second.expired()) cache().indexes.erase(found);
  }
  delete index;
}

/// Where the loaded file begins that holds the address; null for none.
const void* fileOf(const void* address) {
  Dl_info info;
  return address != nullptr && dladdr(address, &info) != 0 ? info.dli_fbase : nullptr;
}

bool liesIn(const void* file, const Tables& tables) { return fileOf(tables.properties) == file || fileOf(tables.methods) == file; }

}  // namespace

std::shared_ptr<const TableIndex> TableIndex::shared(const Tables& tables) {
  const std::lock_guard lock(cache().mutex);
  auto& entry = cache().indexes[tables];
  if (auto living = entry.lock()) return living;
  std::shared_ptr<const TableIndex> made(new TableIndex(tables), forget);
  entry = made;
  return made;
}

bool TableIndex::inUseFromFileOf(const void* address) {
  const void* const file = fileOf(address);
  const std::lock_guard lock(cache().mutex);
  return std::any_of(cache().indexes.begin(), cache().indexes.end(),
                     [file](const auto& entry) { return !entry.second.expired() && liesIn(file, entry.first); });
}

TableIndex::TableIndex(const Tables& tables)
    : m_tables(tables),
      m_properties(sortedNames(tables.properties, tables.propertyCount)),
      m_methods(sortedNames(tables.methods, tables.methodCount)) {}

template <typename Row>
std::vector<TableIndex::Name> TableIndex::sortedNames(const Row* rows, unsigned int count) {
  std::vector<Name> names;
  names.reserve(count);
  for (std::uint32_t row = 0; row < count; ++row) names.push_back({rows[row].name, row});
  std::stable_sort(names.begin(), names.end(), [](const Name& left, const Name& right) { return left.text < right.text; });
  return names;
}

int TableIndex::find(const std::vector<Name>& names, std::string_view name) {
  const auto at = std::lower_bound(names.begin(), names.end(), name,
                                   [](const Name& entry, std::string_view wanted) { return entry.text < wanted; });
  return at != names.end() && at->text == name ? static_cast<int>(at->row) : -1;
}

int TableIndex::findProperty(std::string_view name) const { return find(m_properties, name); }

int TableIndex::findMethod(std::string_view name) const { return find(m_methods, name); }

}  // namespace pluginhost
