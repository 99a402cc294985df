// What the master's device file does for slaves that no call does. It needs no reservation, so it works
// beside a running application, which must cycle.
#ifndef IGH_BUS_DEVICE_FILE_H
#define IGH_BUS_DEVICE_FILE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace igh_bus {

constexpr std::uint16_t ERROR_COUNTERS = 0x0300;
constexpr std::uint32_t ERROR_COUNTER_BYTES = 0x14;

class DeviceFile {
public:
  explicit DeviceFile(std::uint16_t master);
  ~DeviceFile();
  DeviceFile(const DeviceFile&) = delete;
  DeviceFile& operator=(const DeviceFile&) = delete;

  bool isOpen() const { return m_file >= 0; }
  // Nothing when the file cannot be opened, or the slave does not answer. Blocks, as all of this, while the
  // master is active and its application does not cycle; Patience ends that. The second reads up to 8 bytes.
  std::optional<std::uint16_t> reg(std::uint16_t slave, std::uint16_t address) const;
  std::optional<std::uint64_t> reg(std::uint16_t slave, std::uint16_t address, std::size_t size) const;
  // A word of the slave's SII as the last scan has read it. Nothing when this release tells it in another
  // way.
  std::optional<std::uint16_t> siiWord(std::uint16_t slave, std::uint16_t place) const;

  // All throw Failure(busError) with the reason. Clearing and asking need the right to write the file.
  std::vector<std::uint8_t> read(std::uint16_t slave, std::uint16_t address, std::uint32_t size) const;
  void clear(std::uint16_t slave, std::uint16_t address, std::uint32_t size) const;
  void clearErrorCounters(std::uint16_t slave) const { clear(slave, ERROR_COUNTERS, ERROR_COUNTER_BYTES); }
  // Returns before the slave has changed; its error flag is cleared.
  void requestState(std::uint16_t slave, std::uint8_t alState) const;

private:
  int control(unsigned long request, void* record) const; // 0 or an error number
  void check(int error, const std::string& what) const;

  std::uint16_t m_master;
  int m_file;      // -1: cannot be opened
  int m_openError; // why
};

} // namespace igh_bus

#endif
