// SPDX-License-Identifier: Apache-2.0
// The open players by their handles.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <vector>

namespace mediamgmnt {

class PlayerCore;

/// Threads: any. The lock is held for a look-up only.
class PlayerRegistry {
 public:
  /// The process's registry. Never destroyed: a host may call the library while its static objects go away.
  static PlayerRegistry& instance();

  /// @return the handle of a new player: never 0, never one that was used before.
  unsigned long add();
  /// @return null for a handle that is not open.
  std::shared_ptr<PlayerCore> find(unsigned long handle) const;
  std::vector<std::shared_ptr<PlayerCore>> all() const;
  /// Takes the player out; find() does not know it any more.
  std::shared_ptr<PlayerCore> remove(unsigned long handle);

 private:
  mutable std::mutex m_mutex;
  std::map<unsigned long, std::shared_ptr<PlayerCore>> m_players;  // guarded by m_mutex
  unsigned long m_lastHandle = 0;                                  // guarded by m_mutex
};

}  // namespace mediamgmnt
