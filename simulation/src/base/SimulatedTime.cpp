#include "base/SimulatedTime.h"

#include <ctime>

namespace ethercat_simulation {

Moment SimulatedTime::monotonic() {
  timespec time{};
  clock_gettime(CLOCK_MONOTONIC, &time);
  return Moment{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

void SimulatedTime::setCycle(Moment cycle) {
  m_virtual = now(); // goes on where it was
  m_cycle = cycle;
}

} // namespace ethercat_simulation
