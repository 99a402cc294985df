// What a slave is, beyond its line in the list.
#ifndef IGH_BUS_SLAVE_DETAILS_H
#define IGH_BUS_SLAVE_DETAILS_H

#include "bus/DeviceFile.h"

#include <string>
#include <vector>

namespace igh_bus {

// What could not be read is nothing.
struct SlaveDetails {
  std::optional<unsigned int> clockBits; // 0: no distributed clock
  std::optional<std::uint16_t> alStatusCode;
  std::optional<std::vector<std::string>> mailboxProtocols;
};

SlaveDetails readDetails(const DeviceFile& device, std::uint16_t slave);

} // namespace igh_bus

#endif
