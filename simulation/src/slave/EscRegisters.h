// Registers of one slave controller. Only what has been written is kept; what the slave knows of itself is
// laid over it when somebody reads.
#ifndef ETHERCAT_SIMULATION_ESC_REGISTERS_H
#define ETHERCAT_SIMULATION_ESC_REGISTERS_H

#include "base/Interface.h"

#include <algorithm>
#include <array>
#include <vector>

namespace ethercat_simulation {

class EscRegisters {
public:
  // Addresses of the counters that the simulation's faults count up.
  static constexpr std::uint16_t INVALID_FRAME = 0x0300;   // by port, 2 bytes each
  static constexpr std::uint16_t FORWARDED_ERROR = 0x0308; // by port
  static constexpr std::uint16_t PDI_ERROR = 0x030D;
  static constexpr std::uint16_t LOST_LINK = 0x0310; // by port

  static constexpr std::size_t SPACE = 0x10000;
  static bool holds(std::uint16_t address, std::size_t size) { return size <= SPACE - address; }

  // Stops at the highest value. Does not allocate.
  void count(std::uint16_t counter, unsigned int times = 1) {
    std::uint8_t& value = m_counters[counter - FIRST_COUNTER];
    value = static_cast<std::uint8_t>(std::min(value + times, 0xFFU));
  }
  static bool isCounter(std::size_t address) {
    return address >= FIRST_COUNTER && address < FIRST_COUNTER + COUNTER_COUNT;
  }
  // The slave has been switched off and on. Keeps its memory, so that nothing is allocated anew.
  void clear();

  struct Live {
    std::uint16_t stationAddress;
    std::uint8_t alState;
    bool alError;
    std::uint16_t alCode;
    bool hasClock;
    std::uint64_t systemTime; // ns
    bool hasNext;             // behind it on the line
  };
  void read(std::uint16_t address, std::uint8_t* data, std::size_t size, const Live& live) const;
  // As the bus does it: a write to a counter clears it, whatever is written, and registers that only tell
  // are left alone. An AL control written here changes nothing; use a state request.
  void write(std::uint16_t address, const std::uint8_t* data, std::size_t size);
  // As the control side does it.
  void set(std::uint16_t address, const std::vector<std::uint8_t>& bytes);

private:
  static constexpr std::uint16_t FIRST_COUNTER = 0x0300;
  static constexpr std::size_t COUNTER_COUNT = 0x14;

  void store(std::size_t address, std::uint8_t value);

  std::array<std::uint8_t, COUNTER_COUNT> m_counters{};
  std::vector<std::uint8_t> m_memory; // grows with the highest register written
};

} // namespace ethercat_simulation

#endif
