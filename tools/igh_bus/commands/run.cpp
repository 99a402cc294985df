// igh_bus run: the whole order, from description files to process data moving on the bus.
#include "arguments/EntryArguments.h"
#include "bus/BusChoice.h"
#include "bus/SlaveList.h"
#include "commands/commands.h"
#include "descriptions/Descriptions.h"
#include "report/HistogramLines.h"
#include "report/Report.h"
#include "run/BusRun.h"
#include "run/Entries.h"
#include "run/Results.h"
#include "text/Text.h"

#include <cstdio>
#include <ctime>

namespace igh_bus {
namespace {

struct RunArguments : EntryArguments {
  std::string commandLine;
};

void addRunOptions(CLI::App& command, EntryArguments& arguments) {
  const auto entries =
      addEntryOptions(command, arguments, "Show an entry at the end, on a terminal also every second");
  auto& options = arguments.options;
  command
      .add_flag("--sync-to-reference", options.followReference,
                "Follow the reference clock instead of leading it, and show how the difference shrinks")
      ->excludes(entries.noClocks);
  command
      .add_option("--report", options.reportFolder,
                  "Write report.html (pictures of the timing, the clock and the errors) and report.json")
      ->type_name("DIR");
  command.add_flag("--histogram", options.histogram,
                   "Print the histogram of the wake-up latency at the end, in the form of cyclictest -h");
  command.add_flag("--watch-all", options.watchAll, "Watch every entry of every described slave")
      ->excludes(entries.watch);
  command.add_flag("--listing", options.listing, "Print the configuration listing of the scan");
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

std::string localTime() {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  localtime_r(&now, &parts);
  std::array<char, 64> text{};
  std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S %z", &parts);
  return text.data();
}

void report(const RunArguments& arguments, const std::vector<FoundSlave>& slaves, const Verdict& verdict,
            const RealTime& realTime, BusRun& busRun, const Sightings& sightings,
            const std::optional<RecordResult>& record) {
  const auto& options = arguments.options;
  const ReportFacts facts{busText(options, slaves.size()),
                          modeText(options),
                          clocksText(options),
                          verdict.text,
                          verdict.success,
                          verdict.errors,
                          realTime.missing().empty() ? "yes" : "no: " + realTime.missing(),
                          options.periodNs / 1e3,
                          busRun.session().cycles(),
                          busRun.pacemaker().leftOut(),
                          busRun.climb().changes(),
                          slaveErrors(busRun.session().errors(), slaves),
                          inspectHost(),
                          slaveFacts(sightings, busRun.session().errors(), slaves),
                          localTime(),
                          arguments.commandLine,
                          busRun.climb().forgotten(),
                          seenOf(ErrorCounts::WHOLE_MASTER, sightings)};
  auto data = reportData(facts, busRun.recording());
  data["plots"] = busRun.watches().plots(options.watches, slaves);
  if (record)
    data["record"] = {{"file", record->path},
                      {"every", record->every},
                      {"rows", record->rows},
                      {"lost", record->lost},
                      {"failure", record->failure}};
  writeReport(options.reportFolder, data);
}

struct Ending {
  Verdict verdict;
  std::string incomplete; // why the record is, if it is
};

// The bus is let go at the end, so that the verdict comes behind all lines of the master.
Ending cycleBus(const RunArguments& arguments, const std::vector<FoundSlave>& slaves, RealTime& realTime,
                Lookout& lookout) {
  const auto& options = arguments.options;
  BusRun busRun(options, realTime, &lookout);
  busRun.cycle();
  const auto sightings = lookout.sightings();
  printResults(options, busRun.session(), busRun.pacemaker(), busRun.climb(), sightings, slaves);
  printShortReport(busRun.recording());
  if (options.histogram)
    printHistogram(busRun.recording().histogram(Recording::wakeUp));
  const auto record = busRun.watches().finish();
  if (record)
    std::printf("\n%s\n", record->text().c_str());
  const bool processData = hasProcessData(slaves);
  if (!processData)
    std::printf(
        "\nNo slave has process data: the working counter counts as incomplete in every cycle in OP.\n");
  auto verdict = busRun.verdict(processData);
  if (!options.reportFolder.empty())
    report(arguments, slaves, verdict, realTime, busRun, sightings, record);
  return {verdict, record ? record->complaint() : ""};
}

Status run(RunArguments& arguments) {
  completeEntries(arguments);
  const auto& options = arguments.options;
  const StopSignals signals;
  const auto devices = loadDevices(options.descriptions);
  const BusChoice bus(options, devices);
  const auto slaves = surveyBus(options, devices);
  checkSize(slaves);
  if (options.watchAll)
    arguments.options.watches = allEntries(slaves);
  checkEntries(options, slaves);
  Lookout lookout(options, slaves); // before the thread is a real-time one
  RealTime realTime(options.priority, options.cpu, options.deepIdleStates ? "" : IdleStates::REQUEST_FILE);
  sayRealTime(options.limits, realTime);
  printPlan(options, slaves);
  if (!options.reportFolder.empty())
    prepareReportFolder(options.reportFolder);
  const auto ending = cycleBus(arguments, slaves, realTime, lookout);
  const auto status = endRun(ending.verdict, realTime);
  if (!ending.incomplete.empty())
    throw Failure(usageError, ending.incomplete);
  return status;
}

} // namespace

void addRunCommand(CLI::App& app, Action& action, const std::string& commandLine) {
  auto* command = addCommand(app, "run", "Bring the bus to OP and exchange process data");
  const auto arguments = std::make_shared<RunArguments>();
  arguments->commandLine = commandLine;
  addRunOptions(*command, *arguments);
  command->callback([arguments, &action] { action = [arguments] { return run(*arguments); }; });
}

} // namespace igh_bus
