// What the XML of a description file tells beyond what the loader keeps.
#ifndef IGH_BUS_MARKUP_H
#define IGH_BUS_MARKUP_H

#include "Device.h"

#include <map>
#include <string>

namespace igh_bus {

// The devices of a file by key (the first of a kind counts, as in the loader). Empty when the file
// cannot be read; prints what the XML layer prints then.
std::map<DeviceKey, DeviceMarkup> readMarkup(const std::string& path, std::uint32_t vendorId);

} // namespace igh_bus

#endif
