#include "XmlParser/XmlParser.h"

#include <cstddef>
#include <cstring>

namespace {

const _NodeAttribute* findAttribute(int index, const _XmlNode* node) {
  if (index < 0 || index >= xml_file_get_attribute_count(node)) {
    return nullptr;
  }
  return &node->attributes[static_cast<std::size_t>(index)];
}

const _NodeAttribute* findAttribute(const char* name, const _XmlNode* node) {
  if (node == nullptr || name == nullptr) {
    return nullptr;
  }
  for (const _NodeAttribute& attribute : node->attributes) {
    if (attribute.name == name) {
      return &attribute;
    }
  }
  return nullptr;
}

} // namespace

bool xml_copy_string(const std::string& text, char* buffer, unsigned long& size) {
  const unsigned long needed = text.size() + 1;
  if (buffer != nullptr) {
    if (size < needed) {
      return false;
    }
    std::memcpy(buffer, text.c_str(), needed);
  }
  size = needed;
  return true;
}

int xml_file_get_child_count(const _XmlNode* node, const char* name) {
  int count = 0;
  for ([[maybe_unused]] const _XmlNode* child : xml_file_children(node, name)) {
    ++count;
  }
  return count;
}

_XmlNode* xml_file_get_child_node(int index, const _XmlNode* node, const char* name) {
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

int xml_file_get_attribute_count(const _XmlNode* node) {
  return node != nullptr ? static_cast<int>(node->attributes.size()) : 0;
}

bool xml_file_get_attribute_name(int index, const _XmlNode* node, char* buffer, unsigned long& size) {
  const _NodeAttribute* attribute = findAttribute(index, node);
  return attribute != nullptr && xml_copy_string(attribute->name, buffer, size);
}

bool xml_file_get_attribute_value_by_index(int index, const _XmlNode* node, char* buffer,
                                           unsigned long& size) {
  const _NodeAttribute* attribute = findAttribute(index, node);
  return attribute != nullptr && xml_copy_string(attribute->value, buffer, size);
}

bool xml_file_get_attribute_value(const char* name, const _XmlNode* node, char* buffer, unsigned long& size) {
  const _NodeAttribute* attribute = findAttribute(name, node);
  return attribute != nullptr && xml_copy_string(attribute->value, buffer, size);
}

bool xml_file_get_node_value(const _XmlNode* node, char* buffer, unsigned long& size) {
  return node != nullptr && xml_copy_string(node->value, buffer, size);
}

bool xml_file_get_node_name(const _XmlNode* node, char* buffer, unsigned long& size) {
  return node != nullptr && xml_copy_string(node->name, buffer, size);
}
