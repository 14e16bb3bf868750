// SPDX-License-Identifier: Apache-2.0
#include "platform/pluginhost/table_index.h"

#include <dlfcn.h>

#include <algorithm>
#include <bit>
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

/// Three letters and the length tell nearly all names of a table apart; reading every letter takes longer than what is looked for.
unsigned int letter(char code) { return static_cast<unsigned char>(code); }

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
    : m_tables(tables), m_properties(tables.properties, tables.propertyCount), m_methods(tables.methods, tables.methodCount) {}

template <typename Row>
TableIndex::Names::Names(const Row* rows, unsigned int count) : m_places(std::bit_ceil(2 * std::size_t{count} + 1)) {
  for (unsigned int row = 0; row < count; ++row) {
    Place& place = m_places[placeOf(rows[row].name)];
    if (place.row < 0) place = {rows[row].name, static_cast<int>(row)};
  }
}

int TableIndex::Names::find(std::string_view name) const { return m_places[placeOf(name)].row; }

/// @return where the name is, or the free place where it would be.
std::size_t TableIndex::Names::placeOf(std::string_view name) const {
  std::size_t at = name.size();
  if (at > 0) at += 5U * letter(name.front()) + 11U * letter(name[at / 2]) + 23U * letter(name.back());
  const std::size_t mask = m_places.size() - 1;
  for (at &= mask; m_places[at].row >= 0 && m_places[at].text != name;) at = (at + 1) & mask;
  return at;
}

int TableIndex::findProperty(std::string_view name) const { return m_properties.find(name); }

int TableIndex::findMethod(std::string_view name) const { return m_methods.find(name); }

}  // namespace pluginhost
