// Bits behind an entry that must stay as it is, looked at through it.
#ifndef IGH_BUS_ADAPT_WINDOWS_H
#define IGH_BUS_ADAPT_WINDOWS_H

#include "adapt/Target.h"

namespace igh_bus::adapt {

// Entries that must stay: the first in a byte is given a type that takes the rest of its bytes along, as long
// as nothing there has a value of its own.
void openWindows(const SmLayout& layout, TargetSm& target);

} // namespace igh_bus::adapt

#endif
