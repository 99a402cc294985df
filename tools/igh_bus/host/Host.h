// The machine that the program runs on, as far as it matters for timing.
#ifndef IGH_BUS_HOST_H
#define IGH_BUS_HOST_H

#include "host/Machine.h"

#include <string>

namespace igh_bus {

struct Host {
  std::string kernel;      // release
  std::string preemption;  // "PREEMPT_RT", "full", "voluntary", ...
  std::string governor;    // of processor 0
  std::string isolated;    // list of processors, "none"
  std::string clockSource; // of the kernel
  std::string scheduling;  // of the calling thread: "SCHED_FIFO 80", "SCHED_OTHER"
  std::string name = {};
  std::string processor = {}; // its model
};

// What cannot be read is "unknown".
Host inspectHost(const Machine& machine = Machine());

} // namespace igh_bus

#endif
