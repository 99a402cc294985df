// What adapting would change, in one line.
#ifndef IGH_BUS_ADAPT_HINT_H
#define IGH_BUS_ADAPT_HINT_H

#include "adapt/Adaptation.h"

namespace igh_bus::adapt {

// For the described ones of these slaves, or for every device of the files when none are given; empty when it
// would make no difference, or cannot be said.
std::string adaptHint(const std::vector<std::string>& paths, const std::vector<DeviceKey>& slaves = {});

} // namespace igh_bus::adapt

#endif
