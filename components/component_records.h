// SPDX-License-Identifier: Apache-2.0
// Makes component records from their text form, and frees them.
//
// Nine common fields (type, encoding, encrypted, componentTag, pid, opaqueText1, opaqueText2, opaqueFlag, opaqueText3), then
//   video     aspectRatio
//   audio     audioText, language, audioDescription, audioChannels
//   subtitle  subtitleText1, language, subtitleText2, hearingImpaired
// each closed by a "|". What follows the last one is ignored.
#pragma once

#include "components/av_components.h"

/// @return a record that the caller owns; null for a null text, for one with "NOT_AVAILABLE" in it, and for one that ends before
/// its last field does. The text is only read.
AVVideoComponent* hlpCreateAVVideoComponent(char* text);
AVAudioComponent* hlpCreateAVAudioComponent(char* text);
AVSubtitleComponent* hlpCreateAVSubtitleComponent(char* text);

/// @p component is not null; its common record and its texts may be.
void hlpDestroyAVVideoComponent(AVVideoComponent* component);
void hlpDestroyAVAudioComponent(AVAudioComponent* component);
void hlpDestroyAVSubtitleComponent(AVSubtitleComponent* component);
