#ifndef ETHERCATOBJECT_CLOCK_MASTERCLOCK_H
#define ETHERCATOBJECT_CLOCK_MASTERCLOCK_H

#include "EthercatObject/Clock/DcController.h"

#include <ecrt.h>

// Distributed clocks as the master sees them: its time, handed over with each frame, and the controller that
// makes it follow the reference clock, or the reference clock that is set to it. Times in ns since
// 2000-01-01.
class CMasterClock {
public:
  CMasterClock(unsigned int periodNs, bool enabled, bool followsReference)
      : m_uiPeriodNs(periodNs), m_bEnabled(enabled), m_bFollowsReference(followsReference) {}

  void setDebug(bool debug) { m_bDebug = debug; }
  bool isEnabled() const { return m_bEnabled; }
  bool followsReference() const { return m_bFollowsReference; }
  long long systemBaseOffsetNs() const { return m_controller.systemBaseOffsetNs(); }

  // Before an activation, when enabled: the time starts at the real time. Without a slave that has a clock,
  // this master's clock is off for good.
  void start(bool anySlaveHasClock);
  // After an activation: the controller waits until the states and the clocks have settled.
  void settle() { m_uiSettleCycles = SETTLE_CYCLES; }
  // In the cycle, before the frame is sent: the time of this cycle, and the difference to the reference that
  // the previous one ended with.
  void handOver(ec_master_t* master);
  // In the cycle, after it.
  void adjust(unsigned int alStates, bool exchanging);
  // The line of a deactivation, where the debug switch asks for it.
  void printEnd(unsigned int alStates) const;
  void reset();

private:
  static constexpr unsigned int SETTLE_CYCLES = 100;

  unsigned int m_uiPeriodNs;
  bool m_bEnabled;
  bool m_bFollowsReference;
  bool m_bDebug = false;
  unsigned int m_uiSettleCycles = SETTLE_CYCLES;
  unsigned long long m_ullApplicationTimeNs = 0;
  CDcController m_controller; // all 0 while inactive
};

#endif
