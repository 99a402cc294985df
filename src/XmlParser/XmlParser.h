/* XmlParser.h - XML documents as a tree of plain records. A document is read once with libxml2, copied into
 * the tree, and libxml2's own document is freed at once. One thread at a time uses a handle and its tree.
 *
 * String getters share one size protocol: a null buffer sets `size` to the length + 1 and succeeds; a buffer
 * of at least that size receives the text with its NUL, and `size` is set to length + 1; a smaller one fails,
 * and buffer and size stay untouched. They also fail for a null node and for what does not exist. */
#ifndef XMLPARSER_XMLPARSER_H
#define XMLPARSER_XMLPARSER_H

#include <string>
#include <vector>

class xml_file_handle;

struct NodeAttribute {
  std::string name;
  std::string value; /* entities resolved, not trimmed */
};

/* An element. Its children form a singly linked chain from firstChild, in document order; there is no way up.
 * Nodes are built and freed by this layer only. */
struct _XmlNode {
  std::string name;
  std::string value; /* text of the direct children, trimmed of blanks, tabs and line breaks */
  _XmlNode* firstChild = nullptr;
  _XmlNode* nextSibling = nullptr;
  std::vector<NodeAttribute> attributes; /* in document order */
};

/* An empty handle, to be given back to xml_file_destroy. */
xml_file_handle* xml_file_create();

/* Reads the document at `path`; `mode` are the bits of FILE_MODE. A document already held is closed first. A
 * file of length 0 is a new document: true, without a root. Failures print one line to standard output and
 * give false; false also for a null handle. */
bool xml_file_open(xml_file_handle* handle, char const* path, int mode);

/* Frees the tree and empties the handle, which must not be null. */
void xml_file_close(xml_file_handle* handle);

/* Closes, deletes and nulls the caller's pointer; a null pointer is ignored. */
void xml_file_destroy(xml_file_handle*& handle);

/* Frees the tree, never stores it. False when there is none. */
bool xml_file_remove_all(xml_file_handle* handle);

/* The handle keeps the ownership. */
_XmlNode* xml_file_get_root(xml_file_handle const* handle);

/* Children of exactly this name, or all of them for a null or empty name. The index is 0-based; each call
 * walks the chain from its start, so use xml_file_children to visit many. */
int xml_file_get_child_count(_XmlNode const* node, char const* name);
_XmlNode* xml_file_get_child_node(int index, _XmlNode const* node, char const* name);

int xml_file_get_attribute_count(_XmlNode const* node);
bool xml_file_get_attribute_name(int index, _XmlNode const* node, char* buffer, unsigned long& size);
bool xml_file_get_attribute_value_by_index(int index, _XmlNode const* node, char* buffer,
                                           unsigned long& size);
/* The first attribute of this name. */
bool xml_file_get_attribute_value(char const* name, _XmlNode const* node, char* buffer, unsigned long& size);
bool xml_file_get_node_value(_XmlNode const* node, char* buffer, unsigned long& size);
bool xml_file_get_node_name(_XmlNode const* node, char* buffer, unsigned long& size);

/* The size protocol itself, for any text. */
bool xml_copy_string(std::string const& text, char* buffer, unsigned long& size);

/* The children of one name as a range for a for loop: one step per sibling. */
class xml_children {
public:
  class iterator {
  public:
    iterator(_XmlNode* start, char const* filter) : node(start), name(filter) { skip(); }
    _XmlNode* operator*() const { return node; }
    iterator& operator++() {
      node = node->nextSibling;
      skip();
      return *this;
    }
    bool operator!=(iterator const& other) const { return node != other.node; }

  private:
    void skip() {
      while (node != nullptr && name != nullptr && node->name != name) {
        node = node->nextSibling;
      }
    }

    _XmlNode* node;
    char const* name;
  };

  xml_children(_XmlNode const* parent, char const* filter)
      : first(parent != nullptr ? parent->firstChild : nullptr),
        name(filter != nullptr && *filter != '\0' ? filter : nullptr) {}
  iterator begin() const { return {first, name}; }
  iterator end() const { return {nullptr, name}; }

private:
  _XmlNode* first;
  char const* name;
};

/* The parent may be null; `name` must outlive the range. */
inline xml_children xml_file_children(_XmlNode const* node, char const* name) {
  return {node, name};
}

#endif
