// SPDX-License-Identifier: Apache-2.0
// A plugin library that can make no object.
#include "host/corvel_native.h"

bool corvelCreatePlugin(std::shared_ptr<CorvelNativePluginBase>*) { return false; }
