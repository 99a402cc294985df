// What the type names of makers mean, and which of the library's types moves the same bits.
#ifndef IGH_BUS_ADAPT_TYPES_H
#define IGH_BUS_ADAPT_TYPES_H

#include "XmlParser/XmlParser.h"

#include <map>
#include <optional>
#include <string>

namespace igh_bus::adapt {

struct Nature {
  enum Kind { UNSIGNED, SIGNED, REAL, BITS, BYTES };
  Kind kind = UNSIGNED;
  bool known = false;           // false: the name says nothing, its bits are taken as an unsigned number
  unsigned int elementBits = 0; // of an array, 0 for none
  unsigned int lowerBound = 0;
};

// The types that one device or module defines for itself, read when first asked for.
class TypeTable {
public:
  // The nodes of the device and of modules in it; null ones are left out.
  void add(const _XmlNode* node);
  Nature natureOf(const std::string& type) const;

private:
  struct Alias {
    std::string base;
    bool enumeration = false;
  };
  void read() const;

  std::vector<const _XmlNode*> m_nodes;
  mutable std::size_t m_read = 0; // of the nodes
  mutable std::map<std::string, Alias> m_aliases;
};

// The library's type for so many bits, empty when none has this width.
std::string libraryType(Nature::Kind kind, unsigned int bits);

} // namespace igh_bus::adapt

#endif
