#ifndef ENIOBJECT_CXMLPARSER_H
#define ENIOBJECT_CXMLPARSER_H

#include "XmlParser/XmlParser.h"

#include <string>

// Reads texts of an open document, which it does not own.
class CXmlParser {
public:
  explicit CXmlParser(xml_file_handle* handle) : m_pHandle(handle) {}

  xml_file_handle* getHandle() const { return m_pHandle; }

  // False, and `value` untouched, when the node is null or has no such attribute: hand in a string of its own
  // for every read.
  bool getAttributeValue(const std::string& name, const _XmlNode* node, std::string& value) const;

  // The text of the element; empty for a null node.
  std::string getNodeValue(const _XmlNode* node) const;

private:
  xml_file_handle* m_pHandle;
};

#endif
