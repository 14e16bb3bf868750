// SPDX-License-Identifier: Apache-2.0
// The viewer's subtitle settings on their way to the page; nothing is kept or interpreted.
#include <algorithm>

#include "plugin/av_control_plugin.h"

void AVControlPlugin::subtitleSettingsChanged(unsigned long handle, _SubtitleSettingsParams params) {
  const auto plugin = pinPlugin(handle);
  if (plugin != nullptr) plugin->handleSubtitleSettingsChanged(params);
}

void AVControlPlugin::handleSubtitleSettingsChanged(_SubtitleSettingsParams params) {
  const int length = std::clamp<int>(params.textLength, 0, sizeof params.text);  // never past the record
  _CorvelNativeVariant args[2];
  cvnplUtil::set(static_cast<int>(params.value), args[0]);
  cvnplUtil::set(params.text, args[1], length, false);
  dispatchEvent("onSubtitleSettingsChanged", args, 2);
}
