// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/content_rights.h"

#include <algorithm>
#include <functional>
#include <optional>

#include "platform/mediamgmnt/content_choice.h"

namespace mediamgmnt {
namespace {

constexpr std::string_view kCommonScheme = "urn:mpeg:dash:mp4protection:2011";

using Protections = std::vector<DashProtection>;

/// The set's own and those of its representations, together: they are about the same tracks.
Protections protectionsOf(const DashAdaptationSet& set) {
  Protections all = set.protections;
  for (const DashRepresentation& each : set.representations) {
    all.insert(all.end(), each.protections.begin(), each.protections.end());
  }
  return all;
}

void forEachSet(const DashManifest& manifest, const std::function<void(const Protections&)>& use) {
  for (const DashPeriod& period : manifest.periods) {
    for (const DashAdaptationSet& set : period.adaptationSets) use(protectionsOf(set));
  }
}

void addKeyIds(const Protections& protections, std::vector<KeyId>& ids) {
  for (const DashProtection& each : protections) {
    const auto id = parseHexKey(each.defaultKid);
    if (id && std::find(ids.begin(), ids.end(), *id) == ids.end()) ids.push_back(*id);
  }
}

LicenceOffer& offerAt(const std::string& url, std::vector<LicenceOffer>& offers) {
  const auto found = std::find_if(offers.begin(), offers.end(), [&](const LicenceOffer& each) { return each.url == url; });
  if (found != offers.end()) return *found;
  return offers.emplace_back(LicenceOffer{url, {}});
}

}  // namespace

std::vector<LicenceOffer> licenceOffers(const DashManifest& manifest) {
  std::vector<LicenceOffer> offers;
  forEachSet(manifest, [&](const Protections& protections) {
    for (const DashProtection& each : protections) {
      if (isClearKeySystem(each.scheme) && !each.licenceUrl.empty())
        addKeyIds(protections, offerAt(each.licenceUrl, offers).keyIds);
    }
  });
  std::erase_if(offers, [](const LicenceOffer& each) { return each.keyIds.empty(); });
  return offers;
}

RightsParty rightsParty(const DashManifest& manifest) {
  std::optional<RightsParty> first;
  std::optional<RightsParty> clearKey;
  forEachSet(manifest, [&](const Protections& protections) {
    for (const DashProtection& each : protections) {
      if (each.scheme == kCommonScheme) continue;
      std::optional<RightsParty>& party = isClearKeySystem(each.scheme) ? clearKey : first;
      if (!party) party = RightsParty{each.scheme, each.licenceUrl};
    }
  });
  return clearKey.value_or(first.value_or(RightsParty{}));
}

}  // namespace mediamgmnt
