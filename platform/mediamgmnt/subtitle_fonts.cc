// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/subtitle_fonts.h"

#include <glib.h>

#include <algorithm>
#include <functional>
#include <iterator>

#include "platform/mediamgmnt/xml_document.h"

namespace mediamgmnt {
namespace {

constexpr std::size_t kLargestDocument = 16U << 20U;
constexpr char kUsualType[] = "font/sfnt";

void forEachBelow(const xmlNode* node, std::string_view name, const std::function<void(const xmlNode*)>& use) {
  for (const xmlNode* child = node->children; child != nullptr; child = child->next) {
    if (child->type != XML_ELEMENT_NODE) continue;
    if (isElement(child, name)) use(child);
    forEachBelow(child, name, use);
  }
}

const xmlNode* findById(const xmlNode* root, std::string_view name, const std::string& id) {
  const xmlNode* found = nullptr;
  forEachBelow(root, name, [&](const xmlNode* each) {
    if (found == nullptr && attribute(each, "id") == id) found = each;
  });
  return found;
}

/// The element's base64 text as an address.
std::string addressOfData(const xmlNode* data) {
  std::string text = textOf(data);
  std::erase_if(text, [](unsigned char each) { return each <= ' '; });
  const std::string type = attribute(data, "type");
  return text.empty() ? "" : "data:" + (type.empty() ? kUsualType : type) + ";base64," + text;
}

/// "#id" is data elsewhere in the document; anything else lies outside.
std::string addressOfSource(const xmlNode* root, const std::string& source, const std::string& base) {
  if (source.empty()) return {};
  if (source.front() != '#') return resolvedAddress(base, source);
  const xmlNode* const data = findById(root, "data", source.substr(1));
  return data != nullptr ? addressOfData(data) : "";
}

std::string locationOf(const xmlNode* root, const xmlNode* font, const std::string& base) {
  if (std::string own = addressOfSource(root, attribute(font, "src"), base); !own.empty()) return own;
  if (const xmlNode* const data = findBelow(font, "data"); data != nullptr) return addressOfData(data);
  const xmlNode* const source = findBelow(font, "source");
  return source != nullptr ? addressOfSource(root, attribute(source, "src"), base) : "";
}

}  // namespace

/// Most documents define no font: they are not taken apart.
SubtitleFonts fontsDefinedIn(std::string_view document, const std::string& base) {
  if (document.find("family=") == std::string_view::npos) return {};
  const XmlDocument parsed(document, kLargestDocument);
  if (!parsed.isValid()) return {};
  SubtitleFonts fonts;
  forEachBelow(parsed.root(), "font", [&](const xmlNode* each) {
    SubtitleFont font{attribute(each, "family"), locationOf(parsed.root(), each, base)};
    if (!font.family.empty() && !font.location.empty()) fonts.push_back(std::move(font));
  });
  return fonts;
}

SubtitleFonts fontsNamedIn(std::string_view document, const SubtitleFonts& offered) {
  SubtitleFonts named;
  std::copy_if(offered.begin(), offered.end(), std::back_inserter(named),
               [=](const SubtitleFont& each) { return document.find(each.family) != std::string_view::npos; });
  return named;
}

std::string resolvedAddress(const std::string& base, const std::string& reference) {
  constexpr auto kFlags = static_cast<GUriFlags>(G_URI_FLAGS_PARSE_RELAXED | G_URI_FLAGS_ENCODED);
  char* const resolved = g_uri_resolve_relative(base.empty() ? nullptr : base.c_str(), reference.c_str(), kFlags, nullptr);
  std::string address = resolved != nullptr ? resolved : reference;
  g_free(resolved);
  return address;
}

}  // namespace mediamgmnt
