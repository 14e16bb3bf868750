// SPDX-License-Identifier: Apache-2.0
// The first step of every thunk.
#pragma once

#include "plugin/av_control_plugin.h"

/// @return the plugin behind a script object; null when it is something else or has been deinitialised.
inline AVControlPlugin* livePlugin(CorvelNativePropertyBase* self) {
  AVControlPlugin* const plugin = AVControlPlugin::cast(CorvelNativePluginBase::cast(self));
  return plugin != nullptr && !plugin->deinitialized() ? plugin : nullptr;
}
