// How a bus is cycled: what the command lines of run and diag have in common.
#ifndef IGH_BUS_CYCLE_ARGUMENTS_H
#define IGH_BUS_CYCLE_ARGUMENTS_H

#include "arguments/CommandLine.h"

namespace igh_bus {

struct CycleArguments {
  RunOptions options;
  std::string period = "1ms"; // needs a second look after parsing, as does the time
  std::optional<double> seconds;
  std::string maxLatency;
};

// --period, --priority, --cpu and --allow-c-states.
void addPaceOptions(CLI::App& command, RunOptions& options, std::string& period);

// Gives back the option that switches distributed clocks off.
CLI::Option* addCycleOptions(CLI::App& command, CycleArguments& arguments);

// Once the command line is parsed: the period and the number of cycles. Throws Failure(usageError).
void completeCycle(CycleArguments& arguments);

} // namespace igh_bus

#endif
