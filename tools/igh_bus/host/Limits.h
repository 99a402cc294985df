// What this process may ask for, by its limits and capabilities.
#ifndef IGH_BUS_LIMITS_H
#define IGH_BUS_LIMITS_H

#include "host/Machine.h"

namespace igh_bus {

constexpr std::int64_t UNLIMITED = INT64_MAX;

// The soft limit of this name in /proc/self/limits; none with the capability of this number.
std::optional<std::int64_t> inspectLimit(const Machine& machine, const std::string& name,
                                         unsigned int capability);

// Gives it to the group that the udev rules name, too.
std::string limitsCommand(const std::string& limit);

} // namespace igh_bus

#endif
