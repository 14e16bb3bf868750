// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/clear_keys.h"

namespace mediamgmnt {
namespace {

std::optional<unsigned> digitOf(char c) {
  if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0');
  if (c >= 'a' && c <= 'f') return static_cast<unsigned>(c - 'a' + 10);
  if (c >= 'A' && c <= 'F') return static_cast<unsigned>(c - 'A' + 10);
  return std::nullopt;
}

}  // namespace

std::optional<std::array<std::uint8_t, 16>> parseHexKey(std::string_view text) {
  std::array<std::uint8_t, 16> bytes{};
  std::size_t digits = 0;
  for (const char c : text) {
    if (c == '-') continue;
    const std::optional<unsigned> digit = digitOf(c);
    if (!digit || digits == 2 * bytes.size()) return std::nullopt;
    std::uint8_t& byte = bytes[digits++ / 2];
    byte = static_cast<std::uint8_t>(byte << 4U | *digit);
  }
  if (digits != 2 * bytes.size()) return std::nullopt;
  return bytes;
}

std::string keyIdText(const KeyId& id) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  for (std::size_t i = 0; i < id.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    text += kDigits[id[i] >> 4U];
    text += kDigits[id[i] & 0x0FU];
  }
  return text;
}

ClearKeyStore& ClearKeyStore::instance() {
  static ClearKeyStore* const store = new ClearKeyStore;
  return *store;
}

void ClearKeyStore::set(const KeyId& id, const std::optional<ContentKey>& key) {
  std::lock_guard lock(m_mutex);
  m_keys.erase(id);
  if (key) m_keys.emplace(id, *key);
}

std::optional<ContentKey> ClearKeyStore::find(const KeyId& id) const {
  std::lock_guard lock(m_mutex);
  const auto found = m_keys.find(id);
  return found != m_keys.end() ? std::optional<ContentKey>(found->second) : std::nullopt;
}

}  // namespace mediamgmnt
