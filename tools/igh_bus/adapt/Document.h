// A document of the library's XML layer, held while it is looked at or built.
#ifndef IGH_BUS_ADAPT_DOCUMENT_H
#define IGH_BUS_ADAPT_DOCUMENT_H

#include "XmlParser/XmlParser.h"
#include "descriptions/Elements.h"

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

} // namespace igh_bus::adapt

#endif
