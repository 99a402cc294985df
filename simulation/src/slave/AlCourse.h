// How a slave's AL state moves: in rounds of cycles, or in time as on the real master.
#ifndef ETHERCAT_SIMULATION_AL_COURSE_H
#define ETHERCAT_SIMULATION_AL_COURSE_H

#include "base/SimulatedTime.h"
#include "slave/AlState.h"

namespace ethercat_simulation {

class AlCourse {
public:
  // In PREOP it stays for `configuration`, while the master configures it.
  AlCourse(AlState& state, ProcessLink& link, Moment configuration)
      : m_state(state), m_link(link), m_configuration(configuration) {}

  bool isBusy() const { return m_busy; }
  // One round in cycles. False when it has nothing left to do.
  bool step(unsigned int climbCycles, unsigned int stagger);

  // In time: what there is to do is begun and advanced, one round after the other.
  bool isNeeded() const { return next() != Kind::none; }
  bool isUnderWay() const { return m_kind != Kind::none; }
  void begin(Moment now);
  bool advance(Moment now); // false: it is done

  void halt();
  // A state change in progress begins anew.
  void stopWaiting() { m_wait = 0; }

private:
  enum class Kind : std::uint8_t { none, climb, change, recover };

  Kind next() const;
  void takeStage();
  void takeClimbStage();
  bool acknowledge(unsigned int climbCycles);

  AlState& m_state;
  ProcessLink& m_link;
  Moment m_configuration;
  bool m_busy = false;
  unsigned int m_wait = 0; // cycles until the state change in progress is done
  Kind m_kind = Kind::none;
  unsigned int m_stage = 0; // of a climb
  Moment m_due = 0;         // of the next stage
};

} // namespace ethercat_simulation

#endif
