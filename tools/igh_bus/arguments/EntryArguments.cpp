#include "arguments/EntryArguments.h"

#include "arguments/Arguments.h"

namespace igh_bus {

EntryOptions addEntryOptions(CLI::App& command, EntryArguments& arguments, const char* watch) {
  auto& options = arguments.options;
  auto* noClocks = addCycleOptions(command, arguments);
  command
      .add_option("--set", arguments.settings,
                  "Write VALUE to an output entry; SLAVE counts from 0 in scan order")
      ->allow_extra_args(false)
      ->type_name("SLAVE:ENTRY=VALUE");
  auto* watched = command.add_option("--watch", arguments.watches, watch)
                      ->allow_extra_args(false)
                      ->type_name("SLAVE:ENTRY");
  auto* record =
      command
          .add_option("--record", options.recordFile, "Write the watched entries of each cycle to this file")
          ->type_name("FILE.csv");
  command.add_option("--every", options.recordEvery, "Record one cycle in N (1)")
      ->check(wholeNumber(1))
      ->type_name("N")
      ->needs(record);
  return {noClocks, watched};
}

void completeEntries(EntryArguments& arguments) {
  completeCycle(arguments);
  for (const auto& text : arguments.settings)
    arguments.options.settings.push_back(parseSetting(text));
  for (const auto& text : arguments.watches)
    arguments.options.watches.push_back(parseWatch(text));
}

} // namespace igh_bus
