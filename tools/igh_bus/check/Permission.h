// Whether the bus may be taken.
#ifndef IGH_BUS_CHECK_PERMISSION_H
#define IGH_BUS_CHECK_PERMISSION_H

namespace igh_bus::check {

// Says on standard error what will happen. A real bus must be agreed to, at the terminal where `yes` has not
// been given on the command line. Throws Failure(usageError) when it is not.
void askPermission(bool simulated, bool yes);

} // namespace igh_bus::check

#endif
