#include "drive/DriveObjects.h"

namespace ethercat_simulation {

namespace {

struct Row {
  std::uint16_t index;
  std::uint8_t subindex;
  std::uint8_t size;
  bool readOnly;
  std::uint32_t initial;
};

constexpr Row ROWS[] = {
    {0x1000, 0, 4, true, 0x00020192}, // device type: servo drive, profile 402
    {0x1001, 0, 1, true, 0},          // error register
    {0x1003, 0, 1, false, 0},         // errors kept, the latest first; 0 written clears them
    {0x1003, 1, 4, true, 0},
    {0x1003, 2, 4, true, 0},
    {0x1003, 3, 4, true, 0},
    {0x1003, 4, 4, true, 0},
    {0x1003, 5, 4, true, 0},
    {0x1003, 6, 4, true, 0},
    {0x1003, 7, 4, true, 0},
    {0x1003, 8, 4, true, 0},
    {0x1018, 0, 1, true, 4}, // identity; the others come from the slave
    {0x1018, 1, 4, true, 0},
    {0x1018, 2, 4, true, 0},
    {0x1018, 3, 4, true, 0},
    {0x1018, 4, 4, true, 0},
    {0x603F, 0, 2, true, 0},
    {0x6040, 0, 2, false, 0},
    {0x6041, 0, 2, true, 0},
    {0x605A, 0, 2, false, 2}, // quick stop option: ramp of 0x6085, then off
    {0x6060, 0, 1, false, 0},
    {0x6061, 0, 1, true, 0},
    {0x6062, 0, 4, true, 0},
    {0x6064, 0, 4, true, 0},
    {0x6065, 0, 4, false, 10'000},
    {0x6066, 0, 2, false, 0},
    {0x6067, 0, 4, false, 10},
    {0x606C, 0, 4, true, 0},
    {0x6071, 0, 2, false, 0},
    {0x6072, 0, 2, false, 3'000},
    {0x6077, 0, 2, true, 0},
    {0x607A, 0, 4, false, 0},
    {0x607D, 0, 1, true, 2}, // software position limits; both 0: none
    {0x607D, 1, 4, false, 0},
    {0x607D, 2, 4, false, 0},
    {0x607F, 0, 4, false, 10'000'000},
    {0x6081, 0, 4, false, 100'000},
    {0x6083, 0, 4, false, 1'000'000},
    {0x6084, 0, 4, false, 1'000'000},
    {0x6085, 0, 4, false, 2'000'000},
    {0x60F4, 0, 4, true, 0},
    {0x60FD, 0, 4, true, 0},
    {0x60FF, 0, 4, false, 0},
    {0x6502, 0, 4, true, 0x00000381}, // modes 1, 8, 9, 10
};

std::uint32_t initialValue(const Row& row, const Slave& slave) {
  if (row.index == 0x1018) {
    const std::uint32_t identity[] = {row.initial, slave.vendorId, slave.productCode, slave.revisionNumber,
                                      slave.serialNumber};
    return identity[row.subindex];
  }
  return row.initial;
}

} // namespace

void completeDriveObjects(Slave& slave) {
  for (const Row& row : ROWS) {
    const auto found = std::find_if(slave.objects.begin(), slave.objects.end(), [&](const Object& object) {
      return object.index == row.index && object.subindex == row.subindex;
    });
    if (found != slave.objects.end()) {
      found->bytes.resize(row.size);
      found->readOnly = found->readOnly || row.readOnly;
      continue;
    }
    Object object{row.index, row.subindex, {}, row.readOnly};
    const std::uint32_t value = initialValue(row, slave);
    for (unsigned int i = 0; i < row.size; ++i) {
      object.bytes.push_back(static_cast<std::uint8_t>(value >> 8 * i));
    }
    slave.objects.push_back(object);
  }
}

std::size_t driveObjectSize(std::uint16_t index, std::uint8_t subindex) {
  for (const Row& row : ROWS) {
    if (row.index == index && row.subindex == subindex) {
      return row.size;
    }
  }
  return 0;
}

DriveObjects::DriveObjects(const ObjectBytes& bytes)
    : errorCode(bytes, 0x603F), controlword(bytes, 0x6040), statusword(bytes, 0x6041),
      quickStopOption(bytes, 0x605A), mode(bytes, 0x6060), modeDisplay(bytes, 0x6061),
      positionDemand(bytes, 0x6062), position(bytes, 0x6064), followingWindow(bytes, 0x6065),
      followingTimeout(bytes, 0x6066), positionWindow(bytes, 0x6067), velocity(bytes, 0x606C),
      targetTorque(bytes, 0x6071), maximumTorque(bytes, 0x6072), torque(bytes, 0x6077),
      targetPosition(bytes, 0x607A), lowestPosition(bytes, 0x607D, 1), highestPosition(bytes, 0x607D, 2),
      maximumVelocity(bytes, 0x607F), profileVelocity(bytes, 0x6081), profileAcceleration(bytes, 0x6083),
      profileDeceleration(bytes, 0x6084), quickStopDeceleration(bytes, 0x6085), followingError(bytes, 0x60F4),
      digitalInputs(bytes, 0x60FD), targetVelocity(bytes, 0x60FF) {}

} // namespace ethercat_simulation
