// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/player_registry.h"

#include <utility>

#include "platform/mediamgmnt/player_core.h"

namespace mediamgmnt {

PlayerRegistry& PlayerRegistry::instance() {
  static PlayerRegistry* const registry = new PlayerRegistry;
  return *registry;
}

unsigned long PlayerRegistry::add() {
  std::lock_guard lock(m_mutex);
  const unsigned long handle = m_lastHandle + 1;
  m_players.emplace(handle, std::make_shared<PlayerCore>(handle));
  m_lastHandle = handle;
  return handle;
}

std::shared_ptr<PlayerCore> PlayerRegistry::find(unsigned long handle) const {
  std::lock_guard lock(m_mutex);
  const auto found = m_players.find(handle);
  return found != m_players.end() ? found->second : nullptr;
}

std::vector<std::shared_ptr<PlayerCore>> PlayerRegistry::all() const {
  std::lock_guard lock(m_mutex);
  std::vector<std::shared_ptr<PlayerCore>> players;
  for (const auto& [handle, player] : m_players) players.push_back(player);
  return players;
}

std::shared_ptr<PlayerCore> PlayerRegistry::remove(unsigned long handle) {
  std::lock_guard lock(m_mutex);
  const auto found = m_players.find(handle);
  if (found == m_players.end()) return nullptr;
  std::shared_ptr<PlayerCore> player = std::move(found->second);
  m_players.erase(found);
  return player;
}

}  // namespace mediamgmnt
