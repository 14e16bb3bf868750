// SPDX-License-Identifier: Apache-2.0
// The `native` object that the page-side element layer is written against. Script thread only.
#pragma once

#include <JavaScriptCore/JavaScript.h>

#include "platform/script/binding.h"

namespace script {

/// What the returned object's functions do is written at the top of av_element.js. Once the binding has gone they give undefined.
JSObjectRef makeNativeApi(Binding& binding);

}  // namespace script
