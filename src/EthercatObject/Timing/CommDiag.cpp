#include "EthercatObject/Timing/CommDiag.h"

#include <cstdio>

namespace {

// Whole microseconds modulo 2^32, as the record's fields hold them.
int32_t costUs(const _CYCLE_PHASE& phase) {
  timespec span{};
  getClockSpan(&phase.start, &phase.end, &span);
  const auto seconds = static_cast<uint32_t>(span.tv_sec);
  const auto rest = static_cast<uint32_t>(span.tv_nsec / 1000);
  return static_cast<int32_t>(seconds * 1000000U + rest);
}

uint32_t total(const _ETHERCAT_COMM_DIAG_INFO& record) {
  return static_cast<uint32_t>(record.totalExchangeCostUs);
}

} // namespace

void getClockSpan(const timespec* start, const timespec* end, timespec* span) {
  span->tv_sec = end->tv_sec - start->tv_sec;
  span->tv_nsec = end->tv_nsec - start->tv_nsec;
}

void CCommDiag::record(unsigned long long cycle, const _CYCLE_STAMPS& stamps) {
  _ETHERCAT_COMM_DIAG_INFO& last = m_records[COMM_DIAG_LAST];
  last.time = cycle;
  last.txPdoReceivedCostUs = costUs(stamps.receive);
  last.sdoCostUs = costUs(stamps.sdo);
  last.rxPdoSentCostUs = costUs(stamps.send);
  last.userCallbackCostUs = costUs(stamps.callback);
  last.totalExchangeCostUs = costUs(stamps.total);

  _ETHERCAT_COMM_DIAG_INFO& fastest = m_records[COMM_DIAG_MIN];
  _ETHERCAT_COMM_DIAG_INFO& slowest = m_records[COMM_DIAG_MAX];
  if (cycle == 0) {
    fastest = last;
    slowest = last;
  } else if (total(last) < total(fastest)) {
    fastest = last;
  } else if (total(last) > total(slowest)) {
    slowest = last;
  }
}

bool CCommDiag::get(unsigned int index, _ETHERCAT_COMM_DIAG_INFO* out) const {
  if (index > COMM_DIAG_MAX || out == nullptr) {
    return false;
  }
  *out = m_records[index];
  return true;
}

void CCommDiag::print(const char* title, const _ETHERCAT_COMM_DIAG_INFO* info) {
  if (info == nullptr) {
    return;
  }
  std::printf("\n%s:\n", title == nullptr ? "Communication detail" : title);
  std::printf("    Time = %llu\n", static_cast<unsigned long long>(info->time));
  std::printf("    TxPDO received cost(us) = %d\n", info->txPdoReceivedCostUs);
  std::printf("    SDO cost(us) = %d\n", info->sdoCostUs);
  std::printf("    RxPDO sent cost(us) = %d\n", info->rxPdoSentCostUs);
  std::printf("    User callback cost(us) = %d\n", info->userCallbackCostUs);
  std::printf("    Total exchange cost(us) = %d\n", info->totalExchangeCostUs);
}
