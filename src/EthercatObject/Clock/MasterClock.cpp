#include "EthercatObject/Clock/MasterClock.h"

#include <cstdint>
#include <ctime>

namespace {

unsigned long long readEthercatTimeNs() {
  constexpr unsigned long long NS_FROM_1970_TO_2000 = 946684800000000000ULL;
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return static_cast<unsigned long long>(now.tv_sec) * 1000000000ULL +
         static_cast<unsigned long long>(now.tv_nsec) - NS_FROM_1970_TO_2000;
}

} // namespace

void CMasterClock::start(bool anySlaveHasClock) {
  m_ullApplicationTimeNs = readEthercatTimeNs();
  m_controller.reset(m_ullApplicationTimeNs);
  m_bEnabled = anySlaveHasClock;
}

void CMasterClock::handOver(ec_master_t* master) {
  if (!m_bEnabled) {
    return;
  }
  // The reference time that is read now was latched by the frame that carried the previous application time.
  const auto latchedNs = static_cast<uint32_t>(m_ullApplicationTimeNs);
  m_ullApplicationTimeNs = readEthercatTimeNs() - static_cast<unsigned long long>(systemBaseOffsetNs());
  static_cast<void>(ecrt_master_application_time(master, m_ullApplicationTimeNs));
  if (m_bFollowsReference) {
    uint32_t referenceNs = 0;
    if (ecrt_master_reference_clock_time(master, &referenceNs) != 0) {
      referenceNs = 0;
    }
    m_controller.measure(static_cast<int>(latchedNs - referenceNs));
  } else {
    static_cast<void>(ecrt_master_sync_reference_clock(master));
  }
  static_cast<void>(ecrt_master_sync_slave_clocks(master));
}

void CMasterClock::adjust(unsigned int alStates, bool exchanging) {
  if (!m_bEnabled || !m_bFollowsReference || !exchanging) {
    return;
  }
  if (m_uiSettleCycles > 0) {
    --m_uiSettleCycles;
    return;
  }
  m_controller.update(m_uiPeriodNs, m_ullApplicationTimeNs, alStates, m_bDebug);
}

void CMasterClock::printEnd(unsigned int alStates) const {
  if (m_bDebug && m_bFollowsReference && m_bEnabled) {
    m_controller.print("deactive: ", alStates);
  }
}

void CMasterClock::reset() {
  m_ullApplicationTimeNs = 0;
  m_controller.reset();
}
