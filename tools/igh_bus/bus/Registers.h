// Registers of slaves through the public functions, which tell of failures on standard error only.
#ifndef IGH_BUS_REGISTERS_H
#define IGH_BUS_REGISTERS_H

#include <cstdint>
#include <string>
#include <vector>

namespace igh_bus {

constexpr std::uint16_t ERROR_COUNTERS = 0x0300;
constexpr std::uint32_t ERROR_COUNTER_BYTES = 0x14;

class Registers {
public:
  // Takes the master; nothing is scanned or activated.
  explicit Registers(std::uint16_t master);
  ~Registers();
  Registers(const Registers&) = delete;
  Registers& operator=(const Registers&) = delete;

  // All throw Failure(busError) with the reason.
  std::vector<std::uint8_t> read(std::uint16_t slave, std::uint16_t address, std::uint32_t size) const;
  void clear(std::uint16_t slave, std::uint16_t address, std::uint32_t size) const;
  void clearErrorCounters(std::uint16_t slave) const;

private:
  std::uint16_t m_master;
};

} // namespace igh_bus

#endif
