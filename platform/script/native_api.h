// SPDX-License-Identifier: Apache-2.0
// The `native` object that the page-side element layer is written against. Script thread only.
#pragma once

#include <JavaScriptCore/JavaScript.h>

#include "platform/script/binding.h"

namespace script {

/// @p binding must outlive every call of the returned object's functions. What they do is written at the top of av_element.js.
JSObjectRef makeNativeApi(Binding& binding);

}  // namespace script
