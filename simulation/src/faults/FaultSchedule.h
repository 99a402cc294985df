// Faults on a schedule: each begins and ends at the moments that its line gives. Nothing of it allocates in
// the cycle.
#ifndef ETHERCAT_SIMULATION_FAULT_SCHEDULE_H
#define ETHERCAT_SIMULATION_FAULT_SCHEDULE_H

#include "faults/BusFaults.h"

#include <ethercat_simulation/Fault.h>

namespace ethercat_simulation {

// Registers that count errors.
constexpr std::uint16_t FIRST_ERROR_COUNTER = 0x0300;
constexpr std::uint16_t LAST_ERROR_COUNTER = 0x0313;

bool needsSlave(FaultKind kind);
bool needsObject(FaultKind kind);
bool needsDrive(FaultKind kind);

class FaultSchedule {
public:
  explicit FaultSchedule(BusFaults& bus) : m_bus(bus) {}

  // False, and nothing added, for a fault without a beginning, or of a slave or an object that is not there.
  bool add(const Fault& fault);
  void setSeed(std::uint32_t seed) { m_seed = seed; }
  // Ends those that last, and forgets all.
  void clear();

  // Activation and deactivation.
  void start();
  void stop();
  // One cycle, before its frame goes out.
  void step();
  // Sends since activation.
  std::uint64_t cycle() const { return m_cycle; }

private:
  struct Line {
    Fault fault;
    std::uint32_t left; // cycles that it still lasts
  };

  std::uint64_t cycleOf(const Fault& fault) const { return fault.acrossActivations ? m_total : m_cycle; }
  bool begins(const Fault& fault, std::size_t number) const;

  BusFaults& m_bus;
  std::vector<Line> m_lines;
  std::uint32_t m_seed = 1;
  std::uint64_t m_cycle = 0; // since activation
  std::uint64_t m_total = 0; // since the first one
};

} // namespace ethercat_simulation

#endif
