// SPDX-License-Identifier: Apache-2.0
// The tables of one script class with an index by name, shared by all its objects.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "host/corvel_native.h"

namespace pluginhost {

/// What a class installs: where its tables lie and how long they are.
struct Tables {
  const CorvelNativeProperty* properties;
  unsigned int propertyCount;
  const CorvelNativeMethod* methods;
  unsigned int methodCount;

  auto operator<=>(const Tables&) const = default;  // NOLINT(modernize-use-nullptr): the generated comparison with 0
};

/// Finds rows by name. Immutable once made, so every thread may read it.
/// Ownership: points into the plugin's tables, which outlive every object that installed them.
class TableIndex {
 public:
  /// The index of these tables: the one that living objects share, or a new one. Thread: any.
  static std::shared_ptr<const TableIndex> shared(const Tables& tables);

  /// True while an object lives whose tables lie in the loaded file that holds @p address. Thread: any.
  static bool inUseFromFileOf(const void* address);

  explicit TableIndex(const Tables& tables);

  const Tables& tables() const { return m_tables; }
  /// @return the row, or -1. Of rows with one name the first is found.
  int findProperty(std::string_view name) const;
  int findMethod(std::string_view name) const;

 private:
  /// Open addressing: a plugin looks a row up by its name whenever it reads or sets a value of its own.
  class Names {
   public:
    template <typename Row>
    Names(const Row* rows, unsigned int count);
    int find(std::string_view name) const;

   private:
    struct Place {
      std::string_view text;
      int row = -1;
    };
    std::size_t placeOf(std::string_view name) const;
    std::vector<Place> m_places;  ///< a power of two, and more than twice as many as there are rows
  };

  const Tables m_tables;
  const Names m_properties;
  const Names m_methods;
};

}  // namespace pluginhost
