// The object dictionary of a device, as far as its description tells of it.
#ifndef IGH_BUS_DICTIONARY_H
#define IGH_BUS_DICTIONARY_H

#include "XmlParser/XmlParser.h"
#include "descriptions/Device.h"

namespace igh_bus {

// Sub-index by sub-index; empty for a device without.
std::vector<DescribedObject> dictionaryOf(const _XmlNode* device);

} // namespace igh_bus

#endif
