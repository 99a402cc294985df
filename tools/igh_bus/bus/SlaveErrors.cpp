#include "bus/SlaveErrors.h"

#include "text/Text.h"

namespace igh_bus {
namespace {

std::string nameOf(std::size_t slave, const std::vector<FoundSlave>& slaves) {
  if (slave == ErrorCounts::WHOLE_MASTER)
    return "master";
  const auto* const name = slave < slaves.size() ? slaves[slave].info.name : "";
  return format("slave %zu", slave) + (*name ? format(" (%s)", name) : "");
}

} // namespace

std::vector<SlaveError> slaveErrors(const ErrorCounts& errors, const std::vector<FoundSlave>& slaves) {
  std::vector<SlaveError> list;
  for (std::size_t slave = 0; slave < errors.bySlave.size(); ++slave) {
    for (std::size_t code = 0; code < errors.bySlave[slave].size(); ++code) {
      if (errors.bySlave[slave][code].count != 0)
        list.push_back({nameOf(slave, slaves), static_cast<int>(code), errors.bySlave[slave][code]});
    }
  }
  return list;
}

} // namespace igh_bus
