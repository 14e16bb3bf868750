// SPDX-License-Identifier: Apache-2.0
// C++ functions with state as script functions. Script thread only.
#pragma once

#include <JavaScriptCore/JavaScript.h>

#include <functional>
#include <span>

namespace script {

/// Sets the exception to throw one; then its result is not looked at.
using Callable = std::function<JSValueRef(std::span<const JSValueRef> arguments, JSValueRef* exception)>;

/// The function throws a TypeError when called with fewer than @p required arguments. What @p callable refers to must outlive every
/// call; the function itself lives until the collector finds it or its context ends.
JSObjectRef makeCallable(JSContextRef context, std::size_t required, Callable callable);

}  // namespace script
