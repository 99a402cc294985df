// What troubles a drive from outside, until it is taken away.
#ifndef ETHERCAT_SIMULATION_DRIVE_TROUBLES_H
#define ETHERCAT_SIMULATION_DRIVE_TROUBLES_H

#include <ethercat_simulation/Drive.h>

#include <array>
#include <cstddef>

namespace ethercat_simulation {

class DriveTroubles {
public:
  void set(DriveTrouble trouble, bool on) { m_on[static_cast<std::size_t>(trouble)] = on; }
  bool has(DriveTrouble trouble) const { return m_on[static_cast<std::size_t>(trouble)]; }
  void setErrorCode(std::uint16_t code) { m_errorCode = code; }
  std::uint16_t errorCode() const { return m_errorCode; } // of the trouble `fault`

  // The controlword as the drive takes it.
  std::uint16_t taken(std::uint16_t controlword) const {
    constexpr std::uint16_t VOLTAGE_BIT = 0x02;
    constexpr std::uint16_t NO_QUICK_STOP_BIT = 0x04;
    const unsigned int without = (has(DriveTrouble::safeTorqueOff) ? VOLTAGE_BIT : 0U) |
                                 (has(DriveTrouble::quickStop) ? NO_QUICK_STOP_BIT : 0U);
    return static_cast<std::uint16_t>(controlword & ~without);
  }
  // Object 0x60FD.
  std::uint32_t digitalInputs() const {
    return (has(DriveTrouble::negativeLimit) ? 0x1U : 0U) | (has(DriveTrouble::positiveLimit) ? 0x2U : 0U) |
           (has(DriveTrouble::safeTorqueOff) ? 0x8U : 0U); // interlock
  }
  // Whether a limit switch forbids to move this way; the sign tells the direction.
  bool forbids(double direction) const {
    return (direction > 0 && has(DriveTrouble::positiveLimit)) ||
           (direction < 0 && has(DriveTrouble::negativeLimit));
  }

private:
  std::array<bool, static_cast<std::size_t>(DriveTrouble::count)> m_on{};
  std::uint16_t m_errorCode = 0;
};

} // namespace ethercat_simulation

#endif
