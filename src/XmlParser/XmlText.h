#ifndef XMLPARSER_XMLTEXT_H
#define XMLPARSER_XMLTEXT_H

#include <libxml/tree.h>

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>

// The tree would be far larger than the document.
struct _XmlExpansionRefused : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Without leading and trailing blanks, tabs and line breaks.
std::string_view xml_trim(const char* text);

// Reads element and attribute text out of one libxml2 document: the text that xmlNodeListGetString gives, but
// in linear time (that call measures all text before it for every further piece) and with a limit on what
// entity references may expand to.
class CXmlText {
public:
  CXmlText(xmlDoc* document, std::size_t fileLength);

  // The text of a list of sibling nodes; trimmed, it loses leading and trailing blanks, tabs and line breaks.
  // Throws XmlExpansionRefused.
  void read(const xmlNode* list, std::string& text);
  void readTrimmed(const xmlNode* list, std::string& text);

  // Counts bytes that the tree holds beyond the file. Throws XmlExpansionRefused when they are too many.
  void charge(std::size_t bytes);

private:
  void collect(const xmlNode* list, bool trim);
  void appendReference(const xmlNode* reference, bool trim);
  void append(const xmlChar* piece, bool trim);
  std::size_t expansionCost(const xmlNode* list, unsigned int depth);
  std::size_t entityCost(const xmlEntity* entity, unsigned int depth);

  xmlDoc* m_document;
  std::string m_collected; // kept for its capacity
  std::size_t m_budget;    // bytes and nodes that references may still expand to
  std::unordered_map<const xmlEntity*, std::size_t> m_costs;
};

#endif
