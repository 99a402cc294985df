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

// One master of a bus file, before anything is built. What is not there stays as the master has it.
struct BusPlan {
  std::string place; // in the file, for messages
  unsigned int index = 0;
  std::optional<Timing> timing;
  std::optional<std::chrono::microseconds> cycleTime;
  unsigned int climbCycles = 0; // 0: as the timing has it
  unsigned int scanCycles = 0;
  unsigned int sdoCycles = 0;
  std::optional<std::chrono::microseconds> frameLatency;
  std::optional<bool> reactivationUnmapped;
  std::optional<ReferenceClock> referenceClock;
  std::vector<Slave> slaves;
  std::optional<std::uint32_t> seed;
  std::vector<Fault> faults;
  std::optional<std::string> record; // path

  void build(Master& master) const;
};

// Empty on success, else "<file>: <place>: <reason>" and no plan at all.
std::string readBusFile(const std::string& path, std::vector<BusPlan>& plans);
// The same of a text: "<place>: <reason>".
std::string readBusText(const std::string& text, std::vector<BusPlan>& plans);

// The content of one master, or a part of it, to be built beside these slaves.
std::string readBusPart(const std::string& text, const std::vector<Slave>& slaves, BusPlan& plan);
// One slave, as in "slaves".
std::string readSlaveText(const std::string& text, Slave& slave);

} // namespace ethercat_simulation

#endif
