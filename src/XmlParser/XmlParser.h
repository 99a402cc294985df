// XmlParser.h - XML documents as a tree of plain records. A document is read once with libxml2, copied into
// the tree, and libxml2's own document is freed at once. One thread at a time uses a handle and its tree.
//
// String getters share one size protocol: a null buffer sets `size` to the length + 1 and succeeds; a buffer
// of at least that size receives the text with its NUL, and `size` is set to length + 1; a smaller one fails,
// and buffer and size stay untouched. They also fail for a null node and for what does not exist.
#ifndef XMLPARSER_XMLPARSER_H
#define XMLPARSER_XMLPARSER_H

#include <string>
#include <vector>

class xml_file_handle;

struct _NodeAttribute {
  std::string name;
  std::string value; // entities resolved, not trimmed
};

// An element. Its children form a singly linked chain from firstChild, in document order; there is no way up.
// Nodes are built, linked and freed by this layer only.
struct _XmlNode {
  std::string name;
  std::string value; // text of the direct children, trimmed of blanks, tabs and line breaks
  _XmlNode* firstChild = nullptr;
  _XmlNode* nextSibling = nullptr;
  std::vector<_NodeAttribute> attributes; // in document order
};

// An empty handle, to be given back to xml_file_destroy.
xml_file_handle* xml_file_create();

// Reads the document at `path`; `mode` are the bits of FILE_MODE. A document already held is closed first. A
// file of length 0 is a new document: true, without a root. Failures print one line to standard output and
// give false; false also for a null handle.
bool xml_file_open(xml_file_handle* handle, const char* path, int mode);

// Frees the tree and empties the handle, which must not be null. A document opened with FILE_MODE_READ_WRITE
// is stored first, under the name it was opened by; to change a file that is there it takes FILE_MODE_KEEP
// too, as opening truncates otherwise. What cannot be stored is dropped without a word, and the file stays as
// it was when the new text has no room.
void xml_file_close(xml_file_handle* handle);

// Closes, deletes and nulls the caller's pointer; a null pointer is ignored.
void xml_file_destroy(xml_file_handle*& handle);

// Frees the tree, never stores it. False when there is none.
bool xml_file_remove_all(xml_file_handle* handle);

// The handle keeps the ownership.
_XmlNode* xml_file_get_root(const xml_file_handle* handle);

// Children of exactly this name, or all of them for a null or empty name. The index is 0-based; each call
// walks the chain from its start, so use xml_file_children to visit many.
int xml_file_get_child_count(const _XmlNode* node, const char* name);
_XmlNode* xml_file_get_child_node(int index, const _XmlNode* node, const char* name);

int xml_file_get_attribute_count(const _XmlNode* node);
bool xml_file_get_attribute_name(int index, const _XmlNode* node, char* buffer, unsigned long& size);
bool xml_file_get_attribute_value_by_index(int index, const _XmlNode* node, char* buffer,
                                           unsigned long& size);
// The first attribute of this name.
bool xml_file_get_attribute_value(const char* name, const _XmlNode* node, char* buffer, unsigned long& size);
bool xml_file_get_node_value(const _XmlNode* node, char* buffer, unsigned long& size);
bool xml_file_get_node_name(const _XmlNode* node, char* buffer, unsigned long& size);

// A filtered index counts the children of exactly the filter's name, or all of them for a null or empty
// filter. The parent is a node of the handle's own tree. Names and values are not checked: what is no XML
// name or character is stored as it is and cannot be read again.
//
// The inserting calls give the new node, whose value is trimmed, or null for a null handle, a null or empty
// name. With a null parent the node becomes the root; null when there is one already. An index that no child
// has puts the node first when inserting before, and last when inserting after.
_XmlNode* xml_file_insert_before_node(xml_file_handle* handle, unsigned int index, _XmlNode* parent,
                                      const char* name, const char* value, const char* filter);
_XmlNode* xml_file_insert_after_node(xml_file_handle* handle, unsigned int index, _XmlNode* parent,
                                     const char* name, const char* value, const char* filter);
// Behind the last child, whatever the filter.
_XmlNode* xml_file_append_node(xml_file_handle* handle, _XmlNode* parent, const char* name, const char* value,
                               const char* filter);

// Frees the child with all below it, or the whole tree for a null parent. False when there is none.
bool xml_file_remove_node(xml_file_handle* handle, unsigned int index, _XmlNode* parent, const char* filter);
void xml_file_remove_all_child(xml_file_handle* handle, _XmlNode* parent, const char* filter);

// These give false for a null node and for a null or empty name or value. The inserting ones also refuse a
// name that is there, and put the attribute last for an index past the end; appending replaces the value.
bool xml_file_insert_before_attribute(unsigned int index, _XmlNode* node, const char* name,
                                      const char* value);
bool xml_file_insert_after_attribute(unsigned int index, _XmlNode* node, const char* name, const char* value);
bool xml_file_append_attribute(_XmlNode* node, const char* name, const char* value);
bool xml_file_remove_attribute(const char* name, _XmlNode* node);
// The first attribute only: any other index than 0 is refused.
bool xml_file_remove_attribute_by_index(unsigned int index, _XmlNode* node);

// The size protocol itself, for any text.
bool xml_copy_string(const std::string& text, char* buffer, unsigned long& size);

// The children of one name as a range for a for loop: one step per sibling.
class xml_children {
public:
  class iterator {
  public:
    iterator(_XmlNode* start, const char* filter) : m_node(start), m_name(filter) { skip(); }
    _XmlNode* operator*() const { return m_node; }
    iterator& operator++() {
      m_node = m_node->nextSibling;
      skip();
      return *this;
    }
    bool operator!=(const iterator& other) const { return m_node != other.m_node; }

  private:
    void skip() {
      while (m_node != nullptr && m_name != nullptr && m_node->name != m_name) {
        m_node = m_node->nextSibling;
      }
    }

    _XmlNode* m_node;
    const char* m_name;
  };

  xml_children(const _XmlNode* parent, const char* filter)
      : m_first(parent != nullptr ? parent->firstChild : nullptr),
        m_name(filter != nullptr && *filter != '\0' ? filter : nullptr) {}
  iterator begin() const { return {m_first, m_name}; }
  iterator end() const { return {nullptr, m_name}; }

private:
  _XmlNode* m_first;
  const char* m_name;
};

// The parent may be null; `name` must outlive the range.
inline xml_children xml_file_children(const _XmlNode* node, const char* name) {
  return {node, name};
}

#endif
