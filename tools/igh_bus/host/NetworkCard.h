// The network card of a master.
#ifndef IGH_BUS_NETWORK_CARD_H
#define IGH_BUS_NETWORK_CARD_H

#include "host/Doctor.h"

namespace igh_bus {

struct NetworkCard {
  std::string interface; // "eth1"; empty when the kernel shows none, as for a card with a native driver
  std::string address;   // as the master was told, empty when it was not asked
  std::string driver;    // of the interface
  std::vector<std::string> masterDrivers; // of the master, loaded: "generic", "e1000e"

  bool isNative() const;
};

// By name, else by what the kernel module or its configuration file says.
NetworkCard findCard(const Patient& patient);

} // namespace igh_bus

#endif
