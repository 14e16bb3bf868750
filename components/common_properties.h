// SPDX-License-Identifier: Apache-2.0
// The script properties that the three component classes share.
#pragma once

#include "components/av_components.h"
#include "components/script_rows.h"

namespace hbbtv_avc {

/// Writes "encoding", "encrypted", "componentTag" and "pid", in this order. @p common outlives @p object or the next call.
inline void showCommon(CorvelNativePropertyBase& object, const AVComponent& common) {
  rows::bindText(object, "encoding", common.encoding);
  object.setProperty("encrypted", common.encrypted != 0);
  object.setProperty("componentTag", static_cast<int>(common.componentTag));
  object.setProperty("pid", static_cast<int>(common.pid));
}

}  // namespace hbbtv_avc
