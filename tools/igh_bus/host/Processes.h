// The processes of a machine, as far as this user may look at them.
#ifndef IGH_BUS_PROCESSES_H
#define IGH_BUS_PROCESSES_H

#include "host/Machine.h"

namespace igh_bus {

// "igh_bus (4711)"; empty when no process of this name runs.
std::string runningProcess(const Machine& machine, const std::string& name);

struct Holders {
  std::string text;     // "igh_bus (4711), plc (12)"
  bool complete = true; // false when there are processes that this user may not look into
};

// Who has a file open.
Holders holdersOf(const Machine& machine, const std::string& path);

} // namespace igh_bus

#endif
