// What the XML of a description file tells beyond what the loader keeps.
#ifndef IGH_BUS_MARKUP_H
#define IGH_BUS_MARKUP_H

#include "descriptions/Device.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace igh_bus {

// A device that the loader skips, and the devices of the same file whose HideType names its revision.
struct HiddenDevice {
  std::string typeName;
  DeviceKey key;
  std::vector<std::pair<std::string, std::uint32_t>> by; // type name and revision
};

struct FileMarkup {
  std::map<DeviceKey, DeviceMarkup> devices; // the first of a kind counts, as in the loader
  std::vector<HiddenDevice> hidden;          // in the order of the file
};

// Empty when the file cannot be read; prints what the XML layer prints then.
FileMarkup readMarkup(const std::string& path, std::uint32_t vendorId);

} // namespace igh_bus

#endif
