// Texts of the command line that are more than a number. Each throws Failure(usageError) with the reason.
#ifndef IGH_BUS_ARGUMENTS_H
#define IGH_BUS_ARGUMENTS_H

#include "Options.h"

namespace igh_bus {

// "250us", "1ms", "2s" or "1000000" (ns), within what the library accepts; in ns.
std::uint32_t parsePeriod(const std::string& text);

// "SLAVE:ENTRY". The entry's name may itself hold colons and equals signs.
EntryAddress parseWatch(const std::string& text);

// "SLAVE:ENTRY=VALUE", split at the last equals sign. VALUE is decimal, hexadecimal (0x...) or a fraction.
Setting parseSetting(const std::string& text);

} // namespace igh_bus

#endif
