#include "bus/DeviceFile.h"

#include "EthercatObject/Base/PlatformRelease.h"
#include "text/Failure.h"
#include "text/Text.h"

#include <cerrno>
#include <cstring>
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

struct StateRequest {
  std::uint16_t slave;
  std::uint8_t alState;
};
static_assert(sizeof(StateRequest) == 4);

constexpr unsigned int DEVICE = 0xA4;
constexpr unsigned long SII_READ = _IOWR(DEVICE, 0x10, SiiRequest);
constexpr unsigned long REGISTER_READ = _IOWR(DEVICE, 0x12, _REGISTER_REQUEST);
constexpr unsigned long REGISTER_WRITE = _IOW(DEVICE, 0x13, _REGISTER_REQUEST);
constexpr unsigned long STATE_REQUEST = _IOW(DEVICE, 0x0B, StateRequest);
static_assert(SII_READ == 0xC010A410 && REGISTER_READ == 0xC018A412 && REGISTER_WRITE == 0x4018A413 &&
              STATE_REQUEST == 0x4004A40B);

std::string devicePath(std::uint16_t master) {
  return format("/dev/EtherCAT%u", unsigned{master});
}

// Some releases serve registers on a writable file only; reading the rest needs no such right.
int openDevice(std::uint16_t master) {
  const auto path = devicePath(master);
  const int file = open(path.c_str(), O_RDWR | O_CLOEXEC);
  return file >= 0 ? file : open(path.c_str(), O_RDONLY | O_CLOEXEC);
}

_REGISTER_REQUEST registersOf(std::uint16_t slave, std::uint16_t address, std::vector<std::uint8_t>& bytes) {
  _REGISTER_REQUEST request{};
  request.slavePosition = slave;
  request.address = address;
  request.size = bytes.size();
  request.data = bytes.data();
  return request;
}

std::string placeText(std::uint16_t slave, std::uint16_t address) {
  return format("slave %u, register 0x%04X", unsigned{slave}, unsigned{address});
}

} // namespace

DeviceFile::DeviceFile(std::uint16_t master)
    : m_master(master), m_file(openDevice(master)), m_openError(m_file < 0 ? errno : 0) {}

DeviceFile::~DeviceFile() {
  if (m_file >= 0)
    close(m_file);
}

int DeviceFile::control(unsigned long request, void* record) const {
  return m_file < 0 ? EBADF : ioctl(m_file, request, record) < 0 ? errno : 0;
}

void DeviceFile::check(int error, const std::string& what) const {
  if (m_file < 0)
    throw Failure(busError, devicePath(m_master) + " cannot be opened: " + std::strerror(m_openError));
  if (error == EPERM)
    throw Failure(busError, what + ": this needs the right to write " + devicePath(m_master));
  if (error == EINTR)
    throw Failure(busError,
                  what + ": not served in time: an application holds the master and does not cycle");
  if (error != 0)
    throw Failure(busError, what + ": " + std::strerror(error));
}

std::optional<std::uint16_t> DeviceFile::reg(std::uint16_t slave, std::uint16_t address) const {
  const auto word = reg(slave, address, sizeof(std::uint16_t));
  return word ? std::optional(static_cast<std::uint16_t>(*word)) : std::nullopt;
}

std::optional<std::uint64_t> DeviceFile::reg(std::uint16_t slave, std::uint16_t address,
                                             std::size_t size) const {
  std::vector<std::uint8_t> bytes(size);
  auto request = registersOf(slave, address, bytes);
  if (control(REGISTER_READ, &request) != 0)
    return {};
  std::uint64_t value = 0;
  for (auto byte = bytes.rbegin(); byte != bytes.rend(); ++byte)
    value = value << 8 | *byte;
  return value;
}

std::optional<std::uint16_t> DeviceFile::siiWord(std::uint16_t slave, std::uint16_t place) const {
  std::uint16_t word = 0;
  SiiRequest request{slave, place, 1, &word};
  if (control(SII_READ, &request) != 0)
    return {};
  return word;
}

std::vector<std::uint8_t> DeviceFile::read(std::uint16_t slave, std::uint16_t address,
                                           std::uint32_t size) const {
  std::vector<std::uint8_t> bytes(size);
  auto request = registersOf(slave, address, bytes);
  check(control(REGISTER_READ, &request), placeText(slave, address));
  return bytes;
}

void DeviceFile::clear(std::uint16_t slave, std::uint16_t address, std::uint32_t size) const {
  std::vector<std::uint8_t> zeros(size);
  auto request = registersOf(slave, address, zeros);
  check(control(REGISTER_WRITE, &request), placeText(slave, address));
}

void DeviceFile::requestState(std::uint16_t slave, std::uint8_t alState) const {
  StateRequest request{slave, alState};
  check(control(STATE_REQUEST, &request), format("slave %u, its state", unsigned{slave}));
}

} // namespace igh_bus
