#include "check/Permission.h"

#include "text/Failure.h"
#include "text/Question.h"

#include <cstdio>

namespace igh_bus::check {
namespace {

constexpr const char* WARNING =
    "The check activates the bus several times and brings all slaves to OP with every output at 0, and then "
    "lets them fall back: what depends on an output loses it, brakes and valves among them. It clears the "
    "error counters of the slaves. Nothing else is written. No other program may need the bus meanwhile, and "
    "nobody may be at the machine.\n";

} // namespace

void askPermission(bool simulated, bool yes) {
  std::fputs(simulated ? "A simulated bus: nothing is driven.\n" : WARNING, stderr);
  if (!simulated && !yes && !confirm("go on?", Agreement::word))
    throw Failure(usageError, "not agreed to; nothing was done");
}

} // namespace igh_bus::check
