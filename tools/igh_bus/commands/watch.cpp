// igh_bus watch: a run that is looked at while it lasts.
#include "arguments/EntryArguments.h"
#include "bus/BusChoice.h"
#include "commands/commands.h"
#include "descriptions/Descriptions.h"
#include "run/BusRun.h"
#include "run/Entries.h"
#include "run/Results.h"
#include "watch/LiveScreen.h"

namespace igh_bus {
namespace {

struct Ending {
  Verdict verdict;
  std::string incomplete; // why the record is, if it is
};

Ending cycleBus(const RunOptions& options, const std::vector<FoundSlave>& slaves, RealTime& realTime,
                Lookout& lookout, std::unique_ptr<LiveScreen>& screen, LiveValues& live) {
  BusRun busRun(options, realTime, &lookout);
  busRun.watches().show(live);
  busRun.cycle();
  const auto record = busRun.watches().finish();
  screen.reset(); // the rest is read on the terminal as it was
  printResults(options, busRun.session(), busRun.pacemaker(), busRun.climb(), lookout.sightings(), slaves);
  if (record)
    std::printf("\n%s\n", record->text().c_str());
  return {busRun.verdict(hasProcessData(slaves)), record ? record->complaint() : ""};
}

Status watch(EntryArguments& arguments) {
  constexpr std::chrono::milliseconds BETWEEN_LOOKS{1000}; // they take frames of the bus
  Screen::demand();
  completeEntries(arguments);
  auto& options = arguments.options;
  const StopSignals signals;
  const auto devices = loadDevices(options.descriptions);
  const BusChoice bus(options, devices);
  const auto slaves = surveyBus(options, devices);
  checkSize(slaves);
  if (options.watches.empty())
    options.watches = allEntries(slaves);
  checkEntries(options, slaves);
  Lookout lookout(options, slaves, {true, BETWEEN_LOOKS});
  LiveValues live(options, slaves.size());
  RealTime realTime(options.priority, options.cpu, options.deepIdleStates ? "" : IdleStates::REQUEST_FILE);
  sayRealTime(options.limits, realTime);
  const Lines lines(options, slaves, realTime.missing());
  auto screen = std::make_unique<LiveScreen>(lines, live, lookout);
  const auto ending = cycleBus(options, slaves, realTime, lookout, screen, live);
  const auto status = endRun(ending.verdict, realTime);
  if (!ending.incomplete.empty())
    throw Failure(usageError, ending.incomplete);
  return status;
}

} // namespace

void addWatchCommand(CLI::App& app, Action& action) {
  auto* command =
      addCommand(app, "watch", "Run the bus and look at it live: slaves, values, latency, errors");
  const auto arguments = std::make_shared<EntryArguments>();
  arguments->options.cycles = MOST;
  addEntryOptions(*command, *arguments, "Show this entry; without, all of every described slave");
  command->get_option("--cycles")->description("Exchanges to run, climbing included (until a key ends it)");
  command->callback([arguments, &action] { action = [arguments] { return watch(*arguments); }; });
}

} // namespace igh_bus
