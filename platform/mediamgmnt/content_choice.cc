// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/content_choice.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace mediamgmnt {
namespace {

constexpr std::string_view kDescriptorType = "application/vnd.oipf.contentaccessstreaming+xml";

constexpr std::array<std::string_view, 16> kPlayableTypes = {
    "video/mp4",
    "video/mpeg",
    "video/mp2t",
    "video/vnd.dlna.mpeg-tts",
    "audio/mpeg",
    "audio/mp3",
    "audio/mp4",
    "audio/aac",
    "audio/aacp",
    "application/mp4",
    "application/dash+xml",
    "application/vnd.apple.mpegurl",
    "application/x-mpegurl",
    "audio/mpegurl",
    "audio/x-mpegurl",
    kDescriptorType,
};

/// As registered with the W3C for "org.w3.clearkey", and the one that DASH manifests signal it with.
constexpr std::array<std::string_view, 2> kClearKeySystems = {"1077efec-c0b2-4d02-ace3-3c1e52e2fb4b",
                                                              "e2719d58-a985-b3c9-781a-b030af78d30e"};

std::string lowerCase(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return std::tolower(c); });
  return lower;
}

/// In lower case, without parameters.
std::string bareType(std::string_view mimeType) {
  std::string bare = lowerCase(mimeType.substr(0, mimeType.find(';')));
  while (!bare.empty() && std::isspace(static_cast<unsigned char>(bare.back()))) bare.pop_back();
  return bare;
}

bool startsWith(std::string_view text, std::string_view prefix) { return text.substr(0, prefix.size()) == prefix; }

bool isDownload(const DescriptorUrl& url) {
  const std::string type = lowerCase(url.transferType);
  return type == "playable_download" || type == "full_download";
}

bool isPlayable(const DescriptorUrl& url) {
  if (isDownload(url)) return false;
  const std::string type = bareType(url.mimeType);
  return !url.url.empty() &&
         (type.empty() || std::find(kPlayableTypes.begin(), kPlayableTypes.end(), type) != kPlayableTypes.end());
}

bool needsForeignRights(const DescriptorUrl& url) { return !url.drmSystemId.empty() && !isClearKeySystem(url.drmSystemId); }

const DescriptorRights* rightsFor(const DescriptorItem& item, const DescriptorUrl& url) {
  const auto found = std::find_if(item.rights.begin(), item.rights.end(), [&](const DescriptorRights& rights) {
    return lowerCase(rights.systemId) == lowerCase(url.drmSystemId);
  });
  if (found != item.rights.end()) return &*found;
  return item.rights.size() == 1 && url.drmSystemId.empty() ? item.rights.data() : nullptr;
}

}  // namespace

bool isDescriptorType(std::string_view mimeType) { return bareType(mimeType) == kDescriptorType; }

bool isClearKeySystem(std::string_view systemId) {
  constexpr std::string_view kPrefix = "urn:uuid:";
  const std::string lower = lowerCase(systemId);
  const std::string_view uuid = startsWith(lower, kPrefix) ? std::string_view(lower).substr(kPrefix.size()) : lower;
  return std::find(kClearKeySystems.begin(), kClearKeySystems.end(), uuid) != kClearKeySystems.end();
}

ContentChoice chooseContent(const ContentDescriptor& descriptor) {
  ContentChoice refused;
  for (const DescriptorItem& item : descriptor.items) {
    for (const DescriptorUrl& url : item.urls) {
      if (!isPlayable(url)) continue;
      const DescriptorRights* const rights = rightsFor(item, url);
      if (!needsForeignRights(url)) return {ChoiceVerdict::Playable, &item, &url, rights};
      if (refused.item == nullptr) refused = {ChoiceVerdict::NoRights, &item, &url, rights};
    }
  }
  return refused;
}

}  // namespace mediamgmnt
