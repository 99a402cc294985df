#include "arguments/CommandLine.h"

namespace igh_bus {

const char* const exitStatuses =
    "Exit status:\n"
    "  0  success (also when SIGINT or SIGTERM ended a run in order)\n"
    "  1  describe: a description file could not be loaded\n"
    "  2  wrong command line, description file, bus file, slave or entry\n"
    "  3  bus error: no master or no slaves, activation failed, OP not reached or lost, or the working "
    "counter\n"
    "     was incomplete, the link down or a slave in error when the run ended; a limit of the run was\n"
    "     passed, or --strict refused it; a slave refused a transfer or did not answer\n";

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
  command.add_option("--master", options.master, "Index of the EtherCAT master (0)")->type_name("N");
}

} // namespace igh_bus
