#include "XmlParser/XmlFileHandle.h"
#include "XmlParser/XmlParser.h"
#include "XmlParser/XmlText.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

namespace {

bool isEmpty(const char* text) {
  return text == nullptr || *text == '\0';
}

bool matches(const _XmlNode& node, const char* filter) {
  return isEmpty(filter) || node.name == filter;
}

// The link that points to the child at the filtered index; null when no child has it.
_XmlNode** findLink(_XmlNode& parent, unsigned int index, const char* filter) {
  for (_XmlNode** link = &parent.firstChild; *link != nullptr; link = &(*link)->nextSibling) {
    if (matches(**link, filter) && index-- == 0) {
      return link;
    }
  }
  return nullptr;
}

// `findPlace` gives the link that is to point to the new node.
template <typename FindPlace>
_XmlNode* insertNode(xml_file_handle* handle, _XmlNode* parent, const char* name, const char* value,
                     FindPlace findPlace) {
  if (handle == nullptr || isEmpty(name) || (parent == nullptr && handle->root != nullptr)) {
    return nullptr;
  }
  CXmlNodePool::OwnedNode node = handle->xml_create_node_private(name, value != nullptr ? value : "");
  _XmlNode** const link = parent != nullptr ? findPlace(*parent) : &handle->root;
  node->nextSibling = *link;
  *link = node.release();
  return *link;
}

auto findAttribute(_XmlNode& node, const char* name) {
  return std::find_if(node.attributes.begin(), node.attributes.end(),
                      [name](const _NodeAttribute& attribute) { return attribute.name == name; });
}

bool insertAttribute(std::size_t position, _XmlNode* node, const char* name, const char* value) {
  if (node == nullptr || isEmpty(name) || isEmpty(value) ||
      findAttribute(*node, name) != node->attributes.end()) {
    return false;
  }
  const auto place = std::min(position, node->attributes.size());
  node->attributes.insert(node->attributes.begin() + static_cast<std::ptrdiff_t>(place),
                          _NodeAttribute{name, value});
  return true;
}

} // namespace

CXmlNodePool::OwnedNode xml_file_handle::xml_create_node_private(const char* name, const char* value) {
  CXmlNodePool::OwnedNode node = m_nodes.create();
  node->name = name;
  node->value = xml_trim(value);
  return node;
}

_XmlNode** xml_file_handle::xml_end_link_private(_XmlNode& parent) {
  _XmlNode*& last = m_lastChildren[&parent];
  _XmlNode** link = last != nullptr ? &last->nextSibling : &parent.firstChild;
  while (*link != nullptr) {
    last = *link;
    link = &last->nextSibling;
  }
  return link;
}

void xml_file_handle::xml_remove_child_private(const _XmlNode& parent, _XmlNode** link) noexcept {
  _XmlNode* const node = *link;
  *link = node->nextSibling;
  m_lastChildren.erase(&parent);
  xml_remove_node_private(node);
}

_XmlNode* xml_file_insert_before_node(xml_file_handle* handle, unsigned int index, _XmlNode* parent,
                                      const char* name, const char* value, const char* filter) {
  return insertNode(handle, parent, name, value, [index, filter](_XmlNode& node) {
    _XmlNode** const link = findLink(node, index, filter);
    return link != nullptr ? link : &node.firstChild;
  });
}

_XmlNode* xml_file_insert_after_node(xml_file_handle* handle, unsigned int index, _XmlNode* parent,
                                     const char* name, const char* value, const char* filter) {
  return insertNode(handle, parent, name, value, [handle, index, filter](_XmlNode& node) {
    _XmlNode** const link = findLink(node, index, filter);
    return link != nullptr ? &(*link)->nextSibling : handle->xml_end_link_private(node);
  });
}

_XmlNode* xml_file_append_node(xml_file_handle* handle, _XmlNode* parent, const char* name, const char* value,
                               const char* /*filter*/) {
  return insertNode(handle, parent, name, value,
                    [handle](_XmlNode& node) { return handle->xml_end_link_private(node); });
}

bool xml_file_remove_node(xml_file_handle* handle, unsigned int index, _XmlNode* parent, const char* filter) {
  if (handle == nullptr || parent == nullptr) {
    return xml_file_remove_all(handle);
  }
  _XmlNode** const link = findLink(*parent, index, filter);
  if (link == nullptr) {
    return false;
  }
  handle->xml_remove_child_private(*parent, link);
  return true;
}

void xml_file_remove_all_child(xml_file_handle* handle, _XmlNode* parent, const char* filter) {
  if (handle == nullptr || parent == nullptr) {
    return;
  }
  _XmlNode** link = &parent->firstChild;
  while (*link != nullptr) {
    if (matches(**link, filter)) {
      handle->xml_remove_child_private(*parent, link);
    } else {
      link = &(*link)->nextSibling;
    }
  }
}

bool xml_file_insert_before_attribute(unsigned int index, _XmlNode* node, const char* name,
                                      const char* value) {
  return insertAttribute(index, node, name, value);
}

bool xml_file_insert_after_attribute(unsigned int index, _XmlNode* node, const char* name,
                                     const char* value) {
  return insertAttribute(std::size_t{index} + 1, node, name, value);
}

bool xml_file_append_attribute(_XmlNode* node, const char* name, const char* value) {
  if (node == nullptr || isEmpty(name) || isEmpty(value)) {
    return false;
  }
  const auto known = findAttribute(*node, name);
  if (known == node->attributes.end()) {
    return insertAttribute(node->attributes.size(), node, name, value);
  }
  known->value = value;
  return true;
}

bool xml_file_remove_attribute(const char* name, _XmlNode* node) {
  if (node == nullptr || name == nullptr) {
    return false;
  }
  auto& attributes = node->attributes;
  const auto removed =
      std::remove_if(attributes.begin(), attributes.end(),
                     [name](const _NodeAttribute& attribute) { return attribute.name == name; });
  const bool found = removed != attributes.end();
  attributes.erase(removed, attributes.end());
  return found;
}

bool xml_file_remove_attribute_by_index(unsigned int index, _XmlNode* node) {
  if (node == nullptr || node->attributes.empty() || index != 0) {
    return false;
  }
  node->attributes.erase(node->attributes.begin());
  return true;
}
