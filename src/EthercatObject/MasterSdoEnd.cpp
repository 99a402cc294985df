// SDO transfers that are under way when the master is deactivated.
#include "EthercatObject/Base/SleepUntil.h"
#include "EthercatObject/CEthercatMaster.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr long long NS_PER_SECOND = 1000000000;
// A mailbox answer is given up by the platform itself after 4.9 s.
constexpr long long PATIENCE_NS = 6 * NS_PER_SECOND;
constexpr unsigned int SHORTEST_PERIOD_NS = 100000; // should a master have been made without a period

} // namespace

// Deactivation frees the memory of every request, also while the platform still works on it, and that brings
// the kernel down. A transfer comes to rest by cycling only. The process image stays as it is: outputs keep
// their last value. The clocks get no time meanwhile: they run on by themselves, nothing is controlled or
// shown any more, and the deactivation ends their synchronisation anyway.
void CEthercatMaster::awaitSdoTransfers() {
  if (!m_sdoRequests.issued().isAnyBusy()) {
    return;
  }
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  const timespec start = now;
  for (;;) {
    const long long spentNs = (now.tv_sec - start.tv_sec) * NS_PER_SECOND + (now.tv_nsec - start.tv_nsec);
    if (spentNs >= PATIENCE_NS) {
      std::fputs("An SDO transfer does not end, the master is deactivated in the middle of it.\n", stderr);
      return;
    }
    advance(now, static_cast<unsigned int>(std::min<long long>(
                     std::max(m_uiExchangePeriod, SHORTEST_PERIOD_NS), PATIENCE_NS - spentNs)));
    sleepUntil(now);
    receiveFrame();
    m_domain.queue();
    static_cast<void>(ecrt_master_send(m_reservation.master()));
    if (!m_sdoRequests.issued().isAnyBusy()) {
      return;
    }
    clock_gettime(CLOCK_MONOTONIC, &now);
  }
}
