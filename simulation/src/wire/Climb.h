// The rounds of the slaves' state machines: one slave after the other in time, or all together in cycles.
#ifndef ETHERCAT_SIMULATION_CLIMB_H
#define ETHERCAT_SIMULATION_CLIMB_H

#include "slave/SlaveUnit.h"

namespace ethercat_simulation {

class Climb {
public:
  using Slaves = std::vector<SlaveUnit*>;

  void setCycles(unsigned int cycles) { m_cycles = cycles; }
  // Something changed that may give the slaves new work.
  void wake() { m_settled = false; }
  bool isSettled() const { return m_settled; }
  // Somebody has the turn to climb.
  bool isUnderWay() const { return m_turn != nullptr; }
  void dropTurn() { m_turn = nullptr; }

  // One round in cycles.
  void count(const Slaves& slaves);
  // One round in time. True when the last one that climbed has arrived.
  bool move(const Slaves& slaves, Moment now);

  // To PREOP, because the master stops: at once, or in time a while later from SAFEOP and OP.
  void settleAtOnce(const Slaves& slaves) const;
  void settleInTime(const Slaves& slaves, Moment now);
  enum class Settling : std::uint8_t { none, pending, done };
  // After a start on slaves that the application has just left, these still are in OP, and exchange.
  Settling settle(const Slaves& slaves, Moment now);

private:
  bool m_settled = false; // nothing to do until something changes
  unsigned int m_cycles = 2;
  SlaveUnit* m_turn = nullptr;
  Moment m_settleAt = 0; // slaves of the last life still are in OP until then; 0: none
};

} // namespace ethercat_simulation

#endif
