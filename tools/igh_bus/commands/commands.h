// Every command adds itself to the program, and sets the action when it was the one that was given.
#ifndef IGH_BUS_COMMANDS_H
#define IGH_BUS_COMMANDS_H

#include "arguments/CommandLine.h"

namespace igh_bus {

void addDescribeCommand(CLI::App& app, Action& action);
void addAdaptCommand(CLI::App& app, Action& action);
void addScanCommand(CLI::App& app, Action& action);
void addRunCommand(CLI::App& app, Action& action, const std::string& commandLine);
void addWatchCommand(CLI::App& app, Action& action);
void addCheckCommand(CLI::App& app, Action& action, const std::string& commandLine);
void addDiagCommand(CLI::App& app, Action& action);
void addSdoCommand(CLI::App& app, Action& action);
void addSdoListCommand(CLI::App& sdo, Action& action);
void addRegCommand(CLI::App& app, Action& action);
void addErrorsCommand(CLI::App& app, Action& action);
void addStatesCommand(CLI::App& app, Action& action);
void addDoctorCommand(CLI::App& app, Action& action);

} // namespace igh_bus

#endif
