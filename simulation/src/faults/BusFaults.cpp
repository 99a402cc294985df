#include "faults/BusFaults.h"

namespace ethercat_simulation {

void BusFaults::setAlError(unsigned int position, std::uint8_t alState, std::uint16_t alStatusCode) {
  if (SlaveUnit* unit = m_topology.onWire(position)) {
    unit->setAlError(alState, alStatusCode);
    if (alStatusCode == 0 && !m_topology.inTime()) {
      unit->forgiveRefusal();
    }
    m_topology.wake();
  }
}

void BusFaults::setErrorFlag(unsigned int position, bool set) {
  if (SlaveUnit* unit = m_topology.onWire(position)) {
    unit->setFaulty(set);
    m_topology.wake();
  }
}

void BusFaults::setResponding(unsigned int position, bool responding) {
  if (SlaveUnit* unit = m_topology.onWire(position)) {
    unit->setResponding(responding);
    m_topology.wake();
  }
}

void BusFaults::setMaximumState(unsigned int position, std::uint8_t alState) {
  if (SlaveUnit* unit = m_topology.onWire(position)) {
    unit->setMaximumState(alState);
    m_topology.wake();
  }
}

bool BusFaults::setSdoFault(unsigned int position, std::uint16_t index, std::uint8_t subindex,
                            SdoFault fault) {
  SlaveUnit* unit = m_topology.onWire(position);
  return unit != nullptr && unit->dictionary().setFault(index, subindex, fault);
}

bool BusFaults::setDriveTrouble(unsigned int position, DriveTrouble trouble, bool on,
                                std::uint16_t errorCode) {
  SlaveUnit* unit = m_topology.onWire(position);
  return unit != nullptr && unit->setDriveTrouble(trouble, on, errorCode);
}

void BusFaults::addErrorCount(unsigned int position, std::uint16_t address, unsigned int count) {
  SlaveUnit* unit = m_topology.onWire(position);
  if (unit != nullptr && EscRegisters::isCounter(address)) {
    unit->registers().count(address, count);
  }
}

bool BusFaults::hasDrive(unsigned int position) const {
  const SlaveUnit* unit = m_topology.onWire(position);
  return unit != nullptr && unit->hasDrive();
}

bool BusFaults::hasObject(unsigned int position, std::uint16_t index, std::uint8_t subindex) const {
  const SlaveUnit* unit = m_topology.onWire(position);
  return unit != nullptr && unit->dictionary().has(index, subindex);
}

} // namespace ethercat_simulation
