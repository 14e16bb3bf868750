// SPDX-License-Identifier: Apache-2.0
// A plugin library that needs a function which no library of the process has.
#include "host/corvel_native.h"

extern "C" bool functionThatNobodyHas();

bool corvelCreatePlugin(std::shared_ptr<CorvelNativePluginBase>*) { return functionThatNobodyHas(); }
