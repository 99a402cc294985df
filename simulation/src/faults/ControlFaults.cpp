// The control side of a master: faults, at once or by schedule.
#include "master/Master.h"

namespace ethercat_simulation {

void Master::dropFrames(unsigned int count) {
  m_framesToDrop = count;
}

void Master::delayFrames(unsigned int count) {
  m_framesToDelay = count;
}

void Master::setLinkUp(bool up) {
  m_topology.setLink(up);
}

void Master::setWireBroken(unsigned int position, bool broken) {
  m_topology.setWireBroken(position, broken);
}

void Master::setPowered(unsigned int position, bool powered) {
  m_topology.setPowered(position, powered);
}

void Master::setAlError(unsigned int position, std::uint8_t alState, std::uint16_t alStatusCode) {
  if (SlaveUnit* unit = m_topology.onWire(position)) {
    unit->setAlError(alState, alStatusCode);
    if (alStatusCode == 0 && !m_topology.inTime()) {
      unit->forgiveRefusal();
    }
    m_topology.wake();
  }
}

void Master::setErrorFlag(unsigned int position, bool set) {
  if (SlaveUnit* unit = m_topology.onWire(position)) {
    unit->setFaulty(set);
    m_topology.wake();
  }
}

void Master::setResponding(unsigned int position, bool responding) {
  if (SlaveUnit* unit = m_topology.onWire(position)) {
    unit->setResponding(responding);
    m_topology.wake();
  }
}

void Master::setMaximumState(unsigned int position, std::uint8_t alState) {
  if (SlaveUnit* unit = m_topology.onWire(position)) {
    unit->setMaximumState(alState);
    m_topology.wake();
  }
}

bool Master::setSdoFault(unsigned int position, std::uint16_t index, std::uint8_t subindex, SdoFault fault) {
  SlaveUnit* unit = m_topology.onWire(position);
  return unit != nullptr && unit->dictionary().setFault(index, subindex, fault);
}

void Master::addErrorCount(unsigned int position, std::uint16_t address, unsigned int count) {
  SlaveUnit* unit = m_topology.onWire(position);
  if (unit != nullptr && EscRegisters::isCounter(address)) {
    unit->registers().count(address, count);
  }
}

void Master::stepReferenceClock(std::int64_t nanoseconds) {
  m_clock.step(nanoseconds);
}

bool Master::addFault(const Fault& fault) {
  const SlaveUnit* unit = m_topology.onWire(fault.slave);
  const bool hasPlace = !needsSlave(fault.kind) || unit != nullptr;
  const bool hasObject =
      !needsObject(fault.kind) || (unit != nullptr && unit->dictionary().has(fault.index, fault.subindex));
  const bool accepted = isSchedulable(fault) && hasPlace && hasObject;
  if (accepted) {
    m_faults.add(fault);
  }
  return accepted;
}

void Master::setFaultSeed(std::uint32_t seed) {
  m_faults.setSeed(seed);
}

void Master::removeSlave(unsigned int position) {
  m_topology.remove(position);
}

void Master::insertSlave(unsigned int position, const Slave& slave) {
  m_topology.insert(position, slave);
}

} // namespace ethercat_simulation
