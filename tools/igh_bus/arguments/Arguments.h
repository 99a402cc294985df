// Texts of the command line that are more than a number. Each throws Failure(usageError) with the reason.
#ifndef IGH_BUS_ARGUMENTS_H
#define IGH_BUS_ARGUMENTS_H

#include "bus/Options.h"

namespace igh_bus {

// "250us", "1ms", "2s" or "1000000" (ns), in ns. `option` names it in the reason.
double parseTime(const std::string& option, const std::string& text);

// The time of --period, within what the library accepts; in ns.
std::uint32_t parsePeriod(const std::string& text);

// "SLAVE:ENTRY". The entry's name may itself hold colons and equals signs.
EntryAddress parseWatch(const std::string& text);

// "SLAVE:ENTRY=VALUE", split at the last equals sign. VALUE is decimal, hexadecimal (0x...) or a fraction.
Setting parseSetting(const std::string& text);

// A whole number from 0 to `highest`, decimal or hexadecimal (0x...). `what` names it in the reason.
std::uint32_t parseNumber(const std::string& text, std::uint32_t highest, const std::string& what);

} // namespace igh_bus

#endif
