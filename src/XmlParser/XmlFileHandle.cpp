#include "XmlParser/XmlFileHandle.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace {

// An element whose children are being copied.
struct _OpenElement {
  const xmlNode* nextChild;
  _XmlNode* copy;
  _XmlNode* lastChild;
};

// A name is missing only where there was no memory for it.
const char* nameCharacters(const xmlChar* name) {
  if (name == nullptr) {
    throw std::bad_alloc();
  }
  return reinterpret_cast<const char*>(name);
}

const xmlNode* nextElement(const xmlNode* node) {
  while (node != nullptr && node->type != XML_ELEMENT_NODE) {
    node = node->next;
  }
  return node;
}

// A value is looked up by local name, so of attributes that differ in their prefix only, all have the value
// of the first. What that adds to the document is charged like an expansion.
void shareValuesOfEqualNames(std::vector<_NodeAttribute>& attributes, CXmlText& text) {
  std::unordered_map<std::string_view, const _NodeAttribute*> first;
  for (_NodeAttribute& attribute : attributes) {
    const auto [known, isNew] = first.emplace(attribute.name, &attribute);
    if (!isNew) {
      text.charge(known->second->value.size());
      attribute.value = known->second->value;
    }
  }
}

void copyAttributes(const xmlNode* element, CXmlText& text, std::vector<_NodeAttribute>& attributes) {
  std::size_t count = 0;
  bool prefixed = false;
  for (const xmlAttr* attribute = element->properties; attribute != nullptr; attribute = attribute->next) {
    ++count;
    prefixed = prefixed || attribute->ns != nullptr;
  }
  if (count == 0) {
    return;
  }
  attributes.resize(count);
  auto copy = attributes.begin();
  for (const xmlAttr* attribute = element->properties; attribute != nullptr; attribute = attribute->next) {
    copy->name = nameCharacters(attribute->name);
    text.read(attribute->children, copy->value);
    ++copy;
  }
  if (prefixed) {
    shareValuesOfEqualNames(attributes, text);
  }
}

} // namespace

xml_file_handle::~xml_file_handle() {
  xml_remove_node_private(root);
}

_XmlNode* xml_file_handle::xml_copy_tree_private(const xmlNode* element, CXmlText& text) {
  const auto free = [this](_XmlNode* node) { xml_remove_node_private(node); };
  std::unique_ptr<_XmlNode, decltype(free)> tree(xml_paser_node_private(element, nullptr, nullptr, text),
                                                 free);

  std::vector<_OpenElement> open{{element->children, tree.get(), nullptr}};
  while (!open.empty()) {
    _OpenElement& level = open.back();
    const xmlNode* child = nextElement(level.nextChild);
    if (child == nullptr) {
      open.pop_back();
      continue;
    }
    level.nextChild = child->next;
    level.lastChild = xml_paser_node_private(child, level.copy, level.lastChild, text);
    if (nextElement(child->children) != nullptr) {
      open.push_back({child->children, level.lastChild, nullptr});
    }
  }
  return tree.release();
}

_XmlNode* xml_file_handle::xml_paser_node_private(const xmlNode* element, _XmlNode* parent,
                                                  _XmlNode* previous, CXmlText& text) {
  CXmlNodePool::OwnedNode node = m_nodes.create();
  node->name = nameCharacters(element->name);
  text.readTrimmed(element->children, node->value);
  copyAttributes(element, text, node->attributes);
  if (previous != nullptr) {
    previous->nextSibling = node.get();
  } else if (parent != nullptr) {
    parent->firstChild = node.get();
  }
  return node.release();
}

// The sibling chain itself is the list of work: a node's children are put in front of what is left, so
// neither deep nor wide trees need memory to be freed.
void xml_file_handle::xml_remove_node_private(_XmlNode* node) noexcept {
  if (node != nullptr) {
    node->nextSibling = nullptr;
  }
  while (node != nullptr) {
    _XmlNode* next = node->nextSibling;
    if (node->firstChild != nullptr) {
      _XmlNode* last = node->firstChild;
      while (last->nextSibling != nullptr) {
        last = last->nextSibling;
      }
      last->nextSibling = next;
      next = node->firstChild;
    }
    m_lastChildren.erase(node);
    m_nodes.destroy(node);
    node = next;
  }
}
