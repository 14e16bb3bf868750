// SPDX-License-Identifier: Apache-2.0
// A plugin library whose objects are fake plugins. They raise an event while they are being made, as real ones do.
#include "tests/unit/pluginhost/fake_plugin.h"

bool corvelCreatePlugin(std::shared_ptr<CorvelNativePluginBase>* out) {
  const std::shared_ptr<FakePlugin> plugin(new FakePlugin);  // no make_shared: its unique symbol would pin the library
  if (!plugin->install()) return false;
  plugin->dispatchEvent("onMade", nullptr, 0);
  *out = plugin;
  return true;
}
