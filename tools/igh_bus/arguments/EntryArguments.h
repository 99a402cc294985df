// What run and watch have in common: a bus that is cycled, and entries of it.
#ifndef IGH_BUS_ENTRY_ARGUMENTS_H
#define IGH_BUS_ENTRY_ARGUMENTS_H

#include "arguments/CycleArguments.h"

namespace igh_bus {

struct EntryArguments : CycleArguments {
  std::vector<std::string> settings;
  std::vector<std::string> watches;
};

// With the cycle options. `watch` is the help of --watch.
struct EntryOptions {
  CLI::Option* noClocks;
  CLI::Option* watch;
};
EntryOptions addEntryOptions(CLI::App& command, EntryArguments& arguments, const char* watch);

// Once the command line is parsed. Throws Failure(usageError).
void completeEntries(EntryArguments& arguments);

} // namespace igh_bus

#endif
