// igh_bus errors: the error counters of every slave and port, once or as they grow.
#include "arguments/Arguments.h"
#include "bus/BusChoice.h"
#include "bus/OpenedMaster.h"
#include "commands/commands.h"
#include "descriptions/Descriptions.h"
#include "scan/CounterWatch.h"

namespace igh_bus {
namespace {

struct ErrorsOptions : ScanOptions {
  bool clear = false;
  bool watch = false;
  std::string interval = "1s"; // needs a second look after parsing
};

double intervalNs(const ErrorsOptions& options) {
  constexpr double SHORTEST = 1e8;
  const double ns = parseTime("--interval", options.interval);
  if (ns < SHORTEST)
    throw Failure(usageError, "--interval " + options.interval + ": the shortest is 100ms");
  return ns;
}

Status errors(const ErrorsOptions& options) {
  const double interval = intervalNs(options);
  const auto devices = loadDevices(options.descriptions);
  const BusChoice bus(options, devices);
  const auto slaves = OpenedMaster(options.master).slaves(devices);
  const DeviceFile device(options.master);
  CounterWatch counters(device, slaves);
  counters.show();
  if (options.clear)
    counters.clear();
  if (options.watch)
    counters.watch(interval);
  return success;
}

} // namespace

void addErrorsCommand(CLI::App& app, Action& action) {
  auto* command = addCommand(
      app, "errors", "Show the error counters of every slave and port; works beside a running application");
  const auto options = std::make_shared<ErrorsOptions>();
  command->add_flag("--clear", options->clear, "Clear the counters after they were shown");
  auto* watch = command->add_flag("--watch", options->watch,
                                  "Then tell each counter that grows, until SIGINT, SIGTERM or SIGHUP");
  command->add_option("--interval", options->interval, "Time between two looks (1s)")
      ->type_name("TIME")
      ->needs(watch);
  addBusOptions(*command, *options, false);
  command->callback([options, &action] { action = [options] { return errors(*options); }; });
}

} // namespace igh_bus
