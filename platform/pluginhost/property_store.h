// SPDX-License-Identifier: Apache-2.0
// The stored property values of one object: one slot for each row of its table.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "host/corvel_native.h"

namespace pluginhost {

/// Keeps values by row index. Numbers and booleans are read and written without a lock; texts share one lock per object.
///
/// Threads: any, after reset(). The row's type is the caller's to check: each operation serves rows of its own type only.
/// Ownership: a bound text stays the plugin's; a text that script wrote is a copy of the store's own.
class PropertyStore {
 public:
  PropertyStore() = default;
  PropertyStore(const PropertyStore&) = delete;
  PropertyStore& operator=(const PropertyStore&) = delete;

  /// Takes the default values of the rows. Not safe against concurrent use: it belongs to an object's making.
  void reset(const CorvelNativeProperty* rows, unsigned int count);

  bool boolean(unsigned int row) const;
  std::int32_t integer(unsigned int row) const;
  double number(unsigned int row) const;
  void setBoolean(unsigned int row, bool value);
  void setInteger(unsigned int row, std::int32_t value);
  void setNumber(unsigned int row, double value);

  /// The bound pointer (null when none is bound), or the store's own text, which lives until the row is written again.
  char* text(unsigned int row) const;
  void bindText(unsigned int row, char* text);
  void keepText(unsigned int row, std::string text);
  /// Copies the text's present content; "" where there is none. The lock keeps a bound buffer alive meanwhile: the plugin binds
  /// another one, or null, before it frees it.
  void readText(unsigned int row, _CorvelNativeVariant& out) const;

 private:
  struct Slot {
    std::atomic<std::uint64_t> bits{0};  ///< the number, or the address of the bound text
    std::unique_ptr<std::string> own;    ///< guarded by m_textMutex; takes precedence over a bound text
  };
  char* textLocked(const Slot& slot) const;

  std::unique_ptr<Slot[]> m_slots;
  mutable std::mutex m_textMutex;  ///< a leaf: nothing is called while it is held
};

}  // namespace pluginhost
