// Looks into the elements of a description file that the library's XML layer has read.
#ifndef IGH_BUS_DESCRIPTIONS_ELEMENTS_H
#define IGH_BUS_DESCRIPTIONS_ELEMENTS_H

#include "XmlParser/XmlParser.h"

#include <string>

namespace igh_bus {

const _XmlNode* firstChild(const _XmlNode* node, const char* name);
// Empty for a null node, and when there is none of the name.
std::string textOf(const _XmlNode* node);
std::string childText(const _XmlNode* node, const char* name);
// Null when there is none.
const std::string* attributeOf(const _XmlNode* node, const char* name);
std::string attributeText(const _XmlNode* node, const char* name);
// "1" and "true".
bool flagOf(const _XmlNode* node, const char* name);

} // namespace igh_bus

#endif
