// igh_bus scan: the slaves on the bus, each with its description or without.
#include "Bus.h"
#include "Descriptions.h"

namespace igh_bus {

Status scan(const ScanOptions& options) {
  const auto devices = loadDevices(options.descriptions);
  const BusChoice bus(options, devices);
  printSlaves(surveyBus(options, devices));
  return success;
}

} // namespace igh_bus
