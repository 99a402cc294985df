// Bus files: a bus described in JSON.
#ifndef ETHERCAT_SIMULATION_BUS_FILE_H
#define ETHERCAT_SIMULATION_BUS_FILE_H

#include <ethercat_simulation/Fault.h>
#include <ethercat_simulation/Slave.h>
#include <ethercat_simulation/Timing.h>

#include <chrono>
#include <optional>

namespace ethercat_simulation {

class Master;

// One master of a bus file, before anything is built.
struct BusPlan {
  std::string place; // in the file, for messages
  unsigned int index = 0;
  std::optional<Timing> timing;
  std::chrono::microseconds cycleTime{0};
  unsigned int climbCycles = 0; // 0: as the timing has it
  unsigned int scanCycles = 0;
  unsigned int sdoCycles = 0;
  std::chrono::microseconds frameLatency{0};
  bool reactivationUnmapped = true;
  std::optional<ReferenceClock> referenceClock;
  std::vector<Slave> slaves;
  std::uint32_t seed = 1;
  std::vector<Fault> faults;

  void build(Master& master) const;
};

// Empty on success, else "<file>: <place>: <reason>" and no plan at all.
std::string readBusFile(const std::string& path, std::vector<BusPlan>& plans);

} // namespace ethercat_simulation

#endif
