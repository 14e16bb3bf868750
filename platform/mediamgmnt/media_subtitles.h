// SPDX-License-Identifier: Apache-2.0
// What the reference media library offers a shell about subtitles. A shell looks this name up at run time (dlsym) and does without
// where another media library lacks it. Thread: any.
#pragma once

#include "host/mediamgmnt.h"

extern "C" {
/// The viewer has changed the settings: every player is told by its settings callback, players to come when they register it. What
/// value and text mean is between the shell and its pages. @return 0 without settings, or when a player could not be told.
MEDIAMGMNT_API int mediaChangeSubtitleSettings(const _SubtitleSettingsParams* settings);
}
