// What can happen to a drive of the model SlaveModel::drive.
#ifndef ETHERCAT_SIMULATION_DRIVE_H
#define ETHERCAT_SIMULATION_DRIVE_H

#include <cstdint>

namespace ethercat_simulation {

enum class DriveTrouble : std::uint8_t {
  // The drive fails with an error code: it brakes, then stands in fault. While the trouble lasts, a reset
  // does not help.
  fault,
  blockedAxis,   // does not move, whatever the torque is: the following error grows
  positiveLimit, // the limit switch of this side: the axis stops, and moves away from it only
  negativeLimit,
  quickStop,     // the drive's own input, as if the quick stop bit of the controlword were 0
  safeTorqueOff, // no power: the axis coasts, and the drive cannot be switched on
  count
};

} // namespace ethercat_simulation

#endif
