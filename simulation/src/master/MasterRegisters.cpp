// Registers and state requests of a master's slaves, for the device file and the control side.
#include "master/Master.h"

#include <cerrno>

namespace ethercat_simulation {

namespace {

// Station addresses as the real master gives them out: from 0x03E9 on in the order of the ring.
constexpr std::size_t FIRST_STATION = 0x03E9;

// Beside a cycle of 1 ms it takes 6 to 16 ms.
constexpr Moment REGISTER_ACCESS = 11 * MILLISECOND;

} // namespace

EscRegisters::Live Master::liveRegisters(const SlaveUnit& unit, std::size_t position) const {
  return {static_cast<std::uint16_t>(FIRST_STATION + position),
          unit.state(),
          unit.alError(),
          unit.alCode(),
          unit.identity().distributedClocks,
          m_clock.referenceTime(),
          position + 1 < m_topology.reachedSize()};
}

int Master::readRegisters(std::size_t position, std::uint16_t address, std::uint8_t* data,
                          std::size_t size) const {
  m_topology.catchUp();
  const SlaveUnit* unit = m_topology.listed(position);
  if (unit == nullptr) {
    return EINVAL;
  }
  if (!unit->responding() || !m_topology.link() || !EscRegisters::holds(address, size)) {
    return EIO;
  }
  waitForBus(REGISTER_ACCESS);
  unit->registers().read(address, data, size, liveRegisters(*unit, position));
  return 0;
}

int Master::writeRegisters(std::size_t position, std::uint16_t address, const std::uint8_t* data,
                           std::size_t size) {
  SlaveUnit* unit = m_topology.listed(position);
  if (unit == nullptr) {
    return EINVAL;
  }
  if (!unit->responding() || !m_topology.link() || !EscRegisters::holds(address, size)) {
    return EIO;
  }
  waitForBus(REGISTER_ACCESS);
  unit->registers().write(address, data, size);
  return 0;
}

int Master::requestState(std::size_t position, std::uint8_t state) {
  m_topology.catchUp();
  SlaveUnit* unit = m_topology.listed(position);
  if (unit == nullptr) {
    return EINVAL;
  }
  m_topology.request(*unit, state);
  return 0;
}

std::vector<std::uint8_t> Master::registers(unsigned int position, std::uint16_t address,
                                            std::size_t size) const {
  const SlaveUnit* unit = m_topology.onWire(position);
  if (unit == nullptr || !EscRegisters::holds(address, size)) {
    return {};
  }
  std::vector<std::uint8_t> bytes(size);
  unit->registers().read(address, bytes.data(), size, liveRegisters(*unit, position));
  return bytes;
}

void Master::setRegisters(unsigned int position, std::uint16_t address,
                          const std::vector<std::uint8_t>& bytes) {
  if (SlaveUnit* unit = m_topology.onWire(position)) {
    unit->registers().set(address, bytes);
  }
}

std::uint64_t Master::referenceTime() const {
  return m_clock.referenceTime();
}

} // namespace ethercat_simulation
