// SPDX-License-Identifier: Apache-2.0
// Reads a content-access-streaming descriptor: the XML document by which a portal tells where a title is, how it is rated and by
// which rights systems it is protected.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mediamgmnt {

/// One place where the title can be had.
struct DescriptorUrl {
  std::string url;
  std::string mimeType;
  std::string drmSystemId;  ///< empty: no rights needed, as far as the portal knows
  std::string transferType;
};

struct DescriptorRating {
  std::string scheme;
  std::string region;
  std::string value;
};

/// What one rights system needs to know about the title.
struct DescriptorRights {
  std::string systemId;
  std::string contentId;
  std::string issuerUrl;
};

struct DescriptorItem {
  std::string title;
  std::string contentId;
  std::vector<DescriptorUrl> urls;
  std::vector<DescriptorRating> ratings;
  std::vector<DescriptorRights> rights;
};

struct ContentDescriptor {
  std::vector<DescriptorItem> items;  ///< never empty
};

/// No descriptor is larger.
inline constexpr std::size_t kLargestDescriptor = 256 * 1024;

/// Elements are known by their local names, in any namespace or none: portals disagree about it. Attributes are known whatever
/// their case. Nothing outside @p text is looked at, and a document that declares entities is refused.
/// @return nothing, and in @p problem one line that says why, for a text that is no descriptor. Thread: any.
std::optional<ContentDescriptor> readContentDescriptor(std::string_view text, std::string& problem);

}  // namespace mediamgmnt
