#ifndef XMLPARSER_XMLFILEHANDLE_H
#define XMLPARSER_XMLFILEHANDLE_H

#include "File/File.h"
#include "XmlParser/XmlNodePool.h"
#include "XmlParser/XmlParser.h"
#include "XmlParser/XmlText.h"

#include <libxml/tree.h>

#include <string>
#include <unordered_map>

// Empty (no root, mode read, no name), loaded, or new: opened on a file of length 0, so with mode and name
// but no root yet.
class xml_file_handle {
public:
  xml_file_handle() = default;
  virtual ~xml_file_handle();
  xml_file_handle(const xml_file_handle&) = delete;
  xml_file_handle& operator=(const xml_file_handle&) = delete;

  // Copies the element with everything below it; the caller owns the tree.
  _XmlNode* xml_copy_tree_private(const xmlNode* element, CXmlText& text);

  // Copies one element without its children and links it: as first child of `parent`, or behind `previous`.
  _XmlNode* xml_paser_node_private(const xmlNode* element, _XmlNode* parent, _XmlNode* previous,
                                   CXmlText& text);

  // Frees the node, what it owns and what is below it. Whoever points to it is the caller's concern.
  void xml_remove_node_private(_XmlNode* node) noexcept;

  // A node linked to nothing yet; the value is trimmed.
  CXmlNodePool::OwnedNode xml_create_node_private(const char* name, const char* value);

  // The link behind the parent's last child.
  _XmlNode** xml_end_link_private(_XmlNode& parent);

  // Takes the node that `link` points to out of the parent's chain and frees it with what is below it.
  void xml_remove_child_private(const _XmlNode& parent, _XmlNode** link) noexcept;

  // Writes the document to the file it is named after, or leaves that file alone.
  void xml_store_document_private();

  // Writes the node and what is below it, indented by `depth` tabs. Nothing for a null file or node.
  void xml_store_private(CFile* file, const _XmlNode* node, int depth) const;

  static void xml_translate_value_to_xml_format_private(std::string& value);

  // The text with every occurrence of the pattern replaced; an empty pattern occurs nowhere.
  static std::string replaceSTLString(const std::string& text, const std::string& pattern,
                                      const std::string& replacement);

  _XmlNode* root = nullptr; // owned
  int mode = FILE_MODE_READ;
  std::string fileName;

private:
  CXmlNodePool m_nodes;

  // Of parents that were appended to, a child to look for the end from: appending many walks no chain.
  std::unordered_map<const _XmlNode*, _XmlNode*> m_lastChildren;
};

#endif
