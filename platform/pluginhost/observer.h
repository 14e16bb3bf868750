// SPDX-License-Identifier: Apache-2.0
// Access to the observer that a shell has set.
#pragma once

#include "platform/pluginhost/shell.h"

namespace pluginhost {

/// For one report, within one statement or scope: while it lives, an observer that is removed is still there.
/// False when nobody watches, which costs one load. Thread: any.
class Watch {
 public:
  Watch();
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;
  ~Watch() {
    if (m_counted) end();
  }
  explicit operator bool() const { return m_observer != nullptr; }
  Observer* operator->() const { return m_observer; }

 private:
  static void end();

  Observer* m_observer = nullptr;
  bool m_counted = false;
};

}  // namespace pluginhost
