#include "XmlParser/XmlFileHandle.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace {

/* An element whose children are being copied. */
struct OpenElement {
  xmlNode const* nextChild;
  _XmlNode* copy;
  _XmlNode* lastChild;
};

/* A name is missing only where there was no memory for it. */
char const* nameCharacters(xmlChar const* name) {
  if (name == nullptr) {
    throw std::bad_alloc();
  }
  return reinterpret_cast<char const*>(name);
}

xmlNode const* nextElement(xmlNode const* node) {
  while (node != nullptr && node->type != XML_ELEMENT_NODE) {
    node = node->next;
  }
  return node;
}

/* A value is looked up by local name, so of attributes that differ in their prefix only, all have the value
 * of the first. What that adds to the document is charged like an expansion. */
void shareValuesOfEqualNames(std::vector<NodeAttribute>& attributes, XmlText& text) {
  std::unordered_map<std::string_view, NodeAttribute const*> first;
  for (NodeAttribute& attribute : attributes) {
    auto const [known, isNew] = first.emplace(attribute.name, &attribute);
    if (!isNew) {
      text.charge(known->second->value.size());
      attribute.value = known->second->value;
    }
  }
}

void copyAttributes(xmlNode const* element, XmlText& text, std::vector<NodeAttribute>& attributes) {
  std::size_t count = 0;
  bool prefixed = false;
  for (xmlAttr const* attribute = element->properties; attribute != nullptr; attribute = attribute->next) {
    ++count;
    prefixed = prefixed || attribute->ns != nullptr;
  }
  if (count == 0) {
    return;
  }
  attributes.resize(count);
  auto copy = attributes.begin();
  for (xmlAttr const* attribute = element->properties; attribute != nullptr; attribute = attribute->next) {
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

_XmlNode* xml_file_handle::xml_copy_tree_private(xmlNode const* element, XmlText& text) {
  auto const free = [this](_XmlNode* node) { xml_remove_node_private(node); };
  std::unique_ptr<_XmlNode, decltype(free)> tree(xml_paser_node_private(element, nullptr, nullptr, text),
                                                 free);

  std::vector<OpenElement> open{{element->children, tree.get(), nullptr}};
  while (!open.empty()) {
    OpenElement& level = open.back();
    xmlNode const* child = nextElement(level.nextChild);
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

_XmlNode* xml_file_handle::xml_paser_node_private(xmlNode const* element, _XmlNode* parent,
                                                  _XmlNode* previous, XmlText& text) {
  XmlNodePool::OwnedNode node = nodes.create();
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

/* The sibling chain itself is the list of work: a node's children are put in front of what is left, so
 * neither deep nor wide trees need memory to be freed. */
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
    lastChildren.erase(node);
    nodes.destroy(node);
    node = next;
  }
}
