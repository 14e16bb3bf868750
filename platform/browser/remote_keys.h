// SPDX-License-Identifier: Apache-2.0
// The remote control on a PC keyboard. Window's process, main thread.
#pragma once

#include <gdk/gdk.h>
#include <gdk/gdkkeysyms.h>

#include <string>
#include <vector>

namespace browser {

/// The browser's own, as on a television: no page gets it.
inline constexpr guint kSubtitleKey = GDK_KEY_Subtitle;

struct RemoteKey {
  const char* name;      ///< as --keys and the help call it
  const char* keyboard;  ///< the PC key as the help calls it
  guint pcKey;           ///< its GDK key symbol; 0: the keyboard's own key of that name
  guint sentKey;         ///< the key symbol that the page's process gets; it makes the HbbTV key code of it
};

const std::vector<RemoteKey>& remoteKeys();
bool isRemoteKey(const std::string& name);
/// All names, separated by ", ".
std::string remoteKeyNames();
/// @return the key symbol to send for @p name, 0 when there is none.
guint sentKeyOf(const std::string& name);
/// @return the key symbol to send for a PC key; the same one for a key that stands for itself.
guint remoteKeyFor(guint pcKey);

}  // namespace browser
