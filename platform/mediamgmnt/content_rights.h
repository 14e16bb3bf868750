// SPDX-License-Identifier: Apache-2.0
// What a DASH manifest says about the rights to its content: which keys it needs, where a licence is to be had, whom to name when
// there is none. Plain data. Thread: any.
#pragma once

#include <string>
#include <vector>

#include "platform/mediamgmnt/clear_keys.h"
#include "platform/mediamgmnt/dash_manifest.h"

namespace mediamgmnt {

/// Keys that can be had together.
struct LicenceOffer {
  std::string url;  ///< as written
  std::vector<KeyId> keyIds;
};

/// Of ClearKey only; one for each address.
std::vector<LicenceOffer> licenceOffers(const DashManifest& manifest);

/// Whose rights are missing. Any text may be empty.
struct RightsParty {
  std::string systemId;   ///< "urn:uuid:…"
  std::string issuerUrl;  ///< as written
};

/// ClearKey where the manifest names it, since that is what was tried; else the first rights system that it names.
RightsParty rightsParty(const DashManifest& manifest);

}  // namespace mediamgmnt
