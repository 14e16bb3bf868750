// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/content_descriptor.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <memory>

namespace mediamgmnt {
namespace {

using Document = std::unique_ptr<xmlDoc, void (*)(xmlDoc*)>;
using Context = std::unique_ptr<xmlParserCtxt, void (*)(xmlParserCtxt*)>;

const xmlChar* xmlText(const char* text) { return reinterpret_cast<const xmlChar*>(text); }

/// Takes @p text over. White space around it belongs to the document's layout.
std::string trimmed(xmlChar* text) {
  if (text == nullptr) return {};
  const std::string_view whole(reinterpret_cast<const char*>(text));
  const auto first = whole.find_first_not_of(" \t\r\n");
  std::string inner;
  if (first != std::string_view::npos) inner = whole.substr(first, whole.find_last_not_of(" \t\r\n") - first + 1);
  xmlFree(text);
  return inner;
}

std::string contentOf(const xmlNode& element) { return trimmed(xmlNodeGetContent(&element)); }

std::string attributeOf(const xmlNode& element, const char* name) {
  for (const xmlAttr* attribute = element.properties; attribute != nullptr; attribute = attribute->next) {
    if (xmlStrcasecmp(attribute->name, xmlText(name)) != 0) continue;
    return trimmed(xmlNodeListGetString(element.doc, attribute->children, 1));
  }
  return {};
}

bool isElement(const xmlNode& node, const char* localName) {
  return node.type == XML_ELEMENT_NODE && xmlStrEqual(node.name, xmlText(localName)) != 0;
}

DescriptorRights readRights(const xmlNode& element) {
  DescriptorRights rights;
  for (const xmlNode* child = element.children; child != nullptr; child = child->next) {
    if (isElement(*child, "DRMSystemID")) rights.systemId = contentOf(*child);
    if (isElement(*child, "DRMContentID")) rights.contentId = contentOf(*child);
    if (isElement(*child, "RightsIssuerURL")) rights.issuerUrl = contentOf(*child);
  }
  return rights;
}

DescriptorUrl readUrl(const xmlNode& element) {
  return {contentOf(element), attributeOf(element, "MIMEType"), attributeOf(element, "DRMSystemID"),
          attributeOf(element, "TransferType")};
}

DescriptorRating readRating(const xmlNode& element) {
  return {attributeOf(element, "Scheme"), attributeOf(element, "Region"), contentOf(element)};
}

DescriptorItem readItem(const xmlNode& element) {
  DescriptorItem item;
  for (const xmlNode* child = element.children; child != nullptr; child = child->next) {
    if (isElement(*child, "Title")) item.title = contentOf(*child);
    if (isElement(*child, "ContentID")) item.contentId = contentOf(*child);
    if (isElement(*child, "ContentURL")) item.urls.push_back(readUrl(*child));
    if (isElement(*child, "ParentalRating")) item.ratings.push_back(readRating(*child));
    if (isElement(*child, "DRMControlInformation")) item.rights.push_back(readRights(*child));
  }
  return item;
}

/// Entities are of no use in a descriptor, but a few lines of them can ask for gigabytes.
void refuseEntities(void* context, const xmlChar*, int, const xmlChar*, const xmlChar*, xmlChar*) {
  auto* const parser = static_cast<xmlParserCtxt*>(context);
  *static_cast<bool*>(parser->_private) = true;
  xmlStopParser(parser);
}

std::string firstLine(const char* text) {
  const std::string_view whole = text != nullptr ? text : "";
  return std::string(whole.substr(0, whole.find_first_of("\r\n")));
}

Document parse(std::string_view text, std::string& problem) {
  const Context context(xmlNewParserCtxt(), xmlFreeParserCtxt);
  if (context == nullptr) {
    problem = "no memory to read it";
    return {nullptr, xmlFreeDoc};
  }
  bool entities = false;
  context->_private = &entities;
  context->sax->entityDecl = refuseEntities;
  constexpr int kOptions = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_NOCDATA;
  Document document(xmlCtxtReadMemory(context.get(), text.data(), static_cast<int>(text.size()), nullptr, nullptr, kOptions),
                    xmlFreeDoc);
  if (entities) {
    problem = "it declares entities";
    document.reset();
  } else if (document == nullptr) {
    const xmlError* const error = xmlCtxtGetLastError(context.get());
    problem = "it is no well-formed XML";
    if (error != nullptr) problem += ": line " + std::to_string(error->line) + ", " + firstLine(error->message);
  }
  return document;
}

}  // namespace

std::optional<ContentDescriptor> readContentDescriptor(std::string_view text, std::string& problem) {
  if (text.size() > kLargestDescriptor) {
    problem = "it is larger than " + std::to_string(kLargestDescriptor / 1024) + " KiB";
    return std::nullopt;
  }
  const Document document = parse(text, problem);
  if (document == nullptr) return std::nullopt;
  const xmlNode* const root = xmlDocGetRootElement(document.get());
  if (root == nullptr || !isElement(*root, "Contents")) {
    problem = "its root element is not Contents";
    return std::nullopt;
  }
  ContentDescriptor descriptor;
  for (const xmlNode* child = root->children; child != nullptr; child = child->next) {
    if (isElement(*child, "ContentItem")) descriptor.items.push_back(readItem(*child));
  }
  if (descriptor.items.empty()) {
    problem = "it holds no ContentItem";
    return std::nullopt;
  }
  return descriptor;
}

}  // namespace mediamgmnt
