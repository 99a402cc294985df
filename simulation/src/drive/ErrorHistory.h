// The errors that a drive keeps: 0x1003, the latest first, and their classes in the error register 0x1001.
#ifndef ETHERCAT_SIMULATION_ERROR_HISTORY_H
#define ETHERCAT_SIMULATION_ERROR_HISTORY_H

#include "drive/DriveObjects.h"

namespace ethercat_simulation {

class ErrorHistory {
public:
  explicit ErrorHistory(const ObjectBytes& bytes);

  void add(std::uint16_t code);
  // One cycle: 0 written to 0x1003:0 clears the list. `code` is the error that holds the drive, or 0.
  void step(std::uint16_t code);

private:
  DriveValue<std::uint8_t> m_register;
  DriveValue<std::uint8_t> m_count;
  std::vector<DriveValue<std::uint32_t>> m_errors;
};

} // namespace ethercat_simulation

#endif
