// igh_bus check: what the library promises, on the bus that is there, as a report that can be sent.
#include "check/Check.h"
#include "arguments/Arguments.h"
#include "arguments/CycleArguments.h"
#include "bus/BusChoice.h"
#include "check/CheckReport.h"
#include "check/Permission.h"
#include "commands/commands.h"
#include "descriptions/Descriptions.h"
#include "text/Redirection.h"
#include "text/Text.h"

#include <cerrno>
#include <cstring>
#include <fstream>

namespace igh_bus {
namespace {

using check::Check;
using check::CheckedBus;
using check::CheckOptions;
using check::Line;
using check::Outcome;

struct CheckArguments {
  CheckOptions options;
  std::string period = "1ms";
  std::string clockBound;
};

void complete(CheckArguments& arguments) {
  auto& options = arguments.options;
  options.periodNs = parsePeriod(arguments.period);
  if (!arguments.clockBound.empty())
    options.clockBoundNs = parseTime("--clock-bound", arguments.clockBound);
}

void writeFile(const std::string& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary);
  file << text;
  file.close();
  if (!file)
    throw Failure(usageError, path + " cannot be written: " + std::strerror(errno));
}

std::string wholeText(const std::string& head, const std::vector<Line>& lines) {
  std::string text = head;
  for (const auto& line : lines)
    text += lineText(line);
  return text + "\n" + sumText(lines) + "\n";
}

// 0 only when every step that could be done has been, and has passed.
Status verdict(const std::vector<Line>& lines) {
  if (std::any_of(lines.begin(), lines.end(),
                  [](const Line& line) { return line.outcome == Outcome::failed; }))
    throw Failure(busError, "the check has found faults: " + sumText(lines));
  if (StopSignals::requested())
    throw Failure(busError, "the check was ended by a signal: " + sumText(lines));
  return success;
}

Status runCheck(const CheckedBus& bus) {
  const auto& options = bus.options;
  const auto facts = collectCheckFacts(bus);
  const auto head = headText(facts);
  const KeptStdout out; // the steps silence the library, which prints there
  const auto tell = [&](const std::string& text) {
    if (!options.json)
      out.write(text);
  };
  tell(head);
  Check checking(bus, [&](const Line& line) { tell(lineText(line)); });
  const auto& lines = checking.run();
  tell("\n" + sumText(lines) + "\n");
  const auto data =
      checkJson(facts, lines).dump(1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
  if (options.json)
    out.write(data);
  if (!options.reportFile.empty())
    writeFile(options.reportFile, options.json ? data : wholeText(head, lines));
  return verdict(lines);
}

Status takeAndCheck(CheckArguments& arguments) {
  complete(arguments);
  const auto& options = arguments.options;
  const StopSignals signals;
  const auto devices = loadDevices(options.descriptions);
  const BusChoice bus(options, devices);
  check::askPermission(IGH_BUS_SIMULATED != 0, options.yes);
  if (!options.reportFile.empty())
    writeFile(options.reportFile, ""); // now, and not when all is done
  const auto slaves = surveyBus(options, devices);
  checkSize(slaves);
  RealTime realTime(options.priority, options.cpu, options.deepIdleStates ? "" : IdleStates::REQUEST_FILE);
  return runCheck(CheckedBus(options, slaves, realTime));
}

void addOptions(CLI::App& command, CheckArguments& arguments) {
  auto& options = arguments.options;
  addBusOptions(command, options);
  addPaceOptions(command, options, arguments.period);
  command.add_option("--cycles", options.cycles, "Cycles over which the working counter is watched (5000)")
      ->check(wholeNumber(1))
      ->type_name("N");
  command
      .add_option("--climb-limit", options.climbSeconds,
                  "Longest time to OP in seconds (10, and 0.5 a slave)")
      ->check(positiveNumber())
      ->type_name("S");
  command
      .add_option("--clock-bound", arguments.clockBound,
                  "Difference that locked clocks may have, such as 20us (a tenth of the period)")
      ->type_name("TIME");
  command
      .add_option("--clock-cycles", options.clockCycles,
                  "Cycles in which the master must meet the reference clock (30000)")
      ->check(wholeNumber(1))
      ->type_name("N");
  command.add_flag("--no-dc", options.withoutClocks, "Check without distributed clocks");
  command.add_flag("--line-pull", options.linePull, "Also ask for a line to be pulled and put back");
  command.add_option("--line-limit", options.lineSeconds, "Longest wait for each of the two in seconds (60)")
      ->check(positiveNumber())
      ->type_name("S");
  command.add_option("--report", options.reportFile, "Write the report to this file too")->type_name("FILE");
  command.add_flag("--json", options.json, "The report as JSON, in the file too");
  command.add_flag("--yes", options.yes, "Do not ask before the bus is taken");
}

} // namespace

void addCheckCommand(CLI::App& app, Action& action, const std::string& commandLine) {
  auto* command =
      addCommand(app, "check",
                 "Go through what the library promises on the bus that is there, with all outputs "
                 "0, and report what was seen");
  const auto arguments = std::make_shared<CheckArguments>();
  addOptions(*command, *arguments);
  arguments->options.commandLine = commandLine;
  command->callback([arguments, &action] { action = [arguments] { return takeAndCheck(*arguments); }; });
}

} // namespace igh_bus
