#include "bus/SlaveErrors.h"

namespace igh_bus {

std::string slaveName(std::size_t slave, const std::vector<FoundSlave>& slaves) {
  if (slave == ErrorCounts::WHOLE_MASTER)
    return "master";
  return slaveText(slave, slaves);
}

std::vector<SlaveError> slaveErrors(const ErrorCounts& errors, const std::vector<FoundSlave>& slaves) {
  std::vector<SlaveError> list;
  for (std::size_t slave = 0; slave < errors.bySlave.size(); ++slave) {
    for (std::size_t code = 0; code < errors.bySlave[slave].size(); ++code) {
      if (errors.bySlave[slave][code].count != 0)
        list.push_back({slaveName(slave, slaves), static_cast<int>(code), errors.bySlave[slave][code]});
    }
  }
  return list;
}

} // namespace igh_bus
