#include "arguments/CommandLine.h"

#include "text/Text.h"

#include <charconv>
#include <cinttypes>
#include <cmath>
#include <cstdlib>

namespace igh_bus {

const char* const exitStatuses =
    "Exit status:\n"
    "  0  success (also when SIGINT, SIGTERM or SIGHUP ended a run in order)\n"
    "  1  describe: a description file could not be loaded\n"
    "  2  wrong command line, description file, bus file, slave, entry or value; output that cannot be\n"
    "     written\n"
    "  3  bus error: no master or no slaves, activation failed, OP not reached or lost, or the working "
    "counter\n"
    "     was incomplete, the link down or a slave in error when the run ended; a limit of the run was\n"
    "     passed, or --strict refused it; check found a fault, or was ended by a\n"
    "     signal; a slave refused a transfer or a state, or did not answer\n";

CLI::Validator wholeNumber(std::uint64_t lowest, std::uint64_t highest) {
  const auto bounds = highest == MOST ? format("from %" PRIu64 " on", lowest)
                                      : format("from %" PRIu64 " to %" PRIu64, lowest, highest);
  return {[=](const std::string& text) {
            const bool hexadecimal = text.rfind("0x", 0) == 0;
            const char* const last = text.data() + text.size();
            std::uint64_t number = 0;
            const auto [end, error] =
                std::from_chars(text.data() + (hexadecimal ? 2 : 0), last, number, hexadecimal ? 16 : 10);
            const bool good = error == std::errc() && end == last && number >= lowest && number <= highest;
            return good ? std::string() : "'" + text + "': use a whole number " + bounds;
          },
          ""};
}

CLI::Validator positiveNumber() {
  return {[](const std::string& text) {
            char* end = nullptr;
            const double number = std::strtod(text.c_str(), &end);
            const bool good = end != text.c_str() && *end == '\0' && std::isfinite(number) && number > 0;
            return good ? std::string() : "'" + text + "': use a number above 0, such as 1.5";
          },
          ""};
}

CLI::App* addCommand(CLI::App& app, const char* name, const char* description) {
  auto* command = app.add_subcommand(name, description);
  command->footer(exitStatuses);
  return command;
}

void addBusOptions(CLI::App& command, ScanOptions& options, bool needsDescriptions) {
  command
      .add_option("--eni", options.descriptions,
                  "Description files (XML) of the slaves; takes all words up to the next option")
      ->required(needsDescriptions)
      ->type_name("FILE");
  command
      .add_option(
          "--bus", options.busFile,
          "Bus file (JSON) for the simulated master; without it, and without ETHERCAT_SIMULATION_BUS in "
          "the environment, every described device is simulated once")
      ->type_name("BUS.json");
  command.add_option("--master", options.master, "Index of the EtherCAT master (0)")
      ->check(wholeNumber(0, UINT16_MAX))
      ->type_name("N");
}

} // namespace igh_bus
