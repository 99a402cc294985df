// What can go wrong on a bus, each fault at once; the control side and the schedule both call here.
#ifndef ETHERCAT_SIMULATION_BUS_FAULTS_H
#define ETHERCAT_SIMULATION_BUS_FAULTS_H

#include "wire/Topology.h"
#include "wire/Traffic.h"

namespace ethercat_simulation {

class BusFaults {
public:
  BusFaults(Topology& topology, Traffic& traffic, Clock& clock)
      : m_topology(topology), m_traffic(traffic), m_clock(clock) {}

  void dropFrames(unsigned int count) { m_traffic.drop(count); }
  void delayFrames(unsigned int count) { m_traffic.delay(count); }
  void setLinkUp(bool up) { m_topology.setLink(up); }
  void setWireBroken(unsigned int position, bool broken) { m_topology.setWireBroken(position, broken); }
  void setPowered(unsigned int position, bool powered) { m_topology.setPowered(position, powered); }
  void setAlError(unsigned int position, std::uint8_t alState, std::uint16_t alStatusCode);
  void setErrorFlag(unsigned int position, bool set);
  void setResponding(unsigned int position, bool responding);
  void setMaximumState(unsigned int position, std::uint8_t alState);
  // False when the slave has no such object.
  bool setSdoFault(unsigned int position, std::uint16_t index, std::uint8_t subindex, SdoFault fault);
  // False when there is no drive at this position. The error code belongs to the trouble `fault`.
  bool setDriveTrouble(unsigned int position, DriveTrouble trouble, bool on, std::uint16_t errorCode);
  void addErrorCount(unsigned int position, std::uint16_t address, unsigned int count);
  void stepReferenceClock(std::int64_t nanoseconds) { m_clock.step(nanoseconds); }

  bool hasSlave(unsigned int position) const { return m_topology.onWire(position) != nullptr; }
  bool hasDrive(unsigned int position) const;
  bool hasObject(unsigned int position, std::uint16_t index, std::uint8_t subindex) const;

private:
  Topology& m_topology;
  Traffic& m_traffic;
  Clock& m_clock;
};

} // namespace ethercat_simulation

#endif
