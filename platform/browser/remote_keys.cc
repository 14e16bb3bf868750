// SPDX-License-Identifier: Apache-2.0
#include "platform/browser/remote_keys.h"

#include <algorithm>

namespace browser {

namespace {

// The engine turns the keys below into key codes of their own. Some are HbbTV's already; the others, and those of F13 to F16,
// which no PC keyboard has and the engine knows all the same, are put right in the page (remote_keys.js).
const std::vector<RemoteKey> kKeys = {
    {"Left", "Left", 0, GDK_KEY_Left},
    {"Up", "Up", 0, GDK_KEY_Up},
    {"Right", "Right", 0, GDK_KEY_Right},
    {"Down", "Down", 0, GDK_KEY_Down},
    {"Enter", "Enter", 0, GDK_KEY_Return},
    {"Back", "Escape", GDK_KEY_Escape, GDK_KEY_Back},
    {"Red", "F1", GDK_KEY_F1, GDK_KEY_Red},
    {"Green", "F2", GDK_KEY_F2, GDK_KEY_Green},
    {"Yellow", "F3", GDK_KEY_F3, GDK_KEY_Yellow},
    {"Blue", "F4", GDK_KEY_F4, GDK_KEY_Blue},
    {"Play", "F5", GDK_KEY_F5, GDK_KEY_AudioPlay},
    {"Pause", "F6", GDK_KEY_F6, GDK_KEY_AudioPause},
    {"Stop", "F7", GDK_KEY_F7, GDK_KEY_AudioStop},
    {"Rewind", "F8", GDK_KEY_F8, GDK_KEY_AudioRewind},
    {"FastForward", "F9", GDK_KEY_F9, GDK_KEY_AudioForward},
    {"PlayPause", "F10", GDK_KEY_F10, GDK_KEY_F13},
    {"Info", "Insert", GDK_KEY_Insert, GDK_KEY_F14},
    {"ChannelUp", "Page Up", GDK_KEY_Page_Up, GDK_KEY_F15},
    {"ChannelDown", "Page Down", GDK_KEY_Page_Down, GDK_KEY_F16},
    {"Subtitles", "Ctrl+S", 0, kSubtitleKey},
    {"0", "0", 0, GDK_KEY_0},
    {"1", "1", 0, GDK_KEY_1},
    {"2", "2", 0, GDK_KEY_2},
    {"3", "3", 0, GDK_KEY_3},
    {"4", "4", 0, GDK_KEY_4},
    {"5", "5", 0, GDK_KEY_5},
    {"6", "6", 0, GDK_KEY_6},
    {"7", "7", 0, GDK_KEY_7},
    {"8", "8", 0, GDK_KEY_8},
    {"9", "9", 0, GDK_KEY_9},
};

}  // namespace

const std::vector<RemoteKey>& remoteKeys() { return kKeys; }

bool isRemoteKey(const std::string& name) { return sentKeyOf(name) != 0; }

std::string remoteKeyNames() {
  std::string out;
  for (const RemoteKey& key : kKeys) out += (out.empty() ? "" : ", ") + std::string(key.name);
  return out;
}

guint sentKeyOf(const std::string& name) {
  const auto found = std::find_if(kKeys.begin(), kKeys.end(), [&](const RemoteKey& key) { return name == key.name; });
  return found == kKeys.end() ? 0 : found->sentKey;
}

guint remoteKeyFor(guint pcKey) {
  const auto found = std::find_if(kKeys.begin(), kKeys.end(), [&](const RemoteKey& key) { return pcKey == key.pcKey; });
  return found == kKeys.end() ? pcKey : found->sentKey;
}

}  // namespace browser
