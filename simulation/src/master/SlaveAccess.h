// Registers and state requests of a master's slaves, for the device file and the control side; answered also
// while nobody cycles.
#ifndef ETHERCAT_SIMULATION_SLAVE_ACCESS_H
#define ETHERCAT_SIMULATION_SLAVE_ACCESS_H

#include "wire/Clock.h"
#include "wire/Topology.h"

namespace ethercat_simulation {

class SlaveAccess {
public:
  SlaveAccess(Topology& topology, const Clock& clock, const SimulatedTime& time)
      : m_topology(topology), m_clock(clock), m_time(time) {}

  // Each gives 0 or a positive error number.
  int readRegisters(std::size_t position, std::uint16_t address, std::uint8_t* data, std::size_t size);
  int writeRegisters(std::size_t position, std::uint16_t address, const std::uint8_t* data, std::size_t size);
  int requestState(std::size_t position, std::uint8_t state) const;
  // Blocks as a call that has to wait for the bus does; a virtual time does not wait for anybody. The lock is
  // let go meanwhile: look everything up again afterwards. The master itself stays as long as waits() says
  // so.
  void waitForBus(Moment time);
  bool waits() const { return m_waiting > 0; }

  // As the control side sees them: of any slave on the wire, at once.
  std::vector<std::uint8_t> registers(std::size_t position, std::uint16_t address, std::size_t size) const;
  void setRegisters(std::size_t position, std::uint16_t address,
                    const std::vector<std::uint8_t>& bytes) const;

private:
  EscRegisters::Live liveRegisters(const SlaveUnit& unit, std::size_t position) const;
  // Who can be asked for registers; null, and an error, when nobody answers.
  SlaveUnit* find(std::size_t position, std::uint16_t address, std::size_t size, int* error) const;
  // As find, but when the bus has come round.
  SlaveUnit* await(std::size_t position, std::uint16_t address, std::size_t size, int* error);

  Topology& m_topology;
  const Clock& m_clock;
  const SimulatedTime& m_time;
  unsigned int m_waiting = 0; // calls
};

} // namespace ethercat_simulation

#endif
