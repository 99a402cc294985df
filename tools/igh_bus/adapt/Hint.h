// What adapting would change, in one line.
#ifndef IGH_BUS_ADAPT_HINT_H
#define IGH_BUS_ADAPT_HINT_H

#include "adapt/Adaptation.h"

namespace igh_bus::adapt {

// For every device of the files; empty when it would make no difference, or cannot be said.
std::string adaptHint(const std::vector<std::string>& paths);

} // namespace igh_bus::adapt

#endif
