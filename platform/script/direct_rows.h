// SPDX-License-Identifier: Apache-2.0
// A row as one script function for the page layer: called with the native object's script object as its receiver, it costs nothing
// but the engine's way into a native function. The accessors of ScriptClass do the same for whoever has the object, and pay for
// the engine's look-up of the name, which it never remembers for objects of an embedder. Script thread only.
#pragma once

#include <JavaScriptCore/JavaScript.h>

namespace script {

/// Another receiver than an object of ours reads undefined, and so does one whose native object has gone.
/// @return null for a row that is too far back in its table: it is read by its name.
JSObjectRef makeDirectReader(JSContextRef context, unsigned int row);
/// The same for a row of texts, which the caller keeps: while an object's text is the one that it gave last, it gives itself.
/// Making a text costs more than the read.
JSObjectRef makeDirectTextReader(JSContextRef context, unsigned int row);
/// A method row. @return null for one that is too far back in its table: it is called by its name.
JSObjectRef makeDirectMethod(JSContextRef context, unsigned int row);

}  // namespace script
