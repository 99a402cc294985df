#include "master/SlaveAccess.h"

#include "base/Lock.h"

#include <cerrno>
#include <thread>

namespace ethercat_simulation {

namespace {

// Station addresses as the real master gives them out: from 0x03E9 on in the order of the ring.
constexpr std::size_t FIRST_STATION = 0x03E9;

// Beside a cycle of 1 ms it takes 6 to 16 ms.
constexpr Moment REGISTER_ACCESS = 11 * MILLISECOND;

} // namespace

EscRegisters::Live SlaveAccess::liveRegisters(const SlaveUnit& unit, std::size_t position) const {
  return {static_cast<std::uint16_t>(FIRST_STATION + position),
          unit.state(),
          unit.alError(),
          unit.alCode(),
          unit.identity().distributedClocks,
          m_clock.referenceTime(),
          position + 1 < m_topology.line().reachedSize()};
}

SlaveUnit* SlaveAccess::find(std::size_t position, std::uint16_t address, std::size_t size,
                             int* error) const {
  SlaveUnit* unit = m_topology.listed(position);
  const bool answers =
      unit != nullptr && unit->responding() && m_topology.line().link() && EscRegisters::holds(address, size);
  *error = unit == nullptr ? EINVAL : answers ? 0 : EIO;
  return answers ? unit : nullptr;
}

SlaveUnit* SlaveAccess::await(std::size_t position, std::uint16_t address, std::size_t size, int* error) {
  if (find(position, address, size, error) == nullptr) {
    return nullptr;
  }
  waitForBus(REGISTER_ACCESS);
  m_topology.catchUp();
  return find(position, address, size, error);
}

int SlaveAccess::readRegisters(std::size_t position, std::uint16_t address, std::uint8_t* data,
                               std::size_t size) {
  m_topology.catchUp();
  int error = 0;
  const SlaveUnit* unit = await(position, address, size, &error);
  if (unit != nullptr) {
    unit->registers().read(address, data, size, liveRegisters(*unit, position));
  }
  return error;
}

int SlaveAccess::writeRegisters(std::size_t position, std::uint16_t address, const std::uint8_t* data,
                                std::size_t size) {
  int error = 0;
  SlaveUnit* unit = await(position, address, size, &error);
  if (unit != nullptr) {
    unit->registers().write(address, data, size);
  }
  return error;
}

int SlaveAccess::requestState(std::size_t position, std::uint8_t state) const {
  m_topology.catchUp();
  SlaveUnit* unit = m_topology.listed(position);
  if (unit == nullptr) {
    return EINVAL;
  }
  m_topology.request(*unit, state);
  return 0;
}

void SlaveAccess::waitForBus(Moment time) {
  if (m_topology.inTime() && !m_time.isVirtual()) {
    ++m_waiting;
    {
      const Unguarded others;
      std::this_thread::sleep_for(std::chrono::nanoseconds(time));
    }
    --m_waiting;
  }
}

std::vector<std::uint8_t> SlaveAccess::registers(std::size_t position, std::uint16_t address,
                                                 std::size_t size) const {
  const SlaveUnit* unit = m_topology.onWire(position);
  if (unit == nullptr || !EscRegisters::holds(address, size)) {
    return {};
  }
  std::vector<std::uint8_t> bytes(size);
  unit->registers().read(address, bytes.data(), size, liveRegisters(*unit, position));
  return bytes;
}

void SlaveAccess::setRegisters(std::size_t position, std::uint16_t address,
                               const std::vector<std::uint8_t>& bytes) const {
  if (SlaveUnit* unit = m_topology.onWire(position)) {
    unit->registers().set(address, bytes);
  }
}

} // namespace ethercat_simulation
