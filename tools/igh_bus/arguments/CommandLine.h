// What the commands' command lines have in common.
#ifndef IGH_BUS_COMMAND_LINE_H
#define IGH_BUS_COMMAND_LINE_H

#include "bus/Options.h"
#include "text/Failure.h"

#include <CLI/CLI.hpp>

#include <functional>

namespace igh_bus {

// What the command line asks for; empty until a command was given.
using Action = std::function<Status()>;

extern const char* const exitStatuses;

constexpr std::uint64_t MOST = 1000000000000000000; // of whatever is counted

// A subcommand with the exit statuses below its help.
CLI::App* addCommand(CLI::App& app, const char* name, const char* description);

// A whole number within these bounds, decimal or hexadecimal (0x...).
CLI::Validator wholeNumber(std::uint64_t lowest, std::uint64_t highest = MOST);

// A number above 0, such as 1.5.
CLI::Validator positiveNumber();

// --eni, --bus and --master. Registers can be reached without descriptions.
void addBusOptions(CLI::App& command, ScanOptions& options, bool needsDescriptions = true);

} // namespace igh_bus

#endif
