#ifndef XMLPARSER_XMLFILEHANDLE_H
#define XMLPARSER_XMLFILEHANDLE_H

#include "File/File.h"
#include "XmlParser/XmlNodePool.h"
#include "XmlParser/XmlParser.h"
#include "XmlParser/XmlText.h"

#include <libxml/tree.h>

#include <string>

/* Empty (no root, mode read, no name), loaded, or new: opened on a file of length 0, so with mode and name
 * but no root yet. */
class xml_file_handle {
public:
  xml_file_handle() = default;
  virtual ~xml_file_handle();
  xml_file_handle(xml_file_handle const&) = delete;
  xml_file_handle& operator=(xml_file_handle const&) = delete;

  /* Copies the element with everything below it; the caller owns the tree. */
  _XmlNode* xml_copy_tree_private(xmlNode const* element, XmlText& text);

  /* Copies one element without its children and links it: as first child of `parent`, or behind `previous`.
   */
  _XmlNode* xml_paser_node_private(xmlNode const* element, _XmlNode* parent, _XmlNode* previous,
                                   XmlText& text);

  /* Frees the node, what it owns and what is below it. Whoever points to it is the caller's concern. */
  void xml_remove_node_private(_XmlNode* node) noexcept;

  _XmlNode* root = nullptr; /* owned */
  int mode = FILE_MODE_READ;
  std::string fileName;

private:
  XmlNodePool nodes;
};

#endif
