// What the commands' command lines have in common. Each command adds itself to the program, and sets the
// action when it was the one that was given.
#ifndef IGH_BUS_COMMAND_LINE_H
#define IGH_BUS_COMMAND_LINE_H

#include "bus/Options.h"

#include <CLI/CLI.hpp>

#include <functional>

namespace igh_bus {

using Action = std::function<Status()>;

extern const char* const exitStatuses;

// A subcommand with the exit statuses below its help.
CLI::App* addCommand(CLI::App& app, const char* name, const char* description);

// --eni, --bus and --master. Registers can be reached without descriptions.
void addBusOptions(CLI::App& command, ScanOptions& options, bool needsDescriptions = true);

void addDescribeCommand(CLI::App& app, Action& action);
void addScanCommand(CLI::App& app, Action& action);
void addRunCommand(CLI::App& app, Action& action);
void addDiagCommand(CLI::App& app, Action& action);
void addSdoCommand(CLI::App& app, Action& action);
void addRegCommand(CLI::App& app, Action& action);
void addErrorsCommand(CLI::App& app, Action& action);
void addDoctorCommand(CLI::App& app, Action& action);

} // namespace igh_bus

#endif
