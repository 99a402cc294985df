// Slaves as lines.
#ifndef IGH_BUS_SLAVE_LIST_H
#define IGH_BUS_SLAVE_LIST_H

#include "bus/Survey.h"
#include "descriptions/Markup.h"

namespace igh_bus {

// "PREOP", "BOOT", "SAFEOP + ERROR".
std::string slaveStateText(std::uint8_t alState);

// One for each slave: the columns of `ethercat slaves`, and the description behind them when there are any.
std::vector<std::string> slaveLines(const std::vector<FoundSlave>& slaves, bool described);

// A line for every slave with an alias.
void printAliases(const std::vector<FoundSlave>& slaves);

// The lines and the aliases.
void printSlaves(const std::vector<FoundSlave>& slaves);

} // namespace igh_bus

#endif
