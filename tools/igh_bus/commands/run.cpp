// igh_bus run: the whole order, from description files to process data moving on the bus.
#include "arguments/Arguments.h"
#include "arguments/CycleArguments.h"
#include "bus/BusChoice.h"
#include "bus/SlaveList.h"
#include "commands/commands.h"
#include "descriptions/Descriptions.h"
#include "report/Report.h"
#include "run/BusRun.h"
#include "run/Results.h"
#include "sdo/SdoValue.h"
#include "text/Text.h"

#include <cstdio>

namespace igh_bus {
namespace {

struct RunArguments : CycleArguments {
  std::vector<std::string> settings;
  std::vector<std::string> watches;
};

void addRunOptions(CLI::App& command, RunArguments& arguments) {
  auto* noClocks = addCycleOptions(command, arguments);
  auto& options = arguments.options;
  command
      .add_flag("--sync-to-reference", options.followReference,
                "Follow the reference clock instead of leading it, and show how the difference shrinks")
      ->excludes(noClocks);
  command
      .add_option("--report", options.reportFolder,
                  "Write report.html (pictures of the timing, the clock and the errors) and report.json")
      ->type_name("DIR");
  command
      .add_option("--set", arguments.settings,
                  "Write VALUE to an output entry; SLAVE counts from 0 in scan order")
      ->allow_extra_args(false)
      ->type_name("SLAVE:ENTRY=VALUE");
  command
      .add_option("--watch", arguments.watches, "Show an entry at the end, on a terminal also every second")
      ->allow_extra_args(false)
      ->type_name("SLAVE:ENTRY");
  command.add_flag("--listing", options.listing, "Print the configuration listing of the scan");
}

void complete(RunArguments& arguments) {
  completeCycle(arguments);
  for (const auto& text : arguments.settings)
    arguments.options.settings.push_back(parseSetting(text));
  for (const auto& text : arguments.watches)
    arguments.options.watches.push_back(parseWatch(text));
}

// The library would take an input's name for an output, or an entry that it cannot convert, in silence.
const Entry& checkedEntry(const EntryAddress& address, bool write, const std::vector<FoundSlave>& slaves) {
  checkSlave(address.slave, slaves);
  const auto* device = slaves[address.slave].device;
  if (!device)
    throw Failure(usageError, format("slave %u has no description and therefore no entries", address.slave));
  const auto [entry, output] = findEntry(*device, address.entry);
  const std::string name =
      format("entry \"%s\" of slave %u (%s)", address.entry.c_str(), address.slave, device->typeName.c_str());
  if (!entry)
    throw Failure(usageError, "there is no " + name + "; igh_bus describe lists the names");
  if (convertedBytes(entry->type) == 0)
    throw Failure(usageError, name + " has type " + entry->type + ", which cannot be converted");
  if (write && !output)
    throw Failure(usageError, name + " is an input and cannot be set");
  return *entry;
}

void checkEntries(const RunOptions& options, const std::vector<FoundSlave>& slaves) {
  for (const auto& watch : options.watches)
    checkedEntry(watch, false, slaves);
  for (const auto& [address, value] : options.settings) {
    const auto& type = parseType(checkedEntry(address, true, slaves).type);
    checkFits(type, value, format("%.17g for %u:%s", value, address.slave, address.entry.c_str()));
  }
}

const char* modeText(const RunOptions& options) {
  return options.exchangeMode ? "exchange mode (send, then wait for the frame)"
                              : "normal mode (receive, then send)";
}

const char* clocksText(const RunOptions& options) {
  if (options.withoutClocks)
    return "off";
  return options.followReference ? "where described, following the reference clock" : "where described";
}

std::string busText(const RunOptions& options, std::size_t slaves) {
  return format("Master %u: %zu slaves%s", unsigned{options.master}, slaves,
                IGH_BUS_SIMULATED ? " (simulated bus)" : "");
}

void printPlan(const RunOptions& options, const std::vector<FoundSlave>& slaves) {
  std::size_t matched = 0;
  for (const auto& slave : slaves)
    matched += slave.device ? 1 : 0;
  std::printf("Master %u: %zu slaves, %zu with a description%s\n", unsigned{options.master}, slaves.size(),
              matched, IGH_BUS_SIMULATED ? " (simulated bus)" : "");
  printSlaves(slaves);
  std::printf("\nPeriod %.10g us, %s, distributed clocks %s\n", options.periodNs / 1e3, modeText(options),
              clocksText(options));
  std::fflush(stdout);
}

void report(const RunOptions& options, const std::vector<FoundSlave>& slaves, const Verdict& verdict,
            const RealTime& realTime, const BusRun& busRun) {
  const ReportFacts facts{busText(options, slaves.size()),
                          modeText(options),
                          clocksText(options),
                          verdict.text,
                          verdict.success,
                          realTime.missing().empty() ? "yes" : "no: " + realTime.missing(),
                          options.periodNs / 1e3,
                          busRun.session().cycles(),
                          busRun.pacemaker().leftOut(),
                          busRun.climb().changes(),
                          slaveErrors(busRun.session().errors(), slaves),
                          inspectHost()};
  writeReport(options.reportFolder, reportData(facts, busRun.recording()));
}

// The bus is let go at the end, so that the verdict comes behind all lines of the master.
Verdict cycleBus(const RunOptions& options, const std::vector<FoundSlave>& slaves, RealTime& realTime) {
  BusRun busRun(options, realTime);
  busRun.cycle();
  printResults(options, busRun.session(), busRun.pacemaker(), busRun.climb(),
               slaveErrors(busRun.session().errors(), slaves));
  printShortReport(busRun.recording());
  const bool processData = hasProcessData(slaves);
  if (!processData)
    std::printf(
        "\nNo slave has process data: the working counter counts as incomplete in every cycle in OP.\n");
  auto verdict = busRun.verdict(processData);
  if (!options.reportFolder.empty())
    report(options, slaves, verdict, realTime, busRun);
  return verdict;
}

Status run(RunArguments& arguments) {
  complete(arguments);
  const auto& options = arguments.options;
  const StopSignals signals;
  const auto devices = loadDevices(options.descriptions);
  const BusChoice bus(options, devices);
  const auto slaves = surveyBus(options, devices);
  checkSize(slaves);
  checkEntries(options, slaves);
  RealTime realTime(options.priority, options.cpu);
  sayRealTime(options.limits, realTime);
  printPlan(options, slaves);
  if (!options.reportFolder.empty())
    prepareReportFolder(options.reportFolder);
  return endRun(cycleBus(options, slaves, realTime), realTime);
}

} // namespace

void addRunCommand(CLI::App& app, Action& action) {
  auto* command = addCommand(app, "run", "Bring the bus to OP and exchange process data");
  const auto arguments = std::make_shared<RunArguments>();
  addRunOptions(*command, *arguments);
  command->callback([arguments, &action] { action = [arguments] { return run(*arguments); }; });
}

} // namespace igh_bus
