// SPDX-License-Identifier: Apache-2.0
// The way of sound to whoever asked to hear it in place of a device. Thread: any.
#pragma once

#include <gst/gst.h>

#include "platform/mediamgmnt/media_sound.h"

namespace mediamgmnt {

/// Null ends it. Returns when no call to the one before is running.
void setSoundTap(MediaSoundTap tap, void* user);

bool hasSoundTap();

/// A sink that keeps time like a device and hands what is due to the tap. @return null when an element is missing.
GstElement* makeTapOutput(unsigned long player);

}  // namespace mediamgmnt
