// A document of the library's XML layer, held while it is looked at or built.
#ifndef IGH_BUS_ADAPT_DOCUMENT_H
#define IGH_BUS_ADAPT_DOCUMENT_H

#include "XmlParser/XmlParser.h"

#include <string>

namespace igh_bus::adapt {

class Document {
public:
  Document();
  ~Document();
  Document(Document&& other) noexcept;
  Document& operator=(Document&&) = delete;
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;

  // False, with a line of the library on standard output, when it cannot be read.
  bool read(const std::string& path);
  // For a file of length 0, which store() fills.
  bool create(const std::string& path);
  // Writes what was built since create(), and ends it.
  void store();

  _XmlNode* root() const { return xml_file_get_root(m_handle); }
  // Below `parent`, which is null for the root.
  _XmlNode* append(_XmlNode* parent, const char* name, const std::string& value = "");

private:
  xml_file_handle* m_handle;
};

const _XmlNode* firstChild(const _XmlNode* node, const char* name);
// Empty for a null node, and when there is none of the name.
std::string textOf(const _XmlNode* node);
std::string childText(const _XmlNode* node, const char* name);
// Null when there is none.
const std::string* attributeOf(const _XmlNode* node, const char* name);
std::string attributeText(const _XmlNode* node, const char* name);
// "1" and "true".
bool flagOf(const _XmlNode* node, const char* name);

} // namespace igh_bus::adapt

#endif
