// The process data that the modules in a device's slots bring along.
#ifndef IGH_BUS_ADAPT_MODULES_H
#define IGH_BUS_ADAPT_MODULES_H

#include "adapt/Source.h"
#include "adapt/Types.h"
#include "adapt/Wishes.h"

namespace igh_bus::adapt {

struct PlacedModules {
  std::vector<SourcePdo> pdos;    // with the indices and names of their slots
  std::vector<std::string> names; // of every slot's module, "" for an empty one
  Changes changes;
  std::vector<std::string> open; // what is not settled, and how to settle it
};

// Adds what the modules define to `types`. Throws Failure(usageError) for a wished slot or module that does
// not exist.
PlacedModules placeModules(const Sources& sources, const SourceDevice& device, const Wishes& wishes,
                           TypeTable& types);

} // namespace igh_bus::adapt

#endif
