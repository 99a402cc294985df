#include "XmlParser/XmlParser.h"

#include <cstddef>
#include <cstring>

namespace {

NodeAttribute const* findAttribute(int index, _XmlNode const* node) {
  if (index < 0 || index >= xml_file_get_attribute_count(node)) {
    return nullptr;
  }
  return &node->attributes[static_cast<std::size_t>(index)];
}

NodeAttribute const* findAttribute(char const* name, _XmlNode const* node) {
  if (node == nullptr || name == nullptr) {
    return nullptr;
  }
  for (NodeAttribute const& attribute : node->attributes) {
    if (attribute.name == name) {
      return &attribute;
    }
  }
  return nullptr;
}

} // namespace

bool xml_copy_string(std::string const& text, char* buffer, unsigned long& size) {
  unsigned long const needed = text.size() + 1;
  if (buffer != nullptr) {
    if (size < needed) {
      return false;
    }
    std::memcpy(buffer, text.c_str(), needed);
  }
  size = needed;
  return true;
}

int xml_file_get_child_count(_XmlNode const* node, char const* name) {
  int count = 0;
  for ([[maybe_unused]] _XmlNode const* child : xml_file_children(node, name)) {
    ++count;
  }
  return count;
}

_XmlNode* xml_file_get_child_node(int index, _XmlNode const* node, char const* name) {
  if (index < 0) {
    return nullptr;
  }
  for (_XmlNode* child : xml_file_children(node, name)) {
    if (index-- == 0) {
      return child;
    }
  }
  return nullptr;
}

int xml_file_get_attribute_count(_XmlNode const* node) {
  return node != nullptr ? static_cast<int>(node->attributes.size()) : 0;
}

bool xml_file_get_attribute_name(int index, _XmlNode const* node, char* buffer, unsigned long& size) {
  NodeAttribute const* attribute = findAttribute(index, node);
  return attribute != nullptr && xml_copy_string(attribute->name, buffer, size);
}

bool xml_file_get_attribute_value_by_index(int index, _XmlNode const* node, char* buffer,
                                           unsigned long& size) {
  NodeAttribute const* attribute = findAttribute(index, node);
  return attribute != nullptr && xml_copy_string(attribute->value, buffer, size);
}

bool xml_file_get_attribute_value(char const* name, _XmlNode const* node, char* buffer, unsigned long& size) {
  NodeAttribute const* attribute = findAttribute(name, node);
  return attribute != nullptr && xml_copy_string(attribute->value, buffer, size);
}

bool xml_file_get_node_value(_XmlNode const* node, char* buffer, unsigned long& size) {
  return node != nullptr && xml_copy_string(node->value, buffer, size);
}

bool xml_file_get_node_name(_XmlNode const* node, char* buffer, unsigned long& size) {
  return node != nullptr && xml_copy_string(node->name, buffer, size);
}
