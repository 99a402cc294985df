#include "arguments/CycleArguments.h"

#include "arguments/Arguments.h"

#include <algorithm>
#include <cmath>
#include <sched.h>

namespace igh_bus {
namespace {

void addLimits(CLI::App& command, CycleArguments& arguments) {
  auto& limits = arguments.options.limits;
  command.add_flag("--strict", limits.strict,
                   "Fail for an error or a missed cycle, and do not run other than in real time");
  command.add_option("--max-errors", limits.errors, "Fail for more errors")
      ->check(wholeNumber(0))
      ->type_name("N");
  command.add_option("--max-latency", arguments.maxLatency, "Fail when a wake-up is later, such as 200us")
      ->type_name("TIME");
  command.add_option("--max-missed", limits.missed, "Fail when late wake-ups leave more cycles out")
      ->check(wholeNumber(0))
      ->type_name("N");
}

} // namespace

void addPaceOptions(CLI::App& command, RunOptions& options, std::string& period) {
  command.add_option("--period", period, "Time between two exchanges, 100us to 4s (1ms)")->type_name("TIME");
  command
      .add_option("--priority", options.priority, "Run under SCHED_FIFO with this priority, memory locked")
      ->check(wholeNumber(1, 99))
      ->type_name("P");
  command.add_option("--cpu", options.cpu, "Run on this processor only")
      ->check(wholeNumber(0, CPU_SETSIZE - 1))
      ->type_name("C");
  command.add_flag(
      "--allow-c-states", options.deepIdleStates,
      "Leave deep idle states of the processors to the system; with --priority they are held off");
}

CLI::Option* addCycleOptions(CLI::App& command, CycleArguments& arguments) {
  auto& options = arguments.options;
  addBusOptions(command, options);
  addPaceOptions(command, options, arguments.period);
  auto* cycles = command.add_option("--cycles", options.cycles, "Exchanges to run, climbing included (5000)")
                     ->check(wholeNumber(1))
                     ->type_name("N");
  command.add_option("--seconds", arguments.seconds, "Time to run instead of --cycles")
      ->check(positiveNumber())
      ->type_name("S")
      ->excludes(cycles);
  command.add_flag("--exchange-mode", options.exchangeMode,
                   "Send first and wait for the frame in the same cycle");
  addLimits(command, arguments);
  return command.add_flag("--no-dc", options.withoutClocks, "Run without distributed clocks");
}

void completeCycle(CycleArguments& arguments) {
  auto& options = arguments.options;
  options.periodNs = parsePeriod(arguments.period);
  if (arguments.seconds) {
    const double cycles = std::ceil(*arguments.seconds * 1e9 / options.periodNs);
    options.cycles = static_cast<std::uint64_t>(std::min(cycles, 1e18));
  }
  if (!arguments.maxLatency.empty())
    options.limits.latencyNs = parseTime("--max-latency", arguments.maxLatency);
  if (options.limits.strict && !options.priority)
    throw Failure(usageError, "--strict needs --priority: without it the run is not a real-time one");
}

} // namespace igh_bus
