// SPDX-License-Identifier: Apache-2.0
// The options about parental limits and keys, the same in every shell.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/shell/media_library.h"

namespace shell {

/// Keys are in no error text and in no trace. Main thread.
class AVCSHELL_API ProtectionOptions {
 public:
  /// Whether @p name ("--parental-limit") is one of these options; each takes a value.
  static bool isName(const std::string& name);
  /// What --help says about them, in the columns of a shell whose texts begin at column 30.
  static const char* helpText();

  /// @return false, with one line in @p error, for a value that makes no sense.
  bool read(const std::string& name, const std::string& value, std::string& error);
  /// Everything in one text, with the keys, for a process that plays for this one; never to be shown.
  std::string packed() const;
  /// Takes over what packed() gave. @return false, with one line in @p error, for anything else.
  bool unpack(const std::string& packed, std::string& error);
  /// Hands everything to the library. @return false, with one line in @p error, when it cannot do what is asked.
  bool apply(const MediaLibrary& library, std::string& error) const;

  const std::optional<int>& parentalLimit() const { return m_parentalLimit; }
  const std::string& parentalCountry() const { return m_parentalCountry; }

 private:
  bool readLimit(const std::string& value, std::string& error);
  bool readCountry(const std::string& value, std::string& error);
  bool readKey(const std::string& value, std::string& error);
  bool readKeyFile(const std::string& path, std::string& error);

  std::optional<int> m_parentalLimit;
  std::string m_parentalCountry;
  std::vector<std::pair<std::string, std::string>> m_clearKeys;  ///< key id, key
};

}  // namespace shell
