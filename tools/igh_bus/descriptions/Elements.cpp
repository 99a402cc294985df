#include "descriptions/Elements.h"

namespace igh_bus {

const _XmlNode* firstChild(const _XmlNode* node, const char* name) {
  return xml_file_get_child_node(0, node, name);
}

std::string textOf(const _XmlNode* node) {
  return node ? node->value : std::string();
}

std::string childText(const _XmlNode* node, const char* name) {
  return textOf(firstChild(node, name));
}

const std::string* attributeOf(const _XmlNode* node, const char* name) {
  if (!node)
    return nullptr;
  for (const auto& attribute : node->attributes) {
    if (attribute.name == name)
      return &attribute.value;
  }
  return nullptr;
}

std::string attributeText(const _XmlNode* node, const char* name) {
  const auto* text = attributeOf(node, name);
  return text ? *text : std::string();
}

bool flagOf(const _XmlNode* node, const char* name) {
  const auto* text = attributeOf(node, name);
  return text && (*text == "1" || *text == "true");
}

} // namespace igh_bus
