// Which slave raised what, and when.
#ifndef IGH_BUS_SLAVE_ERRORS_H
#define IGH_BUS_SLAVE_ERRORS_H

#include "bus/ErrorCounts.h"
#include "bus/Survey.h"

namespace igh_bus {

struct SlaveError {
  std::string slave; // "slave 5 (EM500 servo drive X)", "master"
  int code;
  SlaveErrorCount count;
};

// "slave 5 (EM500 servo drive X)"
std::string slaveName(std::size_t slave, const std::vector<FoundSlave>& slaves);

std::vector<SlaveError> slaveErrors(const ErrorCounts& errors, const std::vector<FoundSlave>& slaves);

} // namespace igh_bus

#endif
