// The entries that a command line names, on the bus that is there.
#ifndef IGH_BUS_ENTRIES_H
#define IGH_BUS_ENTRIES_H

#include "bus/Survey.h"

namespace igh_bus {

// Throws Failure(usageError) for one that is not there, cannot be converted or does not take its value.
void checkEntries(const RunOptions& options, const std::vector<FoundSlave>& slaves);

// Every entry of every described slave that the library converts, in scan order.
std::vector<EntryAddress> allEntries(const std::vector<FoundSlave>& slaves);

} // namespace igh_bus

#endif
