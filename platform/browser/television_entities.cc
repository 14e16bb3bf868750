// SPDX-License-Identifier: Apache-2.0
#include "platform/browser/television_entities.h"

#include <libxml/HTMLparser.h>
#include <libxml/entities.h>
#include <libxml/tree.h>

#include <cstring>
#include <string>
#include <vector>

namespace browser {

namespace {

constexpr unsigned kLastCode = 0x2666;  ///< the highest character that XHTML has an entity for, diams
constexpr char kTelevisionDtd[] = "-//HbbTV//";

const xmlChar* asXml(const char* text) { return reinterpret_cast<const xmlChar*>(text); }

struct Entity {
  const char* name;
  std::string content;
};

/// A reference to the character: what the entities of XHTML contain in their DTD.
std::vector<Entity> readEntities() {
  std::vector<Entity> out;
  for (unsigned code = 0; code <= kLastCode; ++code) {
    const htmlEntityDesc* const known = htmlEntityValueLookup(code);
    if (known == nullptr || xmlGetPredefinedEntity(asXml(known->name)) != nullptr) continue;
    out.push_back({known->name, "&#" + std::to_string(code) + ";"});
  }
  return out;
}

bool isTelevisionDtd(const xmlDtd& dtd) {
  return dtd.doc != nullptr && dtd.doc->intSubset == &dtd && dtd.ExternalID != nullptr &&
         std::strncmp(reinterpret_cast<const char*>(dtd.ExternalID), kTelevisionDtd, std::strlen(kTelevisionDtd)) == 0;
}

/// They go into the external part of the document type: what the document declares itself goes before them.
void onNodeMade(xmlNodePtr node) {
  if (node->type != XML_DTD_NODE) return;
  auto* const dtd = reinterpret_cast<xmlDtd*>(node);
  if (!isTelevisionDtd(*dtd)) return;
  if (xmlNewDtd(dtd->doc, dtd->name, dtd->ExternalID, dtd->SystemID) == nullptr) return;
  static const std::vector<Entity> entities = readEntities();
  for (const Entity& each : entities) {
    xmlAddDtdEntity(dtd->doc, asXml(each.name), XML_INTERNAL_GENERAL_ENTITY, nullptr, nullptr, asXml(each.content.c_str()));
  }
}

}  // namespace

void knowTelevisionEntities() { xmlRegisterNodeDefault(onNodeMade); }

}  // namespace browser
