// SPDX-License-Identifier: Apache-2.0
// The viewer's preferred languages, process-wide, and the mark that the next presentations start with the defaults. Thread: any.
#pragma once

#include <array>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "platform/mediamgmnt/component.h"

namespace mediamgmnt {

using Languages = std::vector<std::string>;

class Preferences {
 public:
  static Preferences& instance();

  /// Languages in the order of preference, separated by commas or blanks, in any form of ISO 639; "" for none.
  void setLanguages(ComponentKind kind, std::string_view list);
  Languages languages(ComponentKind kind) const;

  /// Presentations that begin from now on start with the default component of that kind, whatever was selected before.
  void selectDefaults(ComponentKind kind);
  /// Grows with each selectDefaults(); a selection that was made under a smaller one does not outlive its presentation.
  unsigned long era(ComponentKind kind) const;

 private:
  mutable std::mutex m_mutex;
  std::array<Languages, kComponentKinds.size()> m_languages;      // guarded by m_mutex
  std::array<unsigned long, kComponentKinds.size()> m_eras = {};  // guarded by m_mutex
};

}  // namespace mediamgmnt
