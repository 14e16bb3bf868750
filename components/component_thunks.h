// SPDX-License-Identifier: Apache-2.0
// The functions behind the component methods of the A/V Control object. False: the access failed. Thread: script.
#pragma once

#include "host/corvel_native.h"

/// Without an argument or with undefined: the collection of all. With an integer: the one of that component type, null for an
/// unknown one. Fails for anything else.
bool getComponentsThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* args, unsigned int argc,
                        _CorvelNativeVariant* result);
/// The argument's integer is taken whatever its type is (integerOf).
bool getCurrentActiveComponentsThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* args, unsigned int argc,
                                     _CorvelNativeVariant* result);
/// These take a component object or a component type; they fail for anything else, and leave the result alone.
bool selectComponentThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* args, unsigned int argc,
                          _CorvelNativeVariant* result);
bool unselectComponentThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* args, unsigned int argc,
                            _CorvelNativeVariant* result);
