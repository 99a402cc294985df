// igh_bus scan: the slaves on the bus, each with its description or without.
#include "bus/BusChoice.h"
#include "bus/Survey.h"
#include "commands/commands.h"
#include "descriptions/Descriptions.h"

namespace igh_bus {
namespace {

Status scan(const ScanOptions& options) {
  const auto devices = loadDevices(options.descriptions);
  const BusChoice bus(options, devices);
  printSlaves(surveyBus(options, devices));
  return success;
}

} // namespace

void addScanCommand(CLI::App& app, Action& action) {
  auto* command = addCommand(app, "scan", "List the slaves on the bus and their descriptions");
  const auto options = std::make_shared<ScanOptions>();
  addBusOptions(*command, *options);
  command->callback([options, &action] { action = [options] { return scan(*options); }; });
}

} // namespace igh_bus
