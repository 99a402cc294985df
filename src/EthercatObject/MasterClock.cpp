// Distributed clocks in the cycle: hand-over of the time with the frame, and the controller behind it.
#include "EthercatObject/CEthercatMaster.h"

#include <ctime>

bool CEthercatMaster::setDcDebugEnable(bool enable) {
  m_bDcDebug = enable;
  return true;
}

unsigned long long CEthercatMaster::readEthercatTimeNs() {
  constexpr unsigned long long NS_FROM_1970_TO_2000 = 946684800000000000ULL;
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return static_cast<unsigned long long>(now.tv_sec) * 1000000000ULL +
         static_cast<unsigned long long>(now.tv_nsec) - NS_FROM_1970_TO_2000;
}

void CEthercatMaster::syncDistributedClocks() {
  if (!m_bEnableDc) {
    return;
  }
  // The reference time that is read now was latched by the frame that carried the previous application time.
  const auto latchedNs = static_cast<uint32_t>(m_ullApplicationTimeNs);
  m_ullApplicationTimeNs = readEthercatTimeNs() - static_cast<unsigned long long>(m_dc.systemBaseOffsetNs());
  static_cast<void>(ecrt_master_application_time(m_reservation.master(), m_ullApplicationTimeNs));
  if (m_bSyncToReferenceClock) {
    uint32_t referenceNs = 0;
    if (ecrt_master_reference_clock_time(m_reservation.master(), &referenceNs) != 0) {
      referenceNs = 0;
    }
    m_dc.measure(static_cast<int>(latchedNs - referenceNs));
  } else {
    static_cast<void>(ecrt_master_sync_reference_clock(m_reservation.master()));
  }
  static_cast<void>(ecrt_master_sync_slave_clocks(m_reservation.master()));
}

void CEthercatMaster::updateMasterClock() {
  if (!m_bEnableDc || !m_bSyncToReferenceClock || !m_watch.isExchanging()) {
    return;
  }
  if (m_uiDcSettleCycles > 0) {
    --m_uiDcSettleCycles;
    return;
  }
  m_dc.update(m_uiExchangePeriod, m_ullApplicationTimeNs, m_watch.alStates(), m_bDcDebug);
}
