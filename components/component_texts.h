// SPDX-License-Identifier: Apache-2.0
// Component records back as text: the index key and the selection payload. Each value is followed by a "|", a null text is empty,
// the opaque flag is 0 or 1.
#pragma once

#include <string>

#include "components/av_components.h"

/// What the plugin's index maps are keyed by: the same record always gives the same key. It need not be the text that the record
/// was read from, since numbers are printed anew. Of any length.
std::string indexKey(const AVVideoComponent& component);
std::string indexKey(const AVAudioComponent& component);
std::string indexKey(const AVSubtitleComponent& component);

/// What tells the media library which component is meant. The aspect ratio has two decimals here, six in the key; `subtitleText2`
/// is left out on purpose.
std::string selectionPayload(const AVVideoComponent& component);
std::string selectionPayload(const AVAudioComponent& component);
std::string selectionPayload(const AVSubtitleComponent& component);
