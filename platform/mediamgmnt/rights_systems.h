// SPDX-License-Identifier: Apache-2.0
// The rights systems that streams name, by the ids of the public DASH registry of content protection. Thread: any.
#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace mediamgmnt {

/// A stream that names any of these is taken up; whether there is a key for it is seen when one is needed. GStreamer opens nothing
/// for a system that no element claims, so what is not here is reported as missing rights at once.
inline constexpr std::array<std::string_view, 10> kRightsSystems = {
    "1077efec-c0b2-4d02-ace3-3c1e52e2fb4b",  // ClearKey, W3C
    "e2719d58-a985-b3c9-781a-b030af78d30e",  // ClearKey, DASH
    "edef8ba9-79d6-4ace-a3c8-27dcd51d21ed",  // Widevine
    "9a04f079-9840-4286-ab92-e65be0885f95",  // PlayReady
    "5e629af5-38da-4063-8977-97ffbd9902d4",  // Marlin
    "94ce86fb-07ff-4f43-adb8-93d2fa968ca2",  // FairPlay
    "adb41c24-2dbf-4a6d-958b-4457c0d27b95",  // Nagra
    "9a27dd82-fde2-4725-8cbc-4234aa06ec09",  // Verimatrix
    "f239e769-efa3-4850-9c16-a903c6932efb",  // Primetime
    "3d5e6d35-9b9a-41e8-b843-dd3c6e72c42c",  // ChinaDRM
};

inline bool isTakenUp(std::string_view system) {
  return std::find(kRightsSystems.begin(), kRightsSystems.end(), system) != kRightsSystems.end();
}

}  // namespace mediamgmnt
