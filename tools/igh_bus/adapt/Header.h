// The names of an adapted machine for its application, as a C header.
#ifndef IGH_BUS_ADAPT_HEADER_H
#define IGH_BUS_ADAPT_HEADER_H

#include "adapt/Adaptation.h"

namespace igh_bus::adapt {

// For C99 and C++17. `path` gives the name of the include guard.
std::string headerText(const Adaptation& adaptation, const std::string& path);

} // namespace igh_bus::adapt

#endif
