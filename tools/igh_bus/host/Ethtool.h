#ifndef IGH_BUS_ETHTOOL_H
#define IGH_BUS_ETHTOOL_H

#include <map>
#include <string>

namespace igh_bus {

// Coalescing and offloads of a network card of this machine, by the names that ethtool -c and ethtool -k
// print. What its driver does not say is left out.
std::map<std::string, std::string> ethtoolSettings(const std::string& card);

} // namespace igh_bus

#endif
