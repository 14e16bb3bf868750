// SPDX-License-Identifier: Apache-2.0
// A GStreamer element that decrypts samples with clear keys.
#pragma once

#include <gst/gst.h>

#include <memory>

#include "platform/mediamgmnt/key_session.h"

namespace mediamgmnt {

inline constexpr char kDecryptorName[] = "avcclearkey";

/// Makes GStreamer put it behind demuxers whose samples are encrypted. @return false when GStreamer refuses.
bool registerClearKeyDecryptor();

/// Gives a decryptor the keys of its source, before data reach it. Thread: any.
void giveKeys(GstElement* decryptor, std::shared_ptr<KeySession> keys);

}  // namespace mediamgmnt
