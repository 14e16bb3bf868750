// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/key_session.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace mediamgmnt {
namespace {

/// A page hears of a licence that does not come before it would hear of a lost connection.
constexpr std::chrono::seconds kLongestWait{7};

}  // namespace

void KeySession::expectLicence() {
  std::lock_guard lock(m_mutex);
  ++m_expected;
}

void KeySession::licenceCame(const KeyMap& keys) {
  std::lock_guard lock(m_mutex);
  m_keys.insert(keys.begin(), keys.end());
  --m_expected;
  m_changed.notify_all();
}

void KeySession::end() {
  std::lock_guard lock(m_mutex);
  m_ended = true;
  m_changed.notify_all();
}

void KeySession::wake() {
  std::lock_guard lock(m_mutex);
  m_changed.notify_all();
}

/// The shell's own keys come first: whoever gives one wants it used.
std::optional<ContentKey> KeySession::findLocked(const KeyId& id) const {
  if (const auto key = ClearKeyStore::instance().find(id)) return key;
  const auto found = m_keys.find(id);
  return found != m_keys.end() ? std::optional<ContentKey>(found->second) : std::nullopt;
}

std::optional<ContentKey> KeySession::find(const KeyId& id, const std::atomic<bool>& cancelled) {
  std::unique_lock lock(m_mutex);
  m_changed.wait_for(lock, kLongestWait, [&] { return m_ended || cancelled || m_expected <= 0 || findLocked(id); });
  const std::optional<ContentKey> key = findLocked(id);
  if (key) m_used.try_emplace(id, false);
  return key;
}

void KeySession::noteFits(const KeyId& id) {
  std::lock_guard lock(m_mutex);
  m_used[id] = true;
}

bool KeySession::isProven(const KeyId& id) {
  std::lock_guard lock(m_mutex);
  const auto found = m_used.find(id);
  return found != m_used.end() && found->second;
}

std::optional<KeyId> KeySession::unproven() {
  std::lock_guard lock(m_mutex);
  const auto found = std::find_if(m_used.begin(), m_used.end(), [](const auto& each) { return !each.second; });
  return found != m_used.end() ? std::optional<KeyId>(found->first) : std::nullopt;
}

void KeySession::report(KeyFault fault, const KeyId& id) {
  {
    std::lock_guard lock(m_mutex);
    if (m_ended || std::exchange(m_reported, true)) return;
  }
  m_report(fault, id);
}

}  // namespace mediamgmnt
