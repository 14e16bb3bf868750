// SPDX-License-Identifier: Apache-2.0
// The one exported function of the plugin library.
#include "plugin/av_control_plugin.h"

extern "C" bool corvelCreatePlugin(std::shared_ptr<CorvelNativePluginBase>* out) {
  if (out == nullptr) return false;
  try {
    *out = AVControlPlugin::create();
    return true;
  } catch (...) {
    return false;  // no exception crosses the C entry point; the object and the lock are released on its way here
  }
}
