// Registers of slaves through the public functions, which tell of failures on standard error only.
#ifndef IGH_BUS_CHECK_REGISTERS_H
#define IGH_BUS_CHECK_REGISTERS_H

#include "bus/DeviceFile.h"

namespace igh_bus::check {

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

} // namespace igh_bus::check

#endif
