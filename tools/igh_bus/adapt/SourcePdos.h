// The parts of a device or module that describe process data.
#ifndef IGH_BUS_ADAPT_SOURCEPDOS_H
#define IGH_BUS_ADAPT_SOURCEPDOS_H

#include "adapt/Source.h"

namespace igh_bus::adapt {

// RxPdo and TxPdo children of a device or module. Numbers that the library would misread are told.
std::vector<SourcePdo> readPdos(const _XmlNode* node, Changes& numbers);
std::vector<SourceMode> readModes(const _XmlNode* device, Changes& numbers);
// Fills what the Slots elements of the device say.
void readSlots(const _XmlNode* node, SourceDevice& device);

} // namespace igh_bus::adapt

#endif
