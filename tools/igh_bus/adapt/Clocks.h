// The operation mode under which the library switches distributed clocks on.
#ifndef IGH_BUS_ADAPT_CLOCKS_H
#define IGH_BUS_ADAPT_CLOCKS_H

#include "adapt/Source.h"
#include "adapt/Wishes.h"

namespace igh_bus::adapt {

struct ClockChoice {
  const SourceMode* mode = nullptr; // to be named "DC"; null for none
  Changes changes;
};

// Whether a mode of this name is the one that means clocks, and not by accident: "DC", "DC Sync", "DCSYNC"...
bool meansClocks(const std::string& name);

// Throws Failure(usageError) for a wished mode that the device has not.
ClockChoice chooseClock(const SourceDevice& device, const Wishes& wishes);

} // namespace igh_bus::adapt

#endif
