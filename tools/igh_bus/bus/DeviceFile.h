// What the master's device file tells of slaves that no call does. It needs no reservation.
#ifndef IGH_BUS_DEVICE_FILE_H
#define IGH_BUS_DEVICE_FILE_H

#include <cstdint>
#include <optional>

namespace igh_bus {

class DeviceFile {
public:
  explicit DeviceFile(std::uint16_t master);
  ~DeviceFile();
  DeviceFile(const DeviceFile&) = delete;
  DeviceFile& operator=(const DeviceFile&) = delete;

  // Nothing when the file cannot be opened, or the slave does not answer. Blocks while the master is active
  // and its application does not cycle.
  std::optional<std::uint16_t> reg(std::uint16_t slave, std::uint16_t address) const;
  // A word of the slave's SII as the last scan has read it. Nothing when this release tells it in another
  // way.
  std::optional<std::uint16_t> siiWord(std::uint16_t slave, std::uint16_t place) const;

private:
  int m_file; // -1: cannot be opened
};

} // namespace igh_bus

#endif
