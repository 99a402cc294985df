// The command lines of igh_bus run and of igh_bus diag, which is a run that shows its timing only.
#include "arguments/Arguments.h"
#include "arguments/CommandLine.h"

#include <algorithm>
#include <cmath>
#include <sched.h>

namespace igh_bus {
namespace {

// The texts and numbers of `run` that need a second look after parsing.
struct RunTexts {
  std::string period = "1ms";
  std::optional<double> seconds;
  std::vector<std::string> settings;
  std::vector<std::string> watches;
};

struct RunArguments {
  RunOptions options;
  RunTexts texts;
};

// How the bus is cycled. Gives back the option that switches distributed clocks off.
CLI::Option* addCycleOptions(CLI::App& command, RunOptions& options, RunTexts& texts) {
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
  command
      .add_option("--priority", options.priority, "Run under SCHED_FIFO with this priority, memory locked")
      ->check(CLI::Range(1, 99))
      ->type_name("P");
  command.add_option("--cpu", options.cpu, "Run on this processor only")
      ->check(CLI::Range(0, CPU_SETSIZE - 1))
      ->type_name("C");
  return command.add_flag("--no-dc", options.withoutClocks, "Run without distributed clocks");
}

void addRunOptions(CLI::App& command, RunOptions& options, RunTexts& texts) {
  auto* noClocks = addCycleOptions(command, options, texts);
  command
      .add_flag("--sync-to-reference", options.followReference,
                "Follow the reference clock instead of leading it, and show how the difference shrinks")
      ->excludes(noClocks);
  command
      .add_option("--report", options.reportFolder,
                  "Write report.html (pictures of the timing, the clock and the errors) and report.json")
      ->type_name("DIR");
  command
      .add_option("--set", texts.settings,
                  "Write VALUE to an output entry; SLAVE counts from 0 in scan order")
      ->allow_extra_args(false)
      ->type_name("SLAVE:ENTRY=VALUE");
  command.add_option("--watch", texts.watches, "Show an entry at the end, on a terminal also every second")
      ->allow_extra_args(false)
      ->type_name("SLAVE:ENTRY");
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

Status execute(RunArguments& arguments) {
  complete(arguments.options, arguments.texts);
  return run(arguments.options);
}

} // namespace

void addRunCommand(CLI::App& app, Action& action) {
  auto* command = addCommand(app, "run", "Bring the bus to OP and exchange process data");
  const auto arguments = std::make_shared<RunArguments>();
  addRunOptions(*command, arguments->options, arguments->texts);
  command->callback([arguments, &action] { action = [arguments] { return execute(*arguments); }; });
}

void addDiagCommand(CLI::App& app, Action& action) {
  auto* command = addCommand(app, "diag", "Run the bus and show its fastest, its last and its slowest cycle");
  const auto arguments = std::make_shared<RunArguments>();
  arguments->options.timingOnly = true;
  addCycleOptions(*command, arguments->options, arguments->texts);
  command->callback([arguments, &action] { action = [arguments] { return execute(*arguments); }; });
}

} // namespace igh_bus
