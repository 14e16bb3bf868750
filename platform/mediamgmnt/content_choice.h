// SPDX-License-Identifier: Apache-2.0
// Chooses, from the places that a descriptor names, the one to play.
#pragma once

#include <string>
#include <string_view>

#include "platform/mediamgmnt/content_descriptor.h"

namespace mediamgmnt {

/// The MIME type of descriptors, whatever parameters follow it and whatever its case. Thread: any, like all here.
bool isDescriptorType(std::string_view mimeType);

/// "urn:uuid:…" of ClearKey, the only rights system that is served, in both of its registered forms.
bool isClearKeySystem(std::string_view systemId);

enum class ChoiceVerdict {
  Playable,
  NoRights,  ///< what could be played otherwise wants a rights system that is not served
  NothingPlayable,
};

/// Pointers into the descriptor.
struct ContentChoice {
  ChoiceVerdict verdict = ChoiceVerdict::NothingPlayable;
  const DescriptorItem* item = nullptr;      ///< null when nothing is playable
  const DescriptorUrl* url = nullptr;        ///< likewise
  const DescriptorRights* rights = nullptr;  ///< of the url's rights system, or the item's only ones; may be null
};

/// The first ContentURL, in the order of the document, that is of a playable type and wants no foreign rights system. A ContentURL
/// without a type is given a try.
ContentChoice chooseContent(const ContentDescriptor& descriptor);

}  // namespace mediamgmnt
