// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/mediamgmnt.h"

namespace quiet {

/// Calls the registered callback on the calling thread, which plays the library's part.
void sendWord(unsigned long handle, const char* word);
/// Called on the player's worker whenever "SEEK" arrives.
void onSeek(void (*function)());
/// From now on every player has @p count audio components, from ready texts. Before any thread reads.
void listAudio(int count);
/// How often a property was read so far.
unsigned long reads();

}  // namespace quiet
