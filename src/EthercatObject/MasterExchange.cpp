// The cycle. Nothing here allocates, locks, throws or, in the normal case, prints.
#include "EthercatObject/Base/SleepUntil.h"
#include "EthercatObject/CEthercatMaster.h"

#include <cstdio>
#include <ctime>

namespace {

constexpr unsigned int POLL_INTERVAL_NS = 50000;

void stamp(timespec& time) {
  clock_gettime(CLOCK_MONOTONIC, &time);
}

// How long after the send the exchange mode looks for the frame, and when it looks first.
struct _FRAME_WAIT {
  unsigned int budgetNs;
  unsigned int firstNs;
};

_FRAME_WAIT frameWait(unsigned int periodNs) {
  if (periodNs >= 1000000) {
    return {periodNs - 50000, 120000};
  }
  return {periodNs / 2, periodNs >= 240000 ? 120000 : periodNs / 2};
}

} // namespace

// One call: whose callback it runs, and when its phases were. Where one phase follows another without work
// between them, one reading of the clock serves both.
struct CEthercatMaster::_CYCLE {
  EXCHANGE_CALLBACK callback;
  void* userData;
  _CYCLE_STAMPS stamps;

  void runCallback() {
    if (callback != nullptr) {
      stamp(stamps.callback.start);
      callback(userData);
      stamp(stamps.callback.end);
    }
  }
};

void CEthercatMaster::exchange(EXCHANGE_CALLBACK callback, void* userData) {
  if (isRequestTerminate()) {
    std::fputs("you can't call exchange function because the driver is request terminate.\n", stdout);
    return;
  }
  _CYCLE cycle{callback, userData, {}};
  stamp(cycle.stamps.total.start);
  if (!isScanned()) {
    return;
  }
  if (!m_bExchangeMode) {
    receiveLastFrame(cycle);
  }
  checkBus();
  serviceSdo(cycle);
  moveProcessData(cycle);
  sendFrame(cycle);
  if (m_bExchangeMode) {
    awaitFrame(cycle);
  }
  m_commDiag.record(m_ullCycleCounter++, cycle.stamps);
}

void CEthercatMaster::receiveFrame() {
  static_cast<void>(ecrt_master_receive(m_reservation.master()));
  m_domain.process();
}

void CEthercatMaster::receiveLastFrame(_CYCLE& cycle) {
  cycle.stamps.receive.start = cycle.stamps.total.start;
  receiveFrame();
  stamp(cycle.stamps.receive.end);
  bool complete = false;
  if (m_watch.isExchanging() && m_domain.readWorkingCounter(complete)) {
    m_watch.checkWorkingCounter(complete);
  }
}

void CEthercatMaster::checkBus() {
  ec_master_t* const master = m_reservation.master();
  unsigned int index = 0;
  for (const auto& slave : m_vecSlaves) {
    if (slave->getSlaveCore() != nullptr) {
      m_watch.checkSlave(master, slave->getSlaveCore(), index);
    }
    ++index;
  }
  m_watch.checkLink(master);
  m_watch.checkMaster(master, m_vecSlaves.size());
}

void CEthercatMaster::serviceSdo(_CYCLE& cycle) {
  if (m_sdoRequests.objects().empty()) {
    return;
  }
  stamp(cycle.stamps.sdo.start);
  m_sdoService.step(m_watch.alStates(), m_sdoRequests.objects(), m_sdoRequests.issued());
  stamp(cycle.stamps.sdo.end);
}

void CEthercatMaster::moveProcessData(_CYCLE& cycle) {
  if (!m_watch.isExchanging()) {
    return;
  }
  if (!m_bExchangeMode) {
    m_pdoHandles.copyInputs(m_domain.image());
    cycle.runCallback();
  }
  m_pdoHandles.copyOutputs(m_domain.image());
}

void CEthercatMaster::sendFrame(_CYCLE& cycle) {
  stamp(cycle.stamps.send.start);
  m_domain.queue();
  syncDistributedClocks();
  static_cast<void>(ecrt_master_send(m_reservation.master()));
  updateMasterClock();
  stamp(cycle.stamps.send.end);
  cycle.stamps.total.end = cycle.stamps.send.end;
}

// Exchange mode: polls for the frame just sent until it is complete or the budget of the period is used up.
void CEthercatMaster::awaitFrame(_CYCLE& cycle) {
  const _FRAME_WAIT wait = frameWait(m_uiExchangePeriod);
  timespec wakeUp = cycle.stamps.send.end;
  advance(wakeUp, wait.firstNs);
  cycle.stamps.receive.start = cycle.stamps.send.end;
  bool complete = false;
  bool read = false;
  unsigned int waited = wait.firstNs;
  do {
    sleepUntil(wakeUp);
    advance(wakeUp, POLL_INTERVAL_NS);
    waited += POLL_INTERVAL_NS;
    receiveFrame();
    read = m_watch.isExchanging() && m_domain.readWorkingCounter(complete);
  } while (m_watch.isExchanging() && !complete && waited <= wait.budgetNs);
  if (complete) {
    m_pdoHandles.copyInputs(m_domain.image());
  }
  stamp(cycle.stamps.receive.end);
  if (complete) {
    cycle.runCallback();
  } else if (read) {
    m_watch.checkWorkingCounter(complete);
  }
  stamp(cycle.stamps.total.end);
}

bool CEthercatMaster::getCommDiagInfo(unsigned int index, _ETHERCAT_COMM_DIAG_INFO* out) const {
  return m_commDiag.get(index, out);
}

void CEthercatMaster::outputCommDiagInfo(const char* title, const _ETHERCAT_COMM_DIAG_INFO* info) const {
  CCommDiag::print(title, info);
}
