// SPDX-License-Identifier: Apache-2.0
// Where sound goes: to a real device where there is one, else into a silent sink that keeps time like one.
#pragma once

#include <gst/gst.h>

namespace mediamgmnt {

/// @return a floating element with one "sink" pad for raw audio, null when not even the silent one could be made. Thread: any.
GstElement* makeAudioOutput(unsigned long player);

/// Silences an output that was made here, or lets it be heard again.
void setMuted(GstElement* output, bool muted);

}  // namespace mediamgmnt
