// igh_bus: looks into device descriptions, lists the slaves on a bus, runs a bus.
#include "Arguments.h"
#include "Options.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <exception>
#include <sched.h>

namespace {

using namespace igh_bus;

constexpr const char* exitStatuses =
    "Exit status:\n"
    "  0  success (also when SIGINT or SIGTERM ended a run in order)\n"
    "  1  describe: a description file could not be loaded\n"
    "  2  wrong command line, description file, bus file, slave or entry\n"
    "  3  bus error: no master or no slaves, activation failed, OP not reached or lost, or the working "
    "counter\n"
    "     was incomplete, the link down or a slave in error when the run ended\n";

void addBusOptions(CLI::App& command, ScanOptions& options) {
  command.add_option("--eni", options.descriptions, "Description files (XML) of the slaves")
      ->required()
      ->type_name("FILE");
  command
      .add_option(
          "--bus", options.busFile,
          "Bus file (JSON) for the simulated master; without it, and without ETHERCAT_SIMULATION_BUS in "
          "the environment, every described device is simulated once")
      ->type_name("BUS.json");
  command.add_option("--master", options.master, "Index of the EtherCAT master (0)")->type_name("N");
}

// The texts and numbers of `run` that need a second look after parsing.
struct RunTexts {
  std::string period = "1ms";
  std::optional<double> seconds;
  std::vector<std::string> settings;
  std::vector<std::string> watches;
};

void addRunOptions(CLI::App& command, RunOptions& options, RunTexts& texts) {
  addBusOptions(command, options);
  command.add_option("--period", texts.period, "Time between two exchanges, 100us to 4s (1ms)")
      ->type_name("TIME");
  auto* cycles = command.add_option("--cycles", options.cycles, "Exchanges to run, climbing included (5000)")
                     ->check(CLI::PositiveNumber)
                     ->type_name("N");
  command.add_option("--seconds", texts.seconds, "Time to run instead of --cycles")
      ->check(CLI::PositiveNumber)
      ->type_name("S")
      ->excludes(cycles);
  command.add_flag("--exchange-mode", options.exchangeMode,
                   "Send first and wait for the frame in the same cycle");
  auto* noClocks = command.add_flag("--no-dc", options.withoutClocks, "Run without distributed clocks");
  command
      .add_flag("--sync-to-reference", options.followReference,
                "Follow the reference clock instead of leading it, and show how the difference shrinks")
      ->excludes(noClocks);
  command
      .add_option("--set", texts.settings,
                  "Write VALUE to an output entry; SLAVE counts from 0 in scan order")
      ->allow_extra_args(false)
      ->type_name("SLAVE:ENTRY=VALUE");
  command.add_option("--watch", texts.watches, "Show an entry at the end, on a terminal also every second")
      ->allow_extra_args(false)
      ->type_name("SLAVE:ENTRY");
  command
      .add_option("--priority", options.priority, "Run under SCHED_FIFO with this priority, memory locked")
      ->check(CLI::Range(1, 99))
      ->type_name("P");
  command.add_option("--cpu", options.cpu, "Run on this processor only")
      ->check(CLI::Range(0, CPU_SETSIZE - 1))
      ->type_name("C");
  command.add_flag("--listing", options.listing, "Print the configuration listing of the scan");
}

void complete(RunOptions& options, const RunTexts& texts) {
  options.periodNs = parsePeriod(texts.period);
  if (texts.seconds) {
    const double cycles = std::ceil(*texts.seconds * 1e9 / options.periodNs);
    options.cycles = static_cast<std::uint64_t>(std::min(cycles, 1e18));
  }
  for (const auto& text : texts.settings)
    options.settings.push_back(parseSetting(text));
  for (const auto& text : texts.watches)
    options.watches.push_back(parseWatch(text));
}

Status execute(int argc, char** argv) {
  CLI::App app("Device descriptions and buses of the IgH EtherCAT Master.", "igh_bus");
  app.require_subcommand(0, 1);
  app.footer(exitStatuses);

  DescribeOptions describeOptions;
  auto* describeCommand = app.add_subcommand("describe", "Show what is loaded from description files");
  describeCommand->add_option("FILE", describeOptions.descriptions, "Description files (XML)")->required();

  ScanOptions scanOptions;
  auto* scanCommand = app.add_subcommand("scan", "List the slaves on the bus and their descriptions");
  addBusOptions(*scanCommand, scanOptions);

  RunOptions runOptions;
  RunTexts runTexts;
  auto* runCommand = app.add_subcommand("run", "Bring the bus to OP and exchange process data");
  addRunOptions(*runCommand, runOptions, runTexts);
  for (auto* command : {describeCommand, scanCommand, runCommand})
    command->footer(exitStatuses);

  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& help) {
    app.exit(help);
    return success;
  } catch (const CLI::ParseError& error) {
    std::string reason = error.what();
    std::replace(reason.begin(), reason.end(), '\n', ' ');
    throw Failure(usageError, reason + " (try igh_bus --help)");
  }
  if (describeCommand->parsed())
    return describe(describeOptions);
  if (scanCommand->parsed())
    return scan(scanOptions);
  if (!runCommand->parsed())
    throw Failure(usageError, "use describe, scan or run (try igh_bus --help)");
  complete(runOptions, runTexts);
  return run(runOptions);
}

} // namespace

int main(int argc, char** argv) {
  try {
    return execute(argc, argv);
  } catch (const Failure& failure) {
    std::fflush(stdout);
    if (*failure.what() != '\0')
      std::fprintf(stderr, "igh_bus: %s\n", failure.what());
    return failure.status();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "igh_bus: %s\n", error.what());
    return notLoaded;
  }
}
