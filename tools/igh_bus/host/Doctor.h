// Whether a machine is ready to run a bus.
#ifndef IGH_BUS_DOCTOR_H
#define IGH_BUS_DOCTOR_H

#include "host/Finding.h"
#include "host/Machine.h"

#include <vector>

namespace igh_bus {

// This program and the library that it runs with.
struct Build {
  bool simulated = false;
  std::uint32_t headerVersion = 0; // that this program was built with
  std::uint32_t libraryVersion = 0;
};

Build thisBuild();

struct Patient {
  const Machine& machine;
  Build build;
  unsigned int master = 0;
  std::string card = {}; // network interface; empty: that of the master
};

std::vector<Finding> diagnose(const Patient& patient);

// What is amiss, what matters most first; of what is unknown nothing.
std::vector<Finding> byWeight(std::vector<Finding> findings);

// "Ready", or the three things that matter most.
std::string closingLine(const std::vector<Finding>& findings);

} // namespace igh_bus

#endif
