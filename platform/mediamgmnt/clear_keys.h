// SPDX-License-Identifier: Apache-2.0
// Content keys and their ids, and the ones that the viewer's shell has given.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace mediamgmnt {

using KeyId = std::array<std::uint8_t, 16>;

/// Never printed, never traced.
using ContentKey = std::array<std::uint8_t, 16>;

using KeyMap = std::map<KeyId, ContentKey>;

/// 32 hexadecimal digits of either case, with hyphens or without. @return nothing for any other text. Thread: any, like all here.
std::optional<std::array<std::uint8_t, 16>> parseHexKey(std::string_view text);

/// As manifests write it: "00112233-4455-6677-8899-aabbccddeeff".
std::string keyIdText(const KeyId& id);

/// The process's own keys.
class ClearKeyStore {
 public:
  /// Never destroyed: streaming threads may outlive main().
  static ClearKeyStore& instance();

  /// In the place of an earlier key for the same id; nothing takes that away.
  void set(const KeyId& id, const std::optional<ContentKey>& key);
  std::optional<ContentKey> find(const KeyId& id) const;

 private:
  mutable std::mutex m_mutex;
  KeyMap m_keys;  // guarded by m_mutex
};

}  // namespace mediamgmnt
