// The times of a simulated bus.
#ifndef ETHERCAT_SIMULATION_TIMING_H
#define ETHERCAT_SIMULATION_TIMING_H

#include <cstdint>

namespace ethercat_simulation {

// The clock of the reference slave, free-running on CLOCK_REALTIME: at activation it is offsetNs ahead of the
// real time (ns since 2000) and gains driftPpm from then on; each reading scatters by up to jitterNs to both
// sides. ecrt_master_sync_reference_clock sets it to the application time with the next frame.
struct ReferenceClock {
  std::int64_t offsetNs = 0;
  double driftPpm = 0;
  std::uint32_t jitterNs = 0;
  std::uint32_t seed = 1;
};

// What states, SDO transfers, scans and register accesses take.
enum class Timing {
  real, // the times of a real master
  fast, // a few cycles, counted in sends and receives; for tests that look at something else
};

} // namespace ethercat_simulation

#endif
