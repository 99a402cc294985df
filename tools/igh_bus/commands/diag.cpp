// igh_bus diag: a run that shows its timing only.
#include "arguments/CycleArguments.h"
#include "bus/BusChoice.h"
#include "bus/Survey.h"
#include "commands/commands.h"
#include "descriptions/Descriptions.h"
#include "run/BusRun.h"
#include "run/Results.h"

namespace igh_bus {
namespace {

// The bus is let go at the end, so that the verdict comes behind all lines of the master.
Verdict cycleBus(const RunOptions& options, const std::vector<FoundSlave>& slaves, RealTime& realTime,
                 Lookout& lookout) {
  BusRun busRun(options, realTime, &lookout);
  busRun.cycle();
  printTiming(busRun.session());
  printSightings(lookout.sightings(), slaves);
  return busRun.verdict(hasProcessData(slaves));
}

Status diag(CycleArguments& arguments) {
  completeCycle(arguments);
  const auto& options = arguments.options;
  const StopSignals signals;
  const auto devices = loadDevices(options.descriptions);
  const BusChoice bus(options, devices);
  const auto slaves = surveyBus(options, devices);
  checkSize(slaves);
  Lookout lookout(options, slaves); // before the thread is a real-time one
  RealTime realTime(options.priority, options.cpu, options.deepIdleStates ? "" : IdleStates::REQUEST_FILE);
  sayRealTime(options.limits, realTime);
  return endRun(cycleBus(options, slaves, realTime, lookout), realTime);
}

} // namespace

void addDiagCommand(CLI::App& app, Action& action) {
  auto* command = addCommand(app, "diag", "Run the bus and show its fastest, its last and its slowest cycle");
  const auto arguments = std::make_shared<CycleArguments>();
  addCycleOptions(*command, *arguments);
  command->callback([arguments, &action] { action = [arguments] { return diag(*arguments); }; });
}

} // namespace igh_bus
