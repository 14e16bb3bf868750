// SPDX-License-Identifier: Apache-2.0
// The integer of a script argument whose type nobody checks.
#pragma once

#include "host/corvel_native.h"

/// An integer as it is, a boolean as 0 or 1, and 0 for whatever holds no integer: deliberate, such calls do not fail.
inline int integerOf(const _CorvelNativeVariant& value) {
  if (value.details.type == CORVEL_INTEGER) return value.integer;
  return value.details.type == CORVEL_BOOLEAN && value.boolean ? 1 : 0;
}
