// Faults on a schedule. It says to the control side of the bus what a test could say there as well, at the
// moments that its lines give; nothing of it allocates in the cycle.
#ifndef ETHERCAT_SIMULATION_FAULT_SCHEDULE_H
#define ETHERCAT_SIMULATION_FAULT_SCHEDULE_H

#include <ethercat_simulation/Simulation.h>

namespace ethercat_simulation {

// Registers that count errors.
constexpr std::uint16_t FIRST_ERROR_COUNTER = 0x0300;
constexpr std::uint16_t LAST_ERROR_COUNTER = 0x0313;

// Whether such a fault begins at all and lasts.
bool isSchedulable(const Fault& fault);
bool needsSlave(FaultKind kind);
bool needsObject(FaultKind kind);

class FaultSchedule {
public:
  void add(const Fault& fault) { m_lines.push_back({fault, 0}); }
  void setSeed(std::uint32_t seed) { m_seed = seed; }

  // Activation and deactivation.
  void start();
  void stop(Bus& bus);
  // One cycle, before its frame goes out.
  void step(Bus& bus);

private:
  struct Line {
    Fault fault;
    std::uint32_t left; // cycles that it still lasts
  };

  std::uint64_t cycleOf(const Fault& fault) const { return fault.acrossActivations ? m_total : m_cycle; }
  bool begins(const Fault& fault, std::size_t number) const;

  std::vector<Line> m_lines;
  std::uint32_t m_seed = 1;
  std::uint64_t m_cycle = 0; // since activation
  std::uint64_t m_total = 0; // since the first one
};

} // namespace ethercat_simulation

#endif
