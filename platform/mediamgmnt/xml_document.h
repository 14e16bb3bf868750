// SPDX-License-Identifier: Apache-2.0
// Reads XML that came from outside: nothing is fetched, no entity is expanded. Thread: any, one at a time for each document.
#pragma once

#include <libxml/tree.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace mediamgmnt {

/// One parsed document. Element names are compared without their namespace: real documents use the right one, another, or none.
class XmlDocument {
 public:
  /// Nothing is read of texts that are malformed, larger than @p sizeLimit bytes or that declare entities of their own.
  XmlDocument(std::string_view text, std::size_t sizeLimit);

  bool isValid() const { return m_document != nullptr; }
  /// Null for an invalid document.
  const xmlNode* root() const;

 private:
  struct Free {
    void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
  };
  std::unique_ptr<xmlDoc, Free> m_document;
};

bool isElement(const xmlNode* node, std::string_view name);

/// The attribute's text, whatever its namespace; "" without one.
std::string attribute(const xmlNode* node, const char* name);

/// The element's own text and that of all inside it, without blanks at both ends.
std::string textOf(const xmlNode* node);

/// Calls @p use for each child element of that name, in order.
void forEachChild(const xmlNode* node, std::string_view name, const std::function<void(const xmlNode*)>& use);

/// The text of the first child element of that name; "" without one.
std::string childText(const xmlNode* node, std::string_view name);

/// The first element of that name anywhere below @p node; null without one.
const xmlNode* findBelow(const xmlNode* node, std::string_view name);

}  // namespace mediamgmnt
