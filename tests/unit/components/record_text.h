// SPDX-License-Identifier: Apache-2.0
// Record texts as a media library sends them, and owners for the records that are read from them.
#pragma once

#include <memory>
#include <string>

#include "components/component_records.h"

struct RecordDeleter {
  void operator()(AVVideoComponent* record) const { hlpDestroyAVVideoComponent(record); }
  void operator()(AVAudioComponent* record) const { hlpDestroyAVAudioComponent(record); }
  void operator()(AVSubtitleComponent* record) const { hlpDestroyAVSubtitleComponent(record); }
};

using OwnedVideo = std::unique_ptr<AVVideoComponent, RecordDeleter>;
using OwnedAudio = std::unique_ptr<AVAudioComponent, RecordDeleter>;
using OwnedSubtitle = std::unique_ptr<AVSubtitleComponent, RecordDeleter>;

inline OwnedVideo readVideo(std::string text) { return OwnedVideo(hlpCreateAVVideoComponent(text.data())); }
inline OwnedAudio readAudio(std::string text) { return OwnedAudio(hlpCreateAVAudioComponent(text.data())); }
inline OwnedSubtitle readSubtitle(std::string text) { return OwnedSubtitle(hlpCreateAVSubtitleComponent(text.data())); }

/// Nine common fields, each one told apart.
inline std::string commonText(int type, const std::string& tag = "5") {
  return std::to_string(type) + "|codec|1|" + tag + "|256|one|two|1|three|";
}
inline std::string videoText(const std::string& tag = "5") { return commonText(0, tag) + "1.78|"; }
inline std::string audioText(const std::string& tag = "5") { return commonText(1, tag) + "main|deu|1|6|"; }
inline std::string subtitleText(const std::string& tag = "5") { return commonText(2, tag) + "first|eng|second|1|"; }
