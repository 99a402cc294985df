// The cycle. Nothing here allocates, locks, throws or, in the normal case, prints.
#include "EthercatObject/CEthercatMaster.h"
#include "EthercatObject/SleepUntil.h"

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

void CEthercatMaster::exchange(EXCHANGE_CALLBACK callback, void* userData) {
  if (isRequestTerminate()) {
    std::fputs("you can't call exchange function because the driver is request terminate.\n", stdout);
    return;
  }
  _CYCLE_STAMPS stamps;
  stamp(stamps.total.start);
  if (!isScanned()) {
    return;
  }
  // Where one phase follows another without work between them, one reading of the clock serves both.
  if (!m_bExchangeMode) {
    stamps.receive.start = stamps.total.start;
    receiveFrame();
    stamp(stamps.receive.end);
    checkWorkingCounter();
  }
  checkSlaves();
  m_watch.checkLink(m_reservation.master());
  m_watch.checkMaster(m_reservation.master(), m_vecSlaves.size());

  if (!m_sdoHandles.objects().empty()) {
    stamp(stamps.sdo.start);
    serviceSdoRequests();
    stamp(stamps.sdo.end);
  }

  if (m_watch.isExchanging()) {
    if (!m_bExchangeMode) {
      m_pdoHandles.copyInputs(m_domain.image());
      runCallback(callback, userData, stamps);
    }
    m_pdoHandles.copyOutputs(m_domain.image());
  }

  stamp(stamps.send.start);
  sendFrame();
  stamp(stamps.send.end);
  stamps.total.end = stamps.send.end;

  if (m_bExchangeMode) {
    awaitFrame(callback, userData, stamps);
    stamp(stamps.total.end);
  }
  m_commDiag.record(m_ullCycleCounter, stamps);
  ++m_ullCycleCounter;
}

void CEthercatMaster::receiveFrame() {
  static_cast<void>(ecrt_master_receive(m_reservation.master()));
  m_domain.process();
}

void CEthercatMaster::checkWorkingCounter() {
  bool complete = false;
  if (m_watch.isExchanging() && m_domain.readWorkingCounter(complete)) {
    m_watch.checkWorkingCounter(complete);
  }
}

void CEthercatMaster::checkSlaves() {
  unsigned int index = 0;
  for (const auto& slave : m_vecSlaves) {
    if (slave->getSlaveCore() != nullptr) {
      m_watch.checkSlave(m_reservation.master(), slave->getSlaveCore(), index);
    }
    ++index;
  }
}

void CEthercatMaster::runCallback(EXCHANGE_CALLBACK callback, void* userData, _CYCLE_STAMPS& stamps) {
  if (callback != nullptr) {
    stamp(stamps.callback.start);
    callback(userData);
    stamp(stamps.callback.end);
  }
}

void CEthercatMaster::sendFrame() {
  m_domain.queue();
  syncDistributedClocks();
  static_cast<void>(ecrt_master_send(m_reservation.master()));
  updateMasterClock();
}

// Exchange mode: polls for the frame just sent until it is complete or the budget of the period is used up.
void CEthercatMaster::awaitFrame(EXCHANGE_CALLBACK callback, void* userData, _CYCLE_STAMPS& stamps) {
  const _FRAME_WAIT wait = frameWait(m_uiExchangePeriod);
  timespec wakeUp = stamps.send.end;
  advance(wakeUp, wait.firstNs);
  stamps.receive.start = stamps.send.end;
  for (unsigned int waited = wait.firstNs;;) {
    sleepUntil(wakeUp);
    advance(wakeUp, POLL_INTERVAL_NS);
    receiveFrame();
    if (!m_watch.isExchanging()) {
      stamp(stamps.receive.end);
      return;
    }
    bool complete = false;
    const bool read = m_domain.readWorkingCounter(complete);
    if (complete) {
      m_pdoHandles.copyInputs(m_domain.image());
      stamp(stamps.receive.end);
      runCallback(callback, userData, stamps);
      return;
    }
    waited += POLL_INTERVAL_NS;
    if (waited > wait.budgetNs) {
      stamp(stamps.receive.end);
      if (read) {
        m_watch.checkWorkingCounter(complete);
      }
      return;
    }
  }
}
