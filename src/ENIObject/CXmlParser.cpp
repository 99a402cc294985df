#include "ENIObject/CXmlParser.h"

namespace {

// Asks a string getter of the document layer for the size, then for the text.
template <typename Getter> bool fetch(Getter getter, std::string& value) {
  unsigned long size = 0;
  if (!getter(nullptr, size) || size == 0) {
    return false;
  }
  value.resize(size);
  getter(value.data(), size);
  value.resize(size - 1); // without the NUL
  return true;
}

} // namespace

bool CXmlParser::getAttributeValue(const std::string& name, const _XmlNode* node, std::string& value) const {
  return fetch(
      [&](char* buffer, unsigned long& size) {
        return xml_file_get_attribute_value(name.c_str(), node, buffer, size);
      },
      value);
}

std::string CXmlParser::getNodeValue(const _XmlNode* node) const {
  std::string value;
  fetch([&](char* buffer, unsigned long& size) { return xml_file_get_node_value(node, buffer, size); },
        value);
  return value;
}
