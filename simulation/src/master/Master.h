// One simulated master: its parts, and what concerns them all. The C interface brings the application's calls
// here, the control side (Simulation.h) the tests'.
#ifndef ETHERCAT_SIMULATION_MASTER_H
#define ETHERCAT_SIMULATION_MASTER_H

#include "faults/BusFaults.h"
#include "faults/FaultSchedule.h"
#include "master/CycleRecord.h"
#include "master/Observers.h"
#include "master/Recorder.h"
#include "master/Reservation.h"
#include "master/Setup.h"
#include "master/SlaveAccess.h"

namespace ethercat_simulation {

class Master {
public:
  explicit Master(unsigned int index);

  unsigned int index() const { return m_index; }
  Recorder& recorder() { return m_recorder; }
  Reservation& reservation() { return m_reservation; }
  const Reservation& reservation() const { return m_reservation; }
  SimulatedTime& time() { return m_time; }
  Topology& topology() { return m_topology; }
  const Topology& topology() const { return m_topology; }
  Setup& setup() { return m_setup; }
  Clock& clock() { return m_clock; }
  Traffic& traffic() { return m_traffic; }
  SlaveAccess& slaves() { return m_slaves; }
  BusFaults& faults() { return m_faults; }
  FaultSchedule& schedule() { return m_schedule; }
  Observers& observers() { return m_observers; }
  CycleRecord& record() { return m_record; }

  // Life. False while somebody else holds it.
  bool reserve();
  void release();
  int activate();
  void deactivate();
  // For good: nothing is held, and there is no slave any more.
  void end();

  // Cycle.
  void receive();
  void send();
  // What the idle master has done meanwhile by itself.
  void catchUp();

  // Control side.
  void setTiming(Timing timing);
  void setSdoCycles(unsigned int exchanges);

private:
  void stepSdoRequests() { m_setup.stepSdoRequests(m_sdoPace, m_time); }

  unsigned int m_index;
  Recorder m_recorder;
  Reservation m_reservation;
  SimulatedTime m_time;
  Topology m_topology{m_time};
  Setup m_setup{m_index, m_topology};
  Clock m_clock;
  Traffic m_traffic{m_time, m_clock};
  SlaveAccess m_slaves{m_topology, m_clock, m_time};
  BusFaults m_faults{m_topology, m_traffic, m_clock};
  FaultSchedule m_schedule{m_faults};
  SdoPace m_sdoPace{};
  Observers m_observers;
  CycleRecord m_record{m_topology, m_time};
};

} // namespace ethercat_simulation

#endif
