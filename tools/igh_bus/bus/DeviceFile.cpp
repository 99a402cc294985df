#include "bus/DeviceFile.h"

#include "EthercatObject/Base/PlatformRelease.h"
#include "text/Text.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace igh_bus {
namespace {

struct SiiRequest {
  std::uint16_t slave;
  std::uint16_t offset; // in words, as the count
  std::uint32_t count;
  std::uint16_t* words;
};

constexpr unsigned int DEVICE = 0xA4;
constexpr unsigned long SII_READ = _IOWR(DEVICE, 0x10, SiiRequest);
constexpr unsigned long REGISTER_READ = _IOWR(DEVICE, 0x12, _REGISTER_REQUEST);
static_assert(SII_READ == 0xC010A410 && REGISTER_READ == 0xC018A412);

// Some releases serve registers on a writable file only; reading the rest needs no such right.
int openDevice(std::uint16_t master) {
  const std::string path = format("/dev/EtherCAT%u", unsigned{master});
  const int file = open(path.c_str(), O_RDWR | O_CLOEXEC);
  return file >= 0 ? file : open(path.c_str(), O_RDONLY | O_CLOEXEC);
}

} // namespace

DeviceFile::DeviceFile(std::uint16_t master) : m_file(openDevice(master)) {}

DeviceFile::~DeviceFile() {
  if (m_file >= 0)
    close(m_file);
}

std::optional<std::uint16_t> DeviceFile::reg(std::uint16_t slave, std::uint16_t address) const {
  std::uint8_t bytes[2] = {};
  _REGISTER_REQUEST request{};
  request.slavePosition = slave;
  request.address = address;
  request.size = sizeof bytes;
  request.data = bytes;
  if (m_file < 0 || ioctl(m_file, REGISTER_READ, &request) < 0)
    return {};
  return static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8);
}

std::optional<std::uint16_t> DeviceFile::siiWord(std::uint16_t slave, std::uint16_t place) const {
  std::uint16_t word = 0;
  SiiRequest request{slave, place, 1, &word};
  if (m_file < 0 || ioctl(m_file, SII_READ, &request) < 0)
    return {};
  return word;
}

} // namespace igh_bus
