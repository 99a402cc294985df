// The objects of a drive. Their bytes live in the slave's dictionary, so that SDO transfers, process data and
// the drive itself see one value each.
#ifndef ETHERCAT_SIMULATION_DRIVE_OBJECTS_H
#define ETHERCAT_SIMULATION_DRIVE_OBJECTS_H

#include <ethercat_simulation/Slave.h>

#include <algorithm>
#include <cstring>
#include <functional>

namespace ethercat_simulation {

// Adds what the slave does not list itself; what it lists gets the drive's length and access.
void completeDriveObjects(Slave& slave);
// Bytes of an object that every drive has, 0 for another.
std::size_t driveObjectSize(std::uint16_t index, std::uint8_t subindex);

// The bytes of an object that every drive has; their place stays as long as the drive is there.
using ObjectBytes = std::function<std::vector<std::uint8_t>&(std::uint16_t index, std::uint8_t subindex)>;

template <class Number> class DriveValue {
public:
  DriveValue(const ObjectBytes& bytes, std::uint16_t index, std::uint8_t subindex = 0)
      : m_bytes(bytes(index, subindex)) {}
  // The length may have been changed from the control side.
  Number get() const {
    Number number = 0;
    std::memcpy(&number, m_bytes.data(), std::min(sizeof number, m_bytes.size()));
    return number;
  }
  void set(Number number) { std::memcpy(m_bytes.data(), &number, std::min(sizeof number, m_bytes.size())); }

private:
  std::vector<std::uint8_t>& m_bytes;
};

struct DriveObjects {
  explicit DriveObjects(const ObjectBytes& bytes);

  DriveValue<std::uint16_t> errorCode;
  DriveValue<std::uint16_t> controlword;
  DriveValue<std::uint16_t> statusword;
  DriveValue<std::int16_t> quickStopOption;
  DriveValue<std::int8_t> mode;
  DriveValue<std::int8_t> modeDisplay;
  DriveValue<std::int32_t> positionDemand;
  DriveValue<std::int32_t> position;
  DriveValue<std::uint32_t> followingWindow;
  DriveValue<std::uint16_t> followingTimeout; // ms
  DriveValue<std::uint32_t> positionWindow;
  DriveValue<std::int32_t> velocity;
  DriveValue<std::int16_t> targetTorque;
  DriveValue<std::uint16_t> maximumTorque;
  DriveValue<std::int16_t> torque;
  DriveValue<std::int32_t> targetPosition;
  DriveValue<std::int32_t> lowestPosition;
  DriveValue<std::int32_t> highestPosition;
  DriveValue<std::uint32_t> maximumVelocity;
  DriveValue<std::uint32_t> profileVelocity;
  DriveValue<std::uint32_t> profileAcceleration;
  DriveValue<std::uint32_t> profileDeceleration;
  DriveValue<std::uint32_t> quickStopDeceleration;
  DriveValue<std::int32_t> followingError;
  DriveValue<std::uint32_t> digitalInputs;
  DriveValue<std::int32_t> targetVelocity;
};

} // namespace ethercat_simulation

#endif
