// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/xml_document.h"

#include <libxml/parser.h>

#include <mutex>

namespace mediamgmnt {
namespace {

constexpr int kOptions = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_NOCDATA;
constexpr std::string_view kBlanks = " \t\r\n";

std::string_view nameOf(const xmlChar* name) {
  return name != nullptr ? std::string_view(reinterpret_cast<const char*>(name)) : std::string_view();
}

std::string trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return std::string(text.substr(first, text.find_last_not_of(kBlanks) - first + 1));
}

std::string take(xmlChar* text) {
  if (text == nullptr) return {};
  std::string taken(reinterpret_cast<const char*>(text));
  xmlFree(text);
  return taken;
}

void initializeOnce() {
  static std::once_flag done;
  std::call_once(done, xmlInitParser);
}

/// A few of them refer to each other, and a small text becomes gigabytes.
bool declaresEntities(const xmlDoc& document) { return document.intSubset != nullptr && document.intSubset->entities != nullptr; }

}  // namespace

XmlDocument::XmlDocument(std::string_view text, std::size_t sizeLimit) {
  if (text.empty() || text.size() > sizeLimit) return;
  initializeOnce();
  m_document.reset(xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr, kOptions));
  if (m_document != nullptr && declaresEntities(*m_document)) m_document.reset();
}

const xmlNode* XmlDocument::root() const { return m_document != nullptr ? xmlDocGetRootElement(m_document.get()) : nullptr; }

bool isElement(const xmlNode* node, std::string_view name) {
  return node != nullptr && node->type == XML_ELEMENT_NODE && nameOf(node->name) == name;
}

std::string attribute(const xmlNode* node, const char* name) {
  for (const xmlAttr* each = node != nullptr ? node->properties : nullptr; each != nullptr; each = each->next) {
    if (nameOf(each->name) == name) return take(xmlNodeListGetString(node->doc, each->children, 1));
  }
  return {};
}

std::string textOf(const xmlNode* node) { return node != nullptr ? trimmed(take(xmlNodeGetContent(node))) : std::string(); }

void forEachChild(const xmlNode* node, std::string_view name, const std::function<void(const xmlNode*)>& use) {
  for (const xmlNode* child = node != nullptr ? node->children : nullptr; child != nullptr; child = child->next) {
    if (isElement(child, name)) use(child);
  }
}

std::string childText(const xmlNode* node, std::string_view name) {
  for (const xmlNode* child = node != nullptr ? node->children : nullptr; child != nullptr; child = child->next) {
    if (isElement(child, name)) return textOf(child);
  }
  return {};
}

const xmlNode* findBelow(const xmlNode* node, std::string_view name) {
  for (const xmlNode* child = node != nullptr ? node->children : nullptr; child != nullptr; child = child->next) {
    if (isElement(child, name)) return child;
    if (const xmlNode* const found = findBelow(child, name)) return found;
  }
  return nullptr;
}

}  // namespace mediamgmnt
